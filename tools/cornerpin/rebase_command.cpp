// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/rebase_command.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <optional>
#include <string>

#include "shot/files/export.h"
#include "shot/files/output_file.h"
#include "shot/files/result_reader.h"
#include "shot/solve/rebase.h"
#include "shot/solve/this_program.h"
#include "tools/cornerpin/file_talk.h"
#include "tools/cornerpin/option_list.h"
#include "tools/cornerpin/output_paths.h"
#include "tools/cornerpin/shared_options.h"

namespace cornerpin {

namespace {

constexpr CommandText kText = {
    "rebase", "Make a result relative to another frame",
    "cornerpin rebase shot.json --reference 50 -o from50.json",
    "Writes a result again so that its transforms start from another frame: each one carries a\n"
    "point from where frame 50 shows it to where its own frame shows it. The quads move to that\n"
    "frame, and the figures of trust with them. Nothing is fitted anew. The frame must have a\n"
    "transform of its own: one that was held is refused.\n",
    ""};

struct Arguments {
  std::string input;
  ReferenceOption reference;
  OutputOptions output;
  QuietOption quiet;
};

int run(const Arguments& arguments) {
  const int reference = arguments.reference.value().value();
  Export what;
  what.path = arguments.output.path;
  what.format = arguments.output.format();
  const bool onStandardOutput = arguments.output.isStandardOutput();
  if (!onStandardOutput) refuseInput(arguments.input, what.path);
  requireWritable(what.path);
  ShotResult result = readResult(arguments.input);
  const int from = result.referenceFrame;
  rebase(result, reference);
  if (reference != from) result.provenance.rebased.push_back({from, reference, thisProgram()});
  OutputFile out(onStandardOutput ? "-" : what.path);
  const Written written = writeExport(what, result, nullptr, arguments.input, out);
  out.commit();
  FileTalk talk;
  talk.add(what, written);
  if (!arguments.quiet.given) print(talk.readBackRows());
  return kSolved;
}

}  // namespace

Command addRebase(CLI::App& app) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App& parser = addParser(app, kText);
  takesFile(
      parser.add_option("result", arguments->input, "JSON file of a solve; - is standard input"))
      ->required()
      ->check(refuseEmpty);
  arguments->reference.addTo(parser);
  arguments->output.addTo(parser);
  arguments->quiet.addTo(parser);
  parser.get_option("--reference")->required();
  parser.get_option("--output")->required();
  return {&parser, [arguments] { return run(*arguments); }, &kText};
}

}  // namespace cornerpin
