// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/check_command.h"

#include <cornerpin/shot.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <stdexcept>
#include <string>

#include "tools/cornerpin/export_options.h"
#include "tools/cornerpin/file_talk.h"
#include "tools/cornerpin/option_list.h"
#include "tools/cornerpin/output_paths.h"
#include "tools/cornerpin/shared_options.h"

namespace cornerpin {

namespace {

constexpr CommandText kText = {
    "check", "Say how two files of tracks or pins differ", "cornerpin check shot.csv shot.nk",
    "Compares two files of the same tracks, or of the same pin, in any formats, and names what\n"
    "explains the difference: \"y flipped about 1080\", \"half a pixel\", \"frame +1\", \"scaled "
    "by\n"
    "0.5\", \"corner order\", and several of these. What both files tell of their picture is\n"
    "taken into account first. Of a result of a solve, the corners of its quads are compared.\n"
    "The exit code is 0 where nothing differs and 4 where something does.\n",
    "Two coordinates are the same where both can be roundings of one number: half of the last\n"
    "digit that each file carries is allowed, of a hundredth of a pixel at most, and at least a\n"
    "millionth of a pixel. With --max PX two things count alone: a coordinate that is more than\n"
    "PX pixels off, and a position that one file lacks. Weights count where both files have\n"
    "other weights than 1.\n\n"
    "An explanation makes at least three quarters of the positions the same; the others are\n"
    "told. Of several the one with the fewest parts is named, so that tracks that stand still\n"
    "are moved rather than flipped. A flip about a whole number tells the picture's height only\n"
    "with the place of a pixel's centre: where that is at 0, it is one less than the height.\n"
    "Where a conversion takes the picture's size, and neither file tells it, the numbers are\n"
    "compared as they are.\n\n"
    "What else than corners is in the results of two solves is compared by cornerpin diff.\n"};

struct Arguments {
  std::string first;
  std::string second;
  MaxMoveOption most;
  std::string fromFirst;
  std::string fromSecond;
  PictureOptions picture;
};

int run(const Arguments& arguments) {
  const std::string& first = arguments.first;
  const std::string& second = arguments.second;
  shot::CompareOptions options;
  options.most = arguments.most.value();
  options.picture = arguments.picture.value();
  options.fromFirst = arguments.fromFirst;
  options.fromSecond = arguments.fromSecond;
  if (first == "-" && second == "-") {
    throw std::invalid_argument("both files want standard input: name a file for one");
  }
  requireWritable("-");
  const shot::FileDifference difference = shot::compareFiles(first, second, options);
  FileTalk talk;
  talk.add(difference.notes);
  talk.tellNotes();
  print(difference.text);
  return difference.isDifferent ? kDegraded : kSolved;
}

void addFile(CLI::App& parser, const char* name, const char* text, std::string& path) {
  takesFile(parser.add_option(name, path, text))->required()->check(refuseEmpty);
}

void addFormat(CLI::App& parser, const char* name, const char* text, std::string& word) {
  takesOneOf(parser.add_option(name, word, text), formatsThatAreRead())->option_text("NAME");
}

}  // namespace

Command addCheck(CLI::App& app) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App& parser = addParser(app, kText);
  addFile(parser, "first", "File with tracks, a pin or a result; - is standard input",
          arguments->first);
  addFile(parser, "second", "File that it is compared with", arguments->second);
  arguments->most.addTo(parser);
  parser.get_option("--max")->description("Coordinates may be so far apart");
  arguments->picture.addTo(parser);
  addMore(parser);
  addFormat(parser, "--from-first", "Read the first file as this, whatever it looks like",
            arguments->fromFirst);
  addFormat(parser, "--from-second", "Read the second file as this", arguments->fromSecond);
  return {&parser, [arguments] { return run(*arguments); }, &kText};
}

}  // namespace cornerpin
