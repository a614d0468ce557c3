// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/check_command.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <limits>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "shot/compare/track_difference.h"
#include "shot/files/byte_source.h"
#include "shot/files/conversion.h"
#include "shot/files/format.h"
#include "shot/files/json_reader.h"
#include "shot/files/result_pin.h"
#include "shot/files/result_reader.h"
#include "shot/files/result_transforms.h"
#include "shot/files/track_difference_text.h"
#include "shot/files/track_reader.h"
#include "shot/solve/wording.h"
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

// What of a file is compared: its tracks; of a result, the corners of one of its quads or of the
// whole picture.
struct Compared {
  Tracks tracks;
  std::string name;
};

enum class Holds { Tracks, Result, ResultCsv };

// Only a plain file can be looked into and then read from its beginning.
Holds contentOf(const std::string& path, const std::string& format) {
  if (!format.empty() || !std::filesystem::is_regular_file(path)) return Holds::Tracks;
  ByteSource source(path);
  const std::string_view beginning = source.beginning();
  if (isResultCsv(beginning)) return Holds::ResultCsv;
  const bool isResult = formatIn(beginning) == Format::Json &&
                        !otherThanTracks(beginning).empty() &&
                        beginning.find("\"cornerpin\"") != std::string_view::npos;
  return isResult ? Holds::Result : Holds::Tracks;
}

// In the order of the file, which says which is which where y is flipped: other corners are seen
// at the lower left then.
Tracks inFileOrder(const ResultTransforms& result, const NamedQuad& quad) {
  constexpr double kNowhere = std::numeric_limits<double>::quiet_NaN();
  Pin pin;
  pin.picture = result.picture;
  for (const FrameTransform& frame : result.frames) {
    PinFrame made;
    made.frame = frame.frame;
    std::transform(quad.corners.begin(), quad.corners.end(), made.to.begin(), [&](Point corner) {
      const bool isSeen = onSameSide(frame.h, result.baseCentre, corner);
      return isSeen ? map(frame.h, corner) : Point{kNowhere, kNowhere};
    });
    pin.frames.push_back(made);
  }
  return tracksOf(pin);
}

std::vector<Compared> cornersOf(const std::string& path, Holds content, const Picture& told,
                                bool withResult) {
  ResultTransforms result =
      content == Holds::ResultCsv ? readResultCsv(path) : transformsOf(readResult(path));
  Picture contradicted;
  tell(result.picture, Format::Json, told, contradicted);
  std::vector<Compared> all;
  for (const NamedQuad& quad : result.quads) {
    all.push_back({tracksOf(pinOf(result, PinKind::Pin, &quad)),
                   fmt::format("{}, quad \"{}\"", path, quad.name)});
    if (withResult) all.push_back({inFileOrder(result, quad), all.back().name});
  }
  const Picture& picture = result.picture;
  if (picture.width && picture.height) {
    all.push_back(
        {tracksOf(pinOf(result, PinKind::Pin, nullptr)), path + ", corners of the picture"});
  }
  return all;
}

// What is told is taken where a file does not say it itself.
std::vector<Compared> tracksIn(const std::string& path, const std::string& format,
                               const Picture& told, FileTalk& talk) {
  ReadTrace trace;
  if (!format.empty()) trace.format = formatNamed(format);
  std::vector<Compared> only = {{readTracks(path, {}, {}, &trace), path}};
  tell(only[0].tracks, *trace.format, told);
  talk.add(trace.notes);
  return only;
}

void refuseOthersThanCorners(const Compared& tracks, const std::string& result) {
  if (tracks.tracks.names.size() == kCornerNames.size()) return;
  throw std::invalid_argument(
      fmt::format("\"{}\" has {}, and \"{}\" is a result, of which the four corners of a pin are "
                  "compared: give the file of a pin, or the tracks of another file",
                  tracks.name, counted(tracks.tracks.names.size(), "track"), result));
}

struct Comparable {
  TrackDifference difference;
  DifferenceNames names;

  std::size_t agreeing() const { return difference.rest.positions - difference.rest.apart; }
  int parts() const { return difference.explanation ? difference.explanation->parts() : 0; }
};

// The pair that has most in common, with the simplest explanation.
Comparable nearest(const std::vector<Compared>& first, const std::vector<Compared>& second) {
  std::optional<Comparable> best;
  for (const Compared& a : first) {
    for (const Compared& b : second) {
      Comparable pair = {differenceOf(a.tracks, b.tracks), {a.name, b.name}};
      const bool isBetter = !best || pair.agreeing() > best->agreeing() ||
                            (pair.agreeing() == best->agreeing() && pair.parts() < best->parts());
      if (isBetter) best = std::move(pair);
    }
  }
  return best.value();
}

int run(const Arguments& arguments) {
  const std::string& first = arguments.first;
  const std::string& second = arguments.second;
  const std::optional<double> most = arguments.most.value();
  const Picture told = arguments.picture.value();
  if (first == "-" && second == "-") {
    throw std::invalid_argument("both files want standard input: name a file for one");
  }
  requireWritable("-");
  FileTalk talk;
  const Holds inFirst = contentOf(first, arguments.fromFirst);
  const Holds inSecond = contentOf(second, arguments.fromSecond);
  const bool areResults = inFirst != Holds::Tracks && inSecond != Holds::Tracks;
  const auto compared = [&](const std::string& path, const std::string& format, Holds content) {
    return content == Holds::Tracks ? tracksIn(path, format, told, talk)
                                    : cornersOf(path, content, told, areResults);
  };
  const std::vector<Compared> all = compared(first, arguments.fromFirst, inFirst);
  const std::vector<Compared> others = compared(second, arguments.fromSecond, inSecond);
  if (inFirst != Holds::Tracks) refuseOthersThanCorners(others[0], first);
  if (inSecond != Holds::Tracks) refuseOthersThanCorners(all[0], second);
  const Comparable pair = nearest(all, others);
  talk.tellNotes();
  print(differenceText(pair.difference, pair.names, most));
  return isDifferent(pair.difference, most) ? kDegraded : kSolved;
}

void addFile(CLI::App& parser, const char* name, const char* text, std::string& path) {
  takesFile(parser.add_option(name, path, text))->required()->check(refuseEmpty);
}

void addFormat(CLI::App& parser, const char* name, const char* text, std::string& word) {
  std::vector<std::string> words;
  for (const FormatFacts& facts : allFormats()) {
    if (facts.readsTracks) words.emplace_back(facts.word);
  }
  takesOneOf(parser.add_option(name, word, text), words)->option_text("NAME");
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
