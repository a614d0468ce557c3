// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/read_back.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <optional>
#include <vector>

#include "shot/compare/track_difference.h"
#include "shot/files/pin_scan.h"
#include "shot/files/result_transforms.h"
#include "shot/files/track_reader.h"
#include "shot/files/written_transforms.h"
#include "shot/solve/wording.h"

namespace cornerpin {

namespace {

constexpr std::size_t kCorners = 4;

// Names that only one file has may be one name, written otherwise; those of both say which is
// which.
Comparison comparedByNames(const TrackDifference& difference, const Tracks& written) {
  if (!difference.explanation || difference.explanation->parts() != 1 || difference.isNear)
    return difference.plain;
  const auto& renamed = difference.explanation->renamed;
  const bool isSpelling =
      !renamed.empty() && std::none_of(renamed.begin(), renamed.end(), [&](const auto& names) {
        return std::find(written.names.begin(), written.names.end(), names.second) !=
               written.names.end();
      });
  return isSpelling ? difference.rest : difference.plain;
}

std::size_t positionsOf(const Tracks& tracks, const OnlyIn<std::string>& only, bool first,
                        const std::vector<int>& frames) {
  const std::vector<std::string>& names = first ? only.first : only.second;
  return static_cast<std::size_t>(std::count_if(
      tracks.observations.begin(), tracks.observations.end(), [&](const Observation& row) {
        if (!(row.weight > 0.0f)) return false;
        const std::string& name = tracks.names[static_cast<std::size_t>(row.track)];
        return std::find(names.begin(), names.end(), name) != names.end() ||
               std::binary_search(frames.begin(), frames.end(), row.frame);
      }));
}

ReadBack compared(const Tracks& written, const Tracks& read) {
  const TrackDifference difference = differenceOf(written, read);
  const Comparison c = comparedByNames(difference, written);
  ReadBack back;
  back.scale = difference.picture.scale;
  back.largest = c.positions > 0 ? c.worst.distance() : 0.0;
  back.missing = c.onlyInFirst + positionsOf(written, c.tracks, true, c.frames.first);
  back.added = c.onlyInSecond + positionsOf(read, c.tracks, false, c.frames.second);
  return back;
}

bool isWhole(const PinFrame& frame) {
  return std::all_of(frame.to.begin(), frame.to.end(),
                     [](Point p) { return std::isfinite(p.x) && std::isfinite(p.y); });
}

Pin wholeFrames(Pin pin) {
  const auto end = std::remove_if(pin.frames.begin(), pin.frames.end(),
                                  [](const PinFrame& frame) { return !isWhole(frame); });
  pin.frames.erase(end, pin.frames.end());
  return pin;
}

// Where a script puts the corners, which it has in this order.
ReadBack comparedKeys(const std::string& path, const Pin& written,
                      const std::array<Corner, kCorners>& order) {
  Pin read = written;
  read.frames.clear();
  for (const auto& [frame, numbers] : numbersInLines(path, 2 * kCorners)) {
    PinFrame made;
    made.frame = frame;
    for (std::size_t i = 0; i < kCorners; ++i)
      made.to[order[i]] = {numbers[2 * i], numbers[2 * i + 1]};
    read.frames.push_back(made);
  }
  return compared(tracksOf(wholeFrames(written)), tracksOf(read));
}

double apart(Point a, Point b) {
  const double most = std::max(std::fabs(a.x - b.x), std::fabs(a.y - b.y));
  return std::isnan(most) ? HUGE_VAL : most;
}

// Of frames with a place for each corner.
using CornersAt = std::function<std::optional<Quad>(const PinFrame&)>;
ReadBack comparedCorners(const Pin& written, const CornersAt& expected, const CornersAt& read) {
  ReadBack back;
  for (const PinFrame& frame : written.frames) {
    const std::optional<Quad> wanted = expected(frame);
    const std::optional<Quad> there = read(frame);
    if (wanted && !there) ++back.missing;
    if (!wanted && there) ++back.added;
    for (std::size_t i = 0; wanted && there && i < kCorners; ++i)
      back.largest = std::max(back.largest, apart((*wanted)[i], (*there)[i]));
  }
  return back;
}

Quad carriedBy(const Homography& h, const Quad& quad) {
  Quad to{};
  std::transform(quad.begin(), quad.end(), to.begin(), [&](Point p) { return map(h, p); });
  return to;
}

using MatrixAt = std::function<std::optional<Homography>(int)>;
ReadBack comparedMatrices(const Pin& written, const MatrixAt& read) {
  const auto carried = [&](const std::optional<Homography>& h) {
    return h && isFinite(*h) ? std::optional<Quad>(carriedBy(*h, written.from)) : std::nullopt;
  };
  return comparedCorners(
      written, [&](const PinFrame& frame) { return carried(frame.h); },
      [&](const PinFrame& frame) { return carried(read(frame.frame)); });
}

// The layers' matrices are for points as rows: columns of the transform are rows, z is the third.
ReadBack comparedLayer(const std::string& path, const Pin& written) {
  const KeyedNumbers keys = numbersInLines(path, 16);
  ReadBack back = comparedMatrices(written, [&](int frame) -> std::optional<Homography> {
    const auto found = keys.find(frame);
    if (found == keys.end()) return std::nullopt;
    const std::vector<double>& m = found->second;
    return Homography{{{m[0], m[4], m[12]}, {m[1], m[5], m[13]}, {m[3], m[7], m[15]}}};
  });
  for (const auto& [frame, numbers] : keys) {
    const bool isKnown =
        std::any_of(written.frames.begin(), written.frames.end(),
                    [number = frame](const PinFrame& f) { return f.frame == number; });
    if (!isKnown) ++back.added;
  }
  return back;
}

ReadBack comparedNodeMatrix(const std::string& path, const Pin& written) {
  const ScannedMatrix matrix(path);
  return comparedMatrices(written, [&](int frame) { return matrix.at(frame); });
}

// The corner is turned from x to y about the anchor, scaled in per cent before.
Point placed(Point corner, const std::vector<double>& anchor, const std::vector<double>& position,
             const std::vector<double>& scale, double degrees) {
  const double angle = degrees * std::acos(-1.0) / 180.0;
  const double x = scale[0] / 100.0 * (corner.x - anchor[0]);
  const double y = scale[1] / 100.0 * (corner.y - anchor[1]);
  return {position[0] + std::cos(angle) * x - std::sin(angle) * y,
          position[1] + std::sin(angle) * x + std::cos(angle) * y};
}

ReadBack comparedMotion(const std::string& path, const Pin& written) {
  std::map<std::string, KeyedNumbers> sections = numbersInSections(path);
  const auto at = [&](const char* name, int frame, std::size_t count) {
    const KeyedNumbers& keys = sections[name];
    const auto found = keys.find(frame);
    return found != keys.end() && found->second.size() >= count ? &found->second : nullptr;
  };
  const auto expected = [](const PinFrame& frame) {
    return isWhole(frame) ? std::optional<Quad>(frame.to) : std::nullopt;
  };
  const auto read = [&](const PinFrame& frame) -> std::optional<Quad> {
    const auto* anchor = at("Anchor Point", frame.frame, 2);
    const auto* position = at("Position", frame.frame, 2);
    const auto* scale = at("Scale", frame.frame, 2);
    const auto* turn = at("Rotation", frame.frame, 1);
    if (!anchor || !position || !scale || !turn) return std::nullopt;
    Quad to{};
    std::transform(written.from.begin(), written.from.end(), to.begin(), [&](Point corner) {
      return placed(corner, *anchor, *position, *scale, turn->front());
    });
    return to;
  };
  return comparedCorners(written, expected, read);
}

ReadBack joined(const ReadBack& a, const ReadBack& b) {
  return {std::max(a.largest, b.largest), a.scale, a.missing + b.missing, a.added + b.added};
}

Tracks readAs(const std::string& path, Format format) {
  ReadTrace trace;
  trace.format = format;
  return readTracks(path, {}, {}, &trace);
}

ReadBack comparedNode(const std::string& path, const Pin& written, PinStyle::Nk style) {
  if (style == PinStyle::Nk::Matrix) return comparedNodeMatrix(path, written);
  const ReadBack corners = compared(tracksOf(wholeFrames(written)), readAs(path, Format::Nk));
  if (style == PinStyle::Nk::Points) return corners;
  return joined(corners, comparedNodeMatrix(path, written));
}

std::map<double, Homography> transformsByFrame(const ResultTransforms& result) {
  std::map<double, Homography> transforms;
  for (const FrameTransform& frame : result.frames) transforms.emplace(frame.frame, frame.h);
  for (const BetweenFrame& frame : result.between) transforms.emplace(frame.frame, frame.h);
  return transforms;
}

// How far a corner is from where it was to be; where it is on the horizon, nothing in its own
// place.
double apart(const Homography& h, Point corner, const Homography& read, Point readCorner) {
  const bool isSame = h == read && corner == readCorner;
  return isSame ? 0.0 : apart(map(h, corner), map(read, readCorner));
}

double apart(const Homography& h, const NamedQuad& quad, const Homography& read,
             const NamedQuad& readQuad) {
  double most = 0.0;
  for (std::size_t i = 0; i < kCorners; ++i)
    most = std::max(most, apart(h, quad.corners[i], read, readQuad.corners[i]));
  return most;
}

}  // namespace

ReadBack readBack(const std::string& path, Format format, const ResultTransforms& written) {
  const ResultTransforms read =
      format == Format::Csv ? readResultCsv(path) : readWrittenTransforms(path);
  const std::map<double, Homography> wanted = transformsByFrame(written);
  const std::map<double, Homography> there = transformsByFrame(read);
  ReadBack back;
  for (const auto& [frame, h] : wanted) {
    const auto found = there.find(frame);
    if (found == there.end()) {
      ++back.missing;
      continue;
    }
    for (std::size_t q = 0; q < std::min(written.quads.size(), read.quads.size()); ++q)
      back.largest =
          std::max(back.largest, apart(h, written.quads[q], found->second, read.quads[q]));
  }
  back.added = there.size() + back.missing - wanted.size();
  return back;
}

ReadBack readBack(const std::string& path, Format format, const Tracks& written) {
  return compared(written, readAs(path, format));
}

ReadBack readBack(const std::string& path, Format format, const Pin& written,
                  const PinStyle& style) {
  switch (format) {
    case Format::Blender:
      return comparedKeys(path, written, {kTopLeft, kTopRight, kBottomLeft, kBottomRight});
    case Format::Natron:
      return comparedKeys(path, written, {kBottomLeft, kBottomRight, kTopRight, kTopLeft});
    case Format::Usda:
      return comparedLayer(path, written);
    case Format::Nk:
      return comparedNode(path, written, style.nk);
    case Format::Keyframes:
      if (style.keyframes == PinStyle::Keyframes::Transform) return comparedMotion(path, written);
      return compared(tracksOf(wholeFrames(written)), readAs(path, format));
    default:
      return readBack(path, format, tracksOf(written));
  }
}

std::string textOf(const ReadBack& read) {
  const std::string distance = read.scale == Scale::Pixels
                                   ? pixels(read.largest)
                                   : fmt::format("{:.3g} in units of the file", read.largest);
  std::string text = "read back: largest difference " + distance;
  if (read.missing > 0) text += fmt::format(", {} missing", read.missing);
  if (read.added > 0) text += fmt::format(", {} too many", read.added);
  return text;
}

}  // namespace cornerpin
