// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/info_command.h"

#include <cornerpin/shot.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <string>

#include "tools/cornerpin/file_talk.h"
#include "tools/cornerpin/option_list.h"
#include "tools/cornerpin/output_paths.h"
#include "tools/cornerpin/shared_options.h"

namespace cornerpin {

namespace {

constexpr CommandText kText = {
    "info", "Say what a file is", "cornerpin info shot.csv",
    "Of a file of tracks: its size, rows and digest, its frames and tracks, where tracks have\n"
    "gaps, and how many there are in each frame. Of the JSON file of a solve: what made it, of\n"
    "which tracks and with which options, and which frames are good. Nothing is solved.\n",
    ""};

struct Arguments {
  std::string file;
  ColourOption colour;
};

int run(const Arguments& arguments) {
  requireWritable("-");
  const bool coloured = isColoured(arguments.colour.value(), STDOUT_FILENO);
  const shot::FileDescription file = shot::describeFile(arguments.file, coloured);
  print(file.text);
  FileTalk talk;
  talk.add(file.notes);
  talk.tellNotes();
  return kSolved;
}

}  // namespace

Command addInfo(CLI::App& app) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App& parser = addParser(app, kText);
  takesFile(parser.add_option("file", arguments->file,
                              "Tracks or the JSON file of a solve; - is standard input"))
      ->required()
      ->check(refuseEmpty);
  addMore(parser);
  arguments->colour.addTo(parser);
  return {&parser, [arguments] { return run(*arguments); }, &kText};
}

}  // namespace cornerpin
