// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/command.h"

#include <CLI/CLI.hpp>

namespace cornerpin {

const std::vector<ExitCodeText>& exitCodeTexts() {
  static const std::vector<ExitCodeText> texts = {
      {kSolved, "done, and every frame has a full transform of its own"},
      {kFailure, "failure, such as a full disk"},
      {kUsage, "wrong usage: options or arguments make no sense"},
      {kUnreadable, "the input is refused or cannot be read"},
      {kDegraded,
       "done, but some frames have a simpler transform or their neighbour's; with --strict\n"
       "or --max-error, also for doubtful frames; of diff and check: the files differ"}};
  return texts;
}

CLI::App& addParser(CLI::App& app, const CommandText& text) {
  CLI::App& parser = *app.add_subcommand(text.name, text.summary);
  parser.set_help_flag("-h,--help", "Print what most people need");
  parser.set_help_all_flag("--help-all", "Print all options and what they mean");
  return parser;
}

void addMore(CLI::App& parser) { parser.option_defaults()->group(kMoreOptions); }

}  // namespace cornerpin
