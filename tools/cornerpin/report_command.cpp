// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/report_command.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "shot/files/output_file.h"
#include "shot/files/result_reader.h"
#include "shot/report/page.h"
#include "shot/report/tracks_of_result.h"
#include "tools/cornerpin/file_talk.h"
#include "tools/cornerpin/option_list.h"
#include "tools/cornerpin/output_paths.h"
#include "tools/cornerpin/shared_options.h"

namespace cornerpin {

namespace {

constexpr CommandText kText = {
    "report", "Write a page that shows whether a result is good",
    "cornerpin report shot.json --tracks shot.csv",
    "Writes a page for a browser: which frames are good, how far corners may be off, the tracks\n"
    "and quads in motion, and what to do about the worst. It is one file, which asks for nothing\n"
    "from anywhere; without -o it stands beside the result and ends in .html. With the tracks\n"
    "that the result was made from it shows where they were seen, and their residuals.\n",
    "Of a long shot it shows a selection of the frames and tracks, and says which.\n"};

struct Arguments {
  std::string input;
  std::string output;
  std::string tracks;
  QuietOption quiet;
};

// The page beside a result.
std::string pageOf(const std::string& result) {
  if (result == "-") {
    throw std::invalid_argument("standard input has no name that the page could have: add -o FILE");
  }
  return std::filesystem::path(result).replace_extension(".html").string();
}

std::string titleOf(const ShotResult& result, const std::string& path) {
  const std::optional<InputFile>& input = result.provenance.input;
  if (input && !input->name.empty()) return input->name;
  return path == "-" ? "a result" : std::filesystem::path(path).filename().string();
}

int run(const Arguments& arguments) {
  const bool onStandardOutput = isStandardOutput(arguments.output);
  const std::string path = arguments.output.empty() ? pageOf(arguments.input) : arguments.output;
  if (!onStandardOutput) {
    refuseInput(arguments.input, path);
    refuseInput(arguments.tracks, path);
  }
  if (arguments.input == "-" && arguments.tracks == "-") {
    throw std::invalid_argument("the result and --tracks both want standard input: name a file");
  }
  requireWritable(path);
  const ShotResult result = readResult(arguments.input);
  FileTalk talk;
  std::optional<Tracks> tracks;
  if (!arguments.tracks.empty()) {
    std::vector<std::string> notes;
    tracks = tracksOfResult(arguments.tracks, result, {}, notes);
    talk.add(notes);
  }
  OutputFile out(onStandardOutput ? "-" : path);
  writePage({result, tracks ? &*tracks : nullptr, titleOf(result, arguments.input)}, out);
  out.commit();
  if (!arguments.quiet.given) talk.tellNotes();
  return kSolved;
}

}  // namespace

Command addReport(CLI::App& app) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App& parser = addParser(app, kText);
  takesFile(
      parser.add_option("result", arguments->input, "JSON file of a solve; - is standard input"))
      ->required()
      ->check(refuseEmpty);
  takesFile(parser.add_option("-o,--output", arguments->output, "Write the page to this file"))
      ->check(refuseEmpty)
      ->option_text("FILE");
  takesFile(parser.add_option("--tracks", arguments->tracks,
                              "File with the tracks that the result was made from"))
      ->check(refuseEmpty)
      ->option_text("FILE");
  arguments->quiet.addTo(parser);
  return {&parser, [arguments] { return run(*arguments); }, &kText};
}

}  // namespace cornerpin
