// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/report_command.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "shot/files/result_reader.h"
#include "shot/report/tracks_of_result.h"
#include "tools/cornerpin/file_talk.h"
#include "tools/cornerpin/option_list.h"
#include "tools/cornerpin/output_paths.h"
#include "tools/cornerpin/report_options.h"
#include "tools/cornerpin/shared_options.h"

namespace cornerpin {

namespace {

constexpr CommandText kText = {
    "report", "Write a page that shows whether a result is good",
    "cornerpin report shot.json --tracks shot.csv",
    "Writes a page for a browser: which frames are good, how far corners may be off, the tracks\n"
    "and quads in motion, and what to do about the worst. It is one file, which asks nothing\n"
    "from anywhere; without -o it stands beside the result and ends in .html. With the tracks\n"
    "that the result was made from it shows where they were seen, and their residuals.\n",
    "Of a long shot it shows a selection of the frames and tracks, and says which.\n\n"
    "The tracks have to be in the file that was solved, or, where the result does not tell its\n"
    "digest, in one with the same tracks. --pictures are JPEG, PNG, WebP, GIF or TIFF files,\n"
    "told by a pattern with the frame's number, by their folder, where it is the last number of\n"
    "their names, or by a list, one name a line. The page holds them, at most 640 pixels wide;\n"
    "with --link it asks for the files themselves. --picture-scale is found by the sizes where\n"
    "the result tells how large the picture of its tracks is.\n"};

struct Arguments {
  ResultArgument result;
  std::string output;
  std::string tracks;
  PagePictureOptions pictures;
  PlotOption plot;
  QuietOption quiet;
};

// Where the page goes: beside the result, unless it is said.
std::string pageOf(const Arguments& arguments) {
  if (!arguments.output.empty()) return arguments.output;
  if (arguments.result.path == "-") {
    throw std::invalid_argument("standard input has no name that the page could have: add -o FILE");
  }
  return std::filesystem::path(arguments.result.path).replace_extension(".html").string();
}

// Refuses outputs that would replace the inputs or one another, or cannot be written.
void checkFiles(const Arguments& arguments, const std::string& page) {
  if (arguments.result.path == "-" && arguments.tracks == "-") {
    throw std::invalid_argument("the result and --tracks both want standard input: name a file");
  }
  for (const std::string& output : {page, arguments.plot.path}) {
    if (isStandardOutput(output)) continue;
    refuseInput(arguments.result.path, output);
    refuseInput(arguments.tracks, output);
  }
  refuseSame("-o", page, "--plot", arguments.plot.path);
  requireWritable(page);
  requireWritable(arguments.plot.path);
}

int run(Arguments& arguments) {
  const std::string page = pageOf(arguments);
  arguments.plot.check();
  arguments.pictures.check(page);
  checkFiles(arguments, page);
  const ShotResult result = readResult(arguments.result.path);
  FileTalk talk;
  std::optional<Tracks> tracks;
  if (!arguments.tracks.empty()) {
    std::vector<std::string> notes;
    tracks = tracksOfResult(arguments.tracks, result, {}, notes);
    talk.add(notes);
  }
  const PageSubject subject = {result, tracks ? &*tracks : nullptr,
                               titleOf(result, arguments.result.path)};
  arguments.pictures.find(result.provenance.picture, result.frames.front().frame,
                          result.frames.back().frame, subject.tracks);
  arguments.pictures.write(subject, page, talk);
  arguments.plot.write(subject);
  if (!arguments.quiet.given) talk.tellNotes();
  return kSolved;
}

}  // namespace

Command addReport(CLI::App& app) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App& parser = addParser(app, kText);
  arguments->result.addTo(parser);
  takesFile(parser.add_option("-o,--output", arguments->output, "Write the page to this file"))
      ->check(refuseEmpty)
      ->option_text("FILE");
  takesFile(parser.add_option("--tracks", arguments->tracks,
                              "File with the tracks that the result was made from"))
      ->check(refuseEmpty)
      ->option_text("FILE");
  arguments->pictures.addTo(parser);
  arguments->plot.addTo(parser);
  arguments->quiet.addTo(parser);
  return {&parser, [arguments] { return run(*arguments); }, &kText};
}

}  // namespace cornerpin
