// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/convert_command.h"

#include <cornerpin/shot.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <string>

#include "tools/cornerpin/as_typed.h"
#include "tools/cornerpin/export_options.h"
#include "tools/cornerpin/file_talk.h"
#include "tools/cornerpin/option_list.h"
#include "tools/cornerpin/output_paths.h"
#include "tools/cornerpin/shared_options.h"

namespace cornerpin {

namespace {

constexpr CommandText kText = {
    "convert", "Write tracks, a pin or a result in another format",
    "cornerpin convert shot.json pin.nk --size 1920x1080 --y-down --pixel-center 0.5",
    "Reads tracks, a corner pin, or the result of a solve, and writes it in another format:\n"
    "tracks as tracks, a pin or a result as a pin. The format of what is read is found by its\n"
    "content, that of what is written by its name or --to. Coordinates and frames become those\n"
    "of the other format; where a file does not say what its own are, you are asked for it.\n",
    "Nothing is solved. A result is written as a pin of the whole picture, or of the quad that\n"
    "it was solved with, which only its JSON file tells. --as stabilise writes the inverse,\n"
    "which makes the surface stand still; --as matrix the transforms alone.\n\n"
    "--y-up, --y-down, --pixel-center and --size say of the input what it does not say itself;\n"
    "where it does and the output may have either, as CSV and JSON may, they say what is to be\n"
    "written. With --first-frame 1001 the clip begins with frame 1001: files that count frames\n"
    "from the clip's first are read and written accordingly.\n"};

struct Arguments {
  std::string input;
  std::string output;
  std::string word;
  std::string kind;
  StyleOptions style;
  FromOption from;
  PictureOptions picture;
  QuietOption quiet;
};

int run(const Arguments& arguments) {
  refuseInput(arguments.input, arguments.output);
  requireWritable(arguments.output);
  shot::ReadOptions how;
  how.from = arguments.from.text;
  how.picture = arguments.picture.value();
  const shot::WriteOptions output =
      writeOptionsOf(arguments.output, arguments.word, arguments.kind, arguments.style);
  const std::string path = isStandardOutput(arguments.output) ? "-" : arguments.output;
  const shot::Converted made =
      asTyped([&] { return shot::convert(arguments.input, path, how, output); });
  FileTalk talk;
  talk.add(made.notes);
  talk.add(arguments.output, made.written);
  const std::string name = arguments.input == "-" ? "standard input" : arguments.input;
  if (arguments.picture.size.empty()) talk.addSize(name, made.written);
  if (arguments.quiet.given) return kSolved;
  if (!isStandardOutput(arguments.output)) print(talk.readBackRows());
  talk.tellNotes();
  return kSolved;
}

}  // namespace

Command addConvert(CLI::App& app) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App& parser = addParser(app, kText);
  takesFile(parser.add_option("input", arguments->input,
                              "Tracks, a pin or the result of a solve; - is standard input"))
      ->required()
      ->check(refuseEmpty);
  takesFile(parser.add_option("output", arguments->output, "What is written; - is standard output"))
      ->required()
      ->check(refuseEmpty);
  arguments->from.addTo(parser);
  addFormatOptions(parser, arguments->word, arguments->kind);
  arguments->picture.addTo(parser);
  addMore(parser);
  arguments->style.addTo(parser);
  arguments->quiet.addTo(parser);
  return {&parser, [arguments] { return run(*arguments); }, &kText};
}

}  // namespace cornerpin
