// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/info_command.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <string>

#include "shot/files/file_look.h"
#include "shot/files/result_info.h"
#include "shot/files/result_reader.h"
#include "shot/files/track_info.h"
#include "shot/files/track_reader.h"
#include "shot/solve/tracks.h"
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

std::string infoOn(const FileLook& look, bool coloured, FileTalk& talk) {
  if (look.json) return resultInfo(readResult(look.path), look, coloured);
  ReadTrace trace;
  trace.digest.emplace();
  // Asked for by number, frames far from all others are no mistake.
  const Tracks tracks = readTracks(look.path, {}, {-kFurthestFrame, kFurthestFrame}, &trace);
  talk.add(trace.notes);
  return trackInfo(tracks, look, trace);
}

int run(const Arguments& arguments) {
  requireWritable("-");
  FileTalk talk;
  print(infoOn(lookAt(arguments.file), isColoured(arguments.colour.value(), STDOUT_FILENO), talk));
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
