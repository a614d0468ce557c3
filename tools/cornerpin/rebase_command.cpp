// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/rebase_command.h"

#include <cornerpin/shot.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <optional>
#include <string>

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
  ResultArgument result;
  ReferenceOption reference;
  OutputOptions output;
  QuietOption quiet;
};

int run(const Arguments& arguments) {
  const int reference = arguments.reference.value().value();
  shot::WriteOptions how;
  how.to = arguments.output.format();
  const bool onStandardOutput = arguments.output.isStandardOutput();
  if (!onStandardOutput) refuseInput(arguments.result.path, arguments.output.path);
  requireWritable(arguments.output.path);
  const shot::Result result = shot::readResult(arguments.result.path).rebase(reference);
  FileTalk talk;
  talk.add(arguments.output.path,
           result.write(onStandardOutput ? "-" : arguments.output.path, how));
  if (!arguments.quiet.given) print(talk.readBackRows());
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
