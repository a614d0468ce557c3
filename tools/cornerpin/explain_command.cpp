// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/explain_command.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <string>

#include "shot/files/result_reader.h"
#include "shot/files/track_advice.h"
#include "tools/cornerpin/output_paths.h"
#include "tools/cornerpin/shared_options.h"

namespace cornerpin {

namespace {

constexpr CommandText kText = {
    "explain", "Name the tracks of a result that are worth a look", "cornerpin explain shot.json",
    "Names the tracks that move the corners most and those that are ignored most, with the\n"
    "frames, and with the --drop to type to leave them out. Nothing is solved: whether it\n"
    "helps shows when the shot is solved again.\n",
    "For the figures of every track in every frame see the option --explain of solve.\n"};

int run(const std::string& path) {
  requireWritable("-");
  print(trackAdvice(readResult(path)));
  return kSolved;
}

}  // namespace

Command addExplain(CLI::App& app) {
  const auto result = std::make_shared<ResultArgument>();
  CLI::App& parser = addParser(app, kText);
  result->addTo(parser);
  return {&parser, [result] { return run(result->path); }, &kText};
}

}  // namespace cornerpin
