// SPDX-License-Identifier: BSD-3-Clause
#include "shot/time/left_out.h"

#include <algorithm>
#include <cmath>

namespace cornerpin {

namespace {

constexpr std::size_t kFewest = 3;
constexpr std::size_t kMost = 100;  // stretches, from all over the shot

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

void addMisses(const ShotResult& result, const FrameResult& frame, const Homography& h,
               std::vector<std::array<double, 4>>& squares) {
  for (std::size_t q = 0; q < result.quads.size(); ++q) {
    for (std::size_t i = 0; i < 4; ++i) {
      const Point corner = result.quads[q].corners[i];
      squares[q][i] += squaredDistance(carried(result, h, corner), carried(result, frame, corner));
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
  Misses misses;
  misses.squares.assign(length,
                        std::vector<std::array<double, 4>>(result.quads.size(), {0, 0, 0, 0}));
  double count = 0.0;
  for (std::size_t before : trials(result, length, bridge)) {
    const std::vector<TimedTransform> ends = bridgeEnds(result, before, length, bridge);
    for (std::size_t k = 0; k < length; ++k) {
      const FrameResult& frame = result.frames[before + 1 + k];
      const std::optional<Homography> h =
          transformBetween(ends, frame.frame, result.quads.front().corners, result.baseCentre);
      addMisses(result, frame, h.value_or(ends[bridge == Bridge::Cubic ? 1 : 0].h),
                misses.squares[k]);
    }
    count += 1.0;
  }
  if (count < static_cast<double>(kFewest)) return std::nullopt;
  for (auto& frame : misses.squares) {
    for (auto& quad : frame) {
      for (double& square : quad) square /= count;
    }
    for (double square : frame.front()) misses.total += square;
  }
  return misses;
}

}  // namespace cornerpin
