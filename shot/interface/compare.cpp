// SPDX-License-Identifier: BSD-3-Clause
#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "cornerpin/shot.h"
#include "shot/compare/result_difference.h"
#include "shot/compare/track_difference.h"
#include "shot/files/conversion.h"
#include "shot/files/difference_text.h"
#include "shot/files/format.h"
#include "shot/files/result_pin.h"
#include "shot/files/result_reader.h"
#include "shot/files/result_transforms.h"
#include "shot/files/track_difference_text.h"
#include "shot/files/track_reader.h"
#include "shot/interface/boundary.h"
#include "shot/interface/result.h"
#include "shot/solve/wording.h"

namespace cornerpin::shot {

namespace {

// What of a file is compared: its tracks; of a result, the corners of one of its quads or of the
// whole picture.
struct Compared {
  cornerpin::Tracks tracks;
  std::string name;
};

enum class Holds { Tracks, Result, ResultCsv };

// Only a plain file can be looked into and then read from its beginning.
Holds contentOf(const std::string& path, const std::string& format) {
  if (!format.empty() || !std::filesystem::is_regular_file(path)) return Holds::Tracks;
  const FileKind kind = fileKindOf(path);
  if (kind.holds != "result") return Holds::Tracks;
  return kind.format == "csv" ? Holds::ResultCsv : Holds::Result;
}

// In the order of the file, which says which is which where y is flipped: other corners are seen
// at the lower left then.
cornerpin::Tracks inFileOrder(const ResultTransforms& result, const NamedQuad& quad) {
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

std::vector<Compared> cornersOf(const std::string& path, Holds content,
                                const cornerpin::Picture& told, bool withResult) {
  ResultTransforms result =
      content == Holds::ResultCsv ? readResultCsv(path) : transformsOf(cornerpin::readResult(path));
  cornerpin::Picture contradicted;
  tell(result.picture, Format::Json, told, contradicted);
  std::vector<Compared> all;
  for (const NamedQuad& quad : result.quads) {
    all.push_back({tracksOf(pinOf(result, PinKind::Pin, &quad)),
                   fmt::format("{}, quad \"{}\"", path, quad.name)});
    if (withResult) all.push_back({inFileOrder(result, quad), all.back().name});
  }
  const cornerpin::Picture& picture = result.picture;
  if (picture.width && picture.height) {
    all.push_back(
        {tracksOf(pinOf(result, PinKind::Pin, nullptr)), path + ", corners of the picture"});
  }
  return all;
}

// What is told is taken where a file does not say it itself.
std::vector<Compared> tracksIn(const std::string& path, const std::optional<Format>& format,
                               const cornerpin::Picture& told, std::vector<std::string>& notes) {
  ReadTrace trace;
  trace.format = format;
  std::vector<Compared> only = {{cornerpin::readTracks(path, {}, {}, &trace), path}};
  tell(only[0].tracks, *trace.format, told);
  notes.insert(notes.end(), trace.notes.begin(), trace.notes.end());
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

// What messages call a result that was read from `source`, the first or the second of two.
std::string nameOf(const std::string& source, const char* otherwise) {
  return source.empty() ? otherwise : source;
}

}  // namespace

FileDifference compareFiles(const std::string& first, const std::string& second,
                            const CompareOptions& options) {
  return atBoundary({}, [&](const cornerpin::Progress&) {
    const cornerpin::Picture told = pictureOf(options.picture);
    const std::optional<Format> from[] = {formatOfWord("from_first", options.fromFirst),
                                          formatOfWord("from_second", options.fromSecond)};
    const Holds inFirst = contentOf(first, options.fromFirst);
    const Holds inSecond = contentOf(second, options.fromSecond);
    const bool areResults = inFirst != Holds::Tracks && inSecond != Holds::Tracks;
    FileDifference difference;
    const auto compared = [&](const std::string& path, const std::optional<Format>& format,
                              Holds content) {
      return content == Holds::Tracks ? tracksIn(path, format, told, difference.notes)
                                      : cornersOf(path, content, told, areResults);
    };
    const std::vector<Compared> all = compared(first, from[0], inFirst);
    const std::vector<Compared> others = compared(second, from[1], inSecond);
    if (inFirst != Holds::Tracks) refuseOthersThanCorners(others[0], first);
    if (inSecond != Holds::Tracks) refuseOthersThanCorners(all[0], second);
    const Comparable pair = nearest(all, others);
    difference.isDifferent = cornerpin::isDifferent(pair.difference, options.most);
    difference.positions = pair.difference.plain.positions;
    difference.apart = pair.difference.plain.apart;
    difference.explanation = explanationText(pair.difference);
    difference.text = differenceText(pair.difference, pair.names, options.most);
    return difference;
  });
}

ResultDifference compare(const Result& first, const Result& second,
                         const std::optional<double>& most) {
  const Result::Data& a = first.data();
  const Result::Data& b = second.data();
  cornerpin::ResultDifference found = differenceOf(a.result, b.result);
  ResultDifference difference;
  difference.isDifferent = cornerpin::isDifferent(found, most);
  difference.frames.reserve(found.frames.size());
  for (const cornerpin::FrameDifference& frame : found.frames) {
    difference.frames.push_back({frame.frame, frame.distance, frame.quad, frame.corner,
                                 frame.transform, frame.status, frame.verdict});
  }
  difference.options = !found.otherOptions.empty();
  difference.input = found.input;
  difference.why = found.why;
  difference.onlyFirst = found.otherFrames.first;
  difference.onlySecond = found.otherFrames.second;
  difference.text = differenceText(
      found, {nameOf(a.source, "the first"), nameOf(b.source, "the second")}, a.result, most);
  const bool differs = found.any();
  found.program = false;
  difference.onlyProgram = differs && !found.any();
  return difference;
}

}  // namespace cornerpin::shot
