// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/result.h"

#include <fmt/format.h>

#include <cmath>

namespace cornerpin {

Point carried(const ShotResult& result, const Homography& h, Point reference) {
  constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
  const Point p = map(h, reference);
  const bool visible =
      onSameSide(h, result.baseCentre, reference) && std::isfinite(p.x) && std::isfinite(p.y);
  return visible ? p : Point{kNone, kNone};
}

std::string whyOf(const FrameResult& frame) {
  if (frame.texts) return frame.texts->why;
  if (frame.verdict.status != Status::Solved) return {};
  return describe(frame.verdict.origin, static_cast<std::size_t>(frame.good),
                  static_cast<std::size_t>(frame.tracks));
}

std::string reasonOf(const FrameResult& frame) {
  return frame.texts ? frame.texts->reason : reasonOf(frame.verdict);
}

const char* judgementOf(const FrameResult& frame) {
  return frame.doubts.empty() ? "good" : "doubtful";
}

std::string describe(const WorstTrack& track) {
  const TrackStretch& s = track.stretch;
  const std::string frames = s.first == s.last ? fmt::format("frame {}", s.first)
                                               : fmt::format("frames {}-{}", s.first, s.last);
  return fmt::format(
      "{}, {}: without it the worst corner moves {} px", printable(track.name), frames,
      s.moves < 10.0 ? fmt::format("{:.2g}", s.moves) : fmt::format("{:.0f}", s.moves));
}

}  // namespace cornerpin
