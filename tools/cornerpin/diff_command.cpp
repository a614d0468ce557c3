// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/diff_command.h"

#include <cornerpin/shot.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>

#include "show/show_difference.h"
#include "tools/cornerpin/option_list.h"
#include "tools/cornerpin/output_paths.h"
#include "tools/cornerpin/shared_options.h"

namespace cornerpin {

namespace {

constexpr CommandText kText = {
    "diff", "Say how two results differ", "cornerpin diff old.json new.json --max 0.1",
    "Compares where two results of solves put the corners of their quads, frame by frame, in\n"
    "pixels, and says which options, tracks and frames are in one only. The exit code is 0\n"
    "where they are the same and 4 where they differ. Of two folders of batches it compares\n"
    "every shot, the worst first.\n",
    "With --max PX only two things count as a difference: a corner that is more than PX pixels\n"
    "off, and a frame that one result lacks. Without it everything that is told counts, the\n"
    "program's version too. --max 0 is for results of two versions that ought to agree.\n\n"
    "Results that start from different reference frames are compared relative to the first\n"
    "one's, or where that cannot be, to the second one's; differences below a millionth of a\n"
    "pixel are rounding then. The corners are those of the first result's quads.\n\n"
    "Of folders the program's version never counts; a shot that failed in one only does.\n"};

struct Arguments {
  std::string first;
  std::string second;
  MaxMoveOption most;
  QuietOption quiet;
};

bool isFolder(const std::string& path) {
  std::error_code ignored;
  return std::filesystem::is_directory(path, ignored);
}

int runOnFolders(const Arguments& arguments) {
  for (const std::string& path : {arguments.first, arguments.second}) {
    if (!isFolder(path)) {
      throw std::invalid_argument("\"" + path +
                                  "\" is no folder: compare two folders or two files");
    }
  }
  const ShowDifference difference =
      differenceOfShows(arguments.first, arguments.second, arguments.most.value());
  if (!arguments.quiet.given) print(textOf(difference, arguments.first, arguments.second));
  return difference.any() ? kDegraded : kSolved;
}

int run(const Arguments& arguments) {
  const std::optional<double> most = arguments.most.value();
  if (arguments.first == "-" && arguments.second == "-") {
    throw std::invalid_argument("both results want standard input: name a file for one");
  }
  if (!arguments.quiet.given) requireWritable("-");
  if (isFolder(arguments.first) || isFolder(arguments.second)) {
    return runOnFolders(arguments);
  }
  const shot::Result first = shot::readResult(arguments.first);
  const shot::Result second = shot::readResult(arguments.second);
  const shot::ResultDifference difference = shot::compare(first, second, most);
  if (!arguments.quiet.given) print(difference.text);
  return difference.isDifferent ? kDegraded : kSolved;
}

void addFile(CLI::App& parser, const char* name, const char* text, std::string& path) {
  takesFile(parser.add_option(name, path, text))->required()->check(refuseEmpty);
}

}  // namespace

Command addDiff(CLI::App& app) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App& parser = addParser(app, kText);
  addFile(parser, "old", "JSON file of a solve, or the folder of a batch; - is standard input",
          arguments->first);
  addFile(parser, "new", "JSON file that it is compared with", arguments->second);
  arguments->most.addTo(parser);
  arguments->quiet.addTo(parser);
  return {&parser, [arguments] { return run(*arguments); }, &kText};
}

}  // namespace cornerpin
