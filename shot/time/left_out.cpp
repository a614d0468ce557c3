// SPDX-License-Identifier: BSD-3-Clause
#include "shot/time/left_out.h"

#include <algorithm>
#include <cmath>

namespace cornerpin {

namespace {

constexpr std::size_t kFewest = 3;
constexpr std::size_t kMost = 100;  // stretches, from all over the shot
constexpr double kUnseen = 2.0;

bool areAnchors(const ShotResult& result, std::size_t first, std::size_t last) {
  const auto from = result.frames.begin() + static_cast<std::ptrdiff_t>(first);
  const auto to = result.frames.begin() + static_cast<std::ptrdiff_t>(last + 1);
  return std::all_of(from, to, isAnchor);
}

// The frames before a stretch that can be left out.
std::vector<std::size_t> trials(const ShotResult& result, std::size_t length, Bridge bridge) {
  std::vector<std::size_t> all;
  std::size_t unbroken = 0;  // anchors up to and with the frame behind the stretch
  for (std::size_t after = 0; after < result.frames.size(); ++after) {
    unbroken = isAnchor(result.frames[after]) ? unbroken + 1 : 0;
    if (unbroken < length + 2) continue;
    const std::size_t before = after - length - 1;
    if (!bridgeEnds(result, before, length, bridge).empty()) all.push_back(before);
  }
  if (all.size() <= kMost) return all;
  std::vector<std::size_t> some;
  for (std::size_t i = 0; i < kMost; ++i) some.push_back(all[i * all.size() / kMost]);
  return some;
}

// How many of them do not overlap.
double separate(const std::vector<std::size_t>& trials, std::size_t length) {
  double count = 0.0;
  std::size_t next = 0;
  for (std::size_t before : trials) {
    if (before < next) continue;
    count += 1.0;
    next = before + length;
  }
  return count;
}

// Adds up what interpolation misses the frames of a stretch by, and these frames' own variances.
void addMisses(const ShotResult& result, std::size_t before, Bridge bridge,
               std::vector<Misses::Corners>& squares, std::vector<Misses::Corners>& variances) {
  const std::vector<TimedTransform> ends = bridgeEnds(result, before, squares.size(), bridge);
  for (std::size_t k = 0; k < squares.size(); ++k) {
    const FrameResult& frame = result.frames[before + 1 + k];
    const Homography h =
        transformBetween(ends, frame.frame, result.quads.front().corners, result.baseCentre)
            .value_or(ends[bridge == Bridge::Cubic ? 1 : 0].h);
    for (std::size_t q = 0; q < result.quads.size(); ++q) {
      for (std::size_t i = 0; i < 4; ++i) {
        const Point corner = result.quads[q].corners[i];
        squares[k][q][i] +=
            squaredDistance(carried(result, h, corner), carried(result, frame, corner));
        const double variance = frame.figures.quads[q][i].trace();
        if (std::isfinite(variance)) variances[k][q][i] += variance;
      }
    }
  }
}

}  // namespace

bool isAnchor(const FrameResult& frame) {
  const Status status = frame.verdict.status;
  if (status != Status::Base && status != Status::Solved) return false;
  return std::none_of(frame.doubts.begin(), frame.doubts.end(), [](const Doubt& doubt) {
    return doubt.code == DoubtCode::ChanceAgreement || doubt.code == DoubtCode::BudgetSpent ||
           doubt.code == DoubtCode::Rival || doubt.code == DoubtCode::Jump;
  });
}

std::size_t outerDistance(std::size_t length) { return length / 2 + 1; }

std::vector<TimedTransform> bridgeEnds(const ShotResult& result, std::size_t before,
                                       std::size_t length, Bridge bridge) {
  const std::size_t after = before + length + 1;
  const std::size_t outer = bridge == Bridge::Cubic ? outerDistance(length) : 0;
  if (before < outer || after + outer >= result.frames.size()) return {};
  if (!areAnchors(result, before - outer, before) || !areAnchors(result, after, after + outer)) {
    return {};
  }
  std::vector<std::size_t> ends = {before, after};
  if (outer > 0) ends = {before - outer, before, after, after + outer};
  std::vector<TimedTransform> transforms;
  transforms.reserve(ends.size());
  for (std::size_t i : ends) {
    transforms.push_back({static_cast<double>(result.frames[i].frame), result.frames[i].h});
  }
  return transforms;
}

std::optional<Misses> missesOf(const ShotResult& result, std::size_t length, Bridge bridge) {
  const std::vector<std::size_t> all = trials(result, length, bridge);
  if (all.size() < kFewest) return std::nullopt;
  Misses misses;
  misses.squares.assign(length, Misses::Corners(result.quads.size(), {0, 0, 0, 0}));
  misses.motion = misses.squares;
  std::vector<Misses::Corners> variances = misses.squares;
  for (std::size_t before : all) addMisses(result, before, bridge, misses.squares, variances);
  const double unseen = 1.0 + kUnseen / separate(all, length);
  const auto count = static_cast<double>(all.size());
  for (std::size_t k = 0; k < length; ++k) {
    for (std::size_t q = 0; q < result.quads.size(); ++q) {
      for (std::size_t i = 0; i < 4; ++i) {
        double& square = misses.squares[k][q][i] /= count;
        misses.motion[k][q][i] = unseen * std::max(0.0, square - variances[k][q][i] / count);
        if (q == 0) misses.total += square;
      }
    }
  }
  return misses;
}

}  // namespace cornerpin
