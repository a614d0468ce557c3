// SPDX-License-Identifier: BSD-3-Clause
#include "shot/trust/trust.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "shot/trust/uncertainty.h"

namespace cornerpin {

namespace {

constexpr std::size_t kListed = 5;
constexpr double kVisible = 1e-3;  // of the tracks' extent: a pixel of 1,000
constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

// The base frame's tracks by index; none where absent.
using BasePlaces = std::vector<std::optional<Point>>;

BasePlaces basePlaces(const Tracks& tracks, int baseFrame) {
  BasePlaces places(tracks.names.size());
  for (const Observation& o : tracks.inFrame(baseFrame)) {
    if (o.weight > 0.0f) places[static_cast<std::size_t>(o.track)] = Point{o.x, o.y};
  }
  return places;
}

Quad boxAround(const BasePlaces& places, Loss loss) {
  std::vector<Point> points;
  for (const auto& place : places) {
    if (place) points.push_back(*place);
  }
  points = surfacePoints(points, loss);
  if (points.empty()) return {};
  Point low = points.front();
  Point high = low;
  for (const Point& p : points) {
    low = {std::min(low.x, p.x), std::min(low.y, p.y)};
    high = {std::max(high.x, p.x), std::max(high.y, p.y)};
  }
  return {low, {high.x, low.y}, high, {low.x, high.y}};
}

// The frame whose transform a lower model was fitted on top of.
std::size_t neighbourOf(const ShotResult& result, std::size_t frame) {
  return result.frames[frame].frame > result.baseFrame ? frame - 1 : frame + 1;
}

FittedFrame fittedFrame(const Tracks& tracks, const BasePlaces& places, const ShotResult& result,
                        std::size_t frame, std::vector<int>& ids) {
  const FrameResult& solved = result.frames[frame];
  FittedFrame fitted;
  fitted.model = solved.model;
  fitted.h = solved.h;
  if (solved.onTop) fitted.kept = result.frames[neighbourOf(result, frame)].h;
  ids.clear();
  for (const Observation& o : tracks.inFrame(solved.frame)) {
    const auto& place = places[static_cast<std::size_t>(o.track)];
    if (!place || !(o.weight > 0.0f)) continue;
    ids.push_back(o.track);
    fitted.matches.push_back({*place, {o.x, o.y}, static_cast<double>(o.weight)});
  }
  return fitted;
}

// Whether the frame's fit told good tracks from bad ones.
bool isRobust(const ShotResult& result, const FrameResult& frame) {
  return result.loss != Loss::None && std::isfinite(frame.scale) &&
         static_cast<std::size_t>(frame.tracks) >= kFewestForRobust;
}

bool isInFront(const ShotResult& result, const FrameResult& frame, Point p) {
  return denominator(frame.h, p) * denominator(frame.h, result.baseCentre) > 0.0;
}

// Gives the matches the weights of the last step of the fit, or of only the good tracks, in full.
FittedFrame weighted(const ShotResult& result, const FrameResult& frame, FittedFrame fitted,
                     bool goodInFull) {
  if (!isRobust(result, frame)) return fitted;
  const bool cut = goodInFull || frame.status != Status::Solved;
  for (Match& m : fitted.matches) {
    const Point q = map(frame.h, m.from);
    const double r = isInFront(result, frame, m.from) ? std::hypot(m.to.x - q.x, m.to.y - q.y)
                                                      : std::numeric_limits<double>::infinity();
    if (!(r <= kInlierScales * frame.scale) && cut) m.weight = 0.0;
    if (!cut) m.weight *= std::sqrt(lossWeight(frame.loss, r, frame.width));
    if (!(m.weight > 0.0)) m.weight = 0.0;
  }
  return fitted;
}

FrameTrust trustOf(const ShotResult& result, const FrameResult& frame, const FittedFrame& fitted,
                   const Quad& corners) {
  FrameTrust trust;
  trust.noise = kNone;
  if (frame.status == Status::Base) return trust;
  const Uncertainty uncertainty(weighted(result, frame, fitted, true));
  trust.noise = uncertainty.noise();
  for (std::size_t c = 0; c < corners.size(); ++c) {
    const bool seen = isInFront(result, frame, corners[c]);
    trust.deviations[c] = seen ? uncertainty.deviationAt(corners[c]) : kNone;
  }
  return trust;
}

}  // namespace

FittedFrame fittedFrame(const Tracks& tracks, const ShotResult& result, std::size_t frame,
                        std::vector<int>& ids) {
  const BasePlaces places = basePlaces(tracks, result.baseFrame);
  return weighted(result, result.frames[frame], fittedFrame(tracks, places, result, frame, ids),
                  false);
}

ShotTrust assess(const Tracks& tracks, const ShotResult& result, const std::optional<Quad>& corners,
                 const TrackSink& sink) {
  const BasePlaces places = basePlaces(tracks, result.baseFrame);
  ShotTrust trust;
  const Quad box = boxAround(places, result.loss);
  trust.corners = corners ? *corners : box;
  trust.frames.reserve(result.frames.size());
  WorstTracks worst(kVisible * std::max(box[2].x - box[0].x, box[2].y - box[0].y));
  std::vector<int> ids;
  for (std::size_t i = 0; i < result.frames.size(); ++i) {
    const FrameResult& frame = result.frames[i];
    const FittedFrame fitted = fittedFrame(tracks, places, result, i, ids);
    trust.frames.push_back(trustOf(result, frame, fitted, trust.corners));
    if (frame.status == Status::Base) continue;
    const std::vector<TrackInfluence> influences =
        influencesOf(weighted(result, frame, fitted, false), trust.corners);
    worst.addFrame(frame.frame, ids, influences);
    if (!sink) continue;
    for (std::size_t k = 0; k < ids.size(); ++k) sink(ids[k], frame.frame, influences[k]);
  }
  for (const TrackStretch& stretch : worst.worst(kListed)) {
    trust.worst.push_back({tracks.names[static_cast<std::size_t>(stretch.track)], stretch});
  }
  return trust;
}

std::string describe(const WorstTrack& track) {
  const TrackStretch& s = track.stretch;
  const std::string frames = s.first == s.last ? fmt::format("frame {}", s.first)
                                               : fmt::format("frames {}-{}", s.first, s.last);
  return fmt::format(
      "{}, {}: without it the worst corner moves {} px", track.name, frames,
      s.moves < 10.0 ? fmt::format("{:.2g}", s.moves) : fmt::format("{:.0f}", s.moves));
}

}  // namespace cornerpin
