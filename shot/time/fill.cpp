// SPDX-License-Identifier: BSD-3-Clause
#include "shot/time/fill.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <utility>

#include "shot/time/left_out.h"
#include "shot/time/untouched.h"

namespace cornerpin {

namespace {

// Deviations between what a frame's tracks say and where it is put.
constexpr double kFarthest = 4.0;

bool isGap(const FrameResult& frame) {
  return frame.verdict.status == Status::Reduced || frame.verdict.status == Status::Held;
}

// The largest deviation; NaN where a corner has none.
double expectedErrorOf(const FrameResult& frame) {
  double largest = 0.0;
  for (std::size_t q = 0; q < frame.figures.quads.size(); ++q) {
    for (double deviation : frame.figures.deviations(q)) {
      if (!(deviation <= largest)) largest = deviation;
    }
  }
  return largest;
}

class Fill {
 public:
  explicit Fill(ShotResult& result) : result_(result) {}

  // Gives the frames first .. last (indices all of them) transforms between two anchors, unless one
  // of them knows better.
  void bridge(std::size_t before, std::size_t after, std::size_t first, std::size_t last) {
    const std::size_t length = after - before - 1;
    const auto [bridge, ends] = bridgeOver(before, length);
    const std::optional<Misses>& misses = missesOver(length, bridge);
    std::vector<FrameResult> filled;
    for (std::size_t i = first; i <= last; ++i) {
      const std::optional<Homography> h = transformBetween(
          ends, result_.frames[i].frame, result_.quads.front().corners, result_.baseCentre);
      if (!h) continue;
      FrameResult& frame = filled.emplace_back(result_.frames[i]);
      keepUntouched(frame);
      frame.h = *h;
      frame.filled = true;
      for (std::size_t q = 0; q < result_.quads.size(); ++q) {
        for (std::size_t c = 0; c < 4; ++c) {
          const double motion = misses ? misses->motion[i - before - 1][q][c] : kNoFigure;
          const double half = 0.5 * (motion + worseOf(before, after, q, c));
          frame.figures.quads[q][c] = {half, 0.0, half};
        }
      }
      if (isContradicted(result_.frames[i], frame)) return;
    }
    for (FrameResult& frame : filled) takeIfBetter(frame);
  }

 private:
  // A frame whose own figures say nothing takes what it can get.
  void takeIfBetter(FrameResult& filled) {
    FrameResult& own =
        result_.frames[static_cast<std::size_t>(filled.frame - result_.frames.front().frame)];
    const double error = expectedErrorOf(own);
    if (std::isnan(error) || expectedErrorOf(filled) < error) own = std::move(filled);
  }

  std::pair<Bridge, std::vector<TimedTransform>> bridgeOver(std::size_t before,
                                                            std::size_t length) {
    std::vector<TimedTransform> cubic = bridgeEnds(result_, before, length, Bridge::Cubic);
    const std::optional<Misses>& ofCubic = missesOver(length, Bridge::Cubic);
    const std::optional<Misses>& ofLine = missesOver(length, Bridge::Line);
    const bool lineIsBetter = ofCubic && ofLine && ofLine->total < ofCubic->total;
    if (!cubic.empty() && !lineIsBetter) return {Bridge::Cubic, cubic};
    return {Bridge::Line, bridgeEnds(result_, before, length, Bridge::Line)};
  }

  const std::optional<Misses>& missesOver(std::size_t length, Bridge bridge) {
    const auto found = misses_.find({length, bridge});
    if (found != misses_.end()) return found->second;
    return misses_[{length, bridge}] = missesOf(result_, length, bridge);
  }

  // Whether what a reduced frame's tracks say of a corner is too far from where it is put.
  bool isContradicted(const FrameResult& own, const FrameResult& filled) const {
    if (own.verdict.status != Status::Reduced) return false;
    for (std::size_t q = 0; q < result_.quads.size(); ++q) {
      for (std::size_t c = 0; c < 4; ++c) {
        const Point corner = result_.quads[q].corners[c];
        const double square =
            squaredDistance(carried(result_, own, corner), carried(result_, filled, corner));
        const double variance =
            own.figures.quads[q][c].trace() + filled.figures.quads[q][c].trace();
        if (square > kFarthest * kFarthest * variance) return true;
      }
    }
    return false;
  }

  // The larger of the two frames' mean squares of a corner's error.
  double worseOf(std::size_t before, std::size_t after, std::size_t q, std::size_t i) const {
    const double a = result_.frames[before].figures.quads[q][i].trace();
    const double b = result_.frames[after].figures.quads[q][i].trace();
    return std::isnan(a) || b < a ? a : b;
  }

  ShotResult& result_;
  std::map<std::pair<std::size_t, Bridge>, std::optional<Misses>> misses_;
};

}  // namespace

void fill(ShotResult& result) {
  result.fill = true;
  Fill filling(result);
  const std::size_t count = result.frames.size();
  std::optional<std::size_t> before;  // the last anchor
  for (std::size_t first = 0; first < count; ++first) {
    if (isAnchor(result.frames[first])) before = first;
    if (!isGap(result.frames[first])) continue;
    std::size_t last = first;
    while (last + 1 < count && isGap(result.frames[last + 1])) ++last;
    std::size_t after = last + 1;
    while (after < count && !isAnchor(result.frames[after])) ++after;
    if (before && after < count) filling.bridge(*before, after, first, last);
    first = last;
  }
}

}  // namespace cornerpin
