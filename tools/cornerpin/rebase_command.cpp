// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/rebase_command.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <optional>
#include <string>

#include "shot/files/output_file.h"
#include "shot/files/result_file.h"
#include "shot/files/result_reader.h"
#include "shot/solve/rebase.h"
#include "shot/solve/this_program.h"
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
  ResultArgument result;
  ReferenceOption reference;
  OutputOptions output;
  QuietOption quiet;  // for scripts that give it to every command: nothing is printed without it
};

int run(const Arguments& arguments) {
  const int reference = arguments.reference.value().value();
  const Format format = arguments.output.format();
  const bool onStandardOutput = arguments.output.isStandardOutput();
  if (!onStandardOutput) refuseInput(arguments.result.path, arguments.output.path);
  requireWritable(arguments.output.path);
  ShotResult result = readResult(arguments.result.path);
  const int from = result.referenceFrame;
  rebase(result, reference);
  if (reference != from) result.provenance.rebased.push_back({from, reference, thisProgram()});
  OutputFile out(onStandardOutput ? "-" : arguments.output.path);
  writeResult(result, format, out);
  out.commit();
  return kSolved;
}

}  // namespace

Command addRebase(CLI::App& app) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App& parser = addParser(app, kText);
  arguments->result.addTo(parser);
  arguments->reference.addTo(parser);
  arguments->output.addTo(parser);
  arguments->quiet.addTo(parser);
  parser.get_option("--reference")->required();
  parser.get_option("--output")->required();
  return {&parser, [arguments] { return run(*arguments); }, &kText};
}

}  // namespace cornerpin
