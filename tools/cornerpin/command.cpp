// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/command.h"

#include <CLI/CLI.hpp>

namespace cornerpin {

CLI::App& addParser(CLI::App& app, const char* name, const char* summary, const char* help,
                    const char* exitCodes) {
  CLI::App& parser = *app.add_subcommand(name, summary);
  // A call of the subcommand replaces the summary, so its own help has the long text.
  parser.preparse_callback([&parser, help](std::size_t) { parser.description(help); });
  parser.footer(exitCodes);
  parser.get_formatter()->column_width(21);
  return parser;
}

}  // namespace cornerpin
