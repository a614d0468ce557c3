// SPDX-License-Identifier: BSD-3-Clause
#include "shot/advice/doubtful_stretch.h"

#include <algorithm>
#include <cmath>

namespace cornerpin {

namespace {

constexpr std::size_t kMostStretches = 3;

void findCorner(const FrameResult& frame, DoubtfulStretch& stretch) {
  double largest = -1.0;
  for (std::size_t quad = 0; quad < frame.figures.quads.size(); ++quad) {
    const std::array<double, 4> deviations = frame.figures.deviations(quad);
    for (std::size_t i = 0; i < deviations.size(); ++i) {
      const double deviation = std::isnan(deviations[i]) ? HUGE_VAL : deviations[i];
      if (deviation <= largest) continue;
      largest = deviation;
      stretch.quad = quad;
      stretch.corner = i;
    }
  }
}

}  // namespace

double comparableError(const FrameResult& frame) {
  return std::isnan(frame.expectedError) ? HUGE_VAL : frame.expectedError;
}

std::vector<DoubtfulStretch> doubtfulStretches(const ShotResult& result) {
  std::vector<DoubtfulStretch> stretches;
  for (std::size_t i = 0; i < result.frames.size(); ++i) {
    const FrameResult& frame = result.frames[i];
    if (frame.doubts.empty()) continue;
    const int reach = DoubtfulStretch::kMostBetween + 1;
    if (stretches.empty() || stretches.back().frames.last + reach < frame.frame) {
      stretches.push_back({{frame.frame, frame.frame}, 0, i, 0, 0});
    }
    DoubtfulStretch& stretch = stretches.back();
    stretch.frames.last = frame.frame;
    ++stretch.count;
    if (comparableError(frame) > comparableError(result.frames[stretch.worst])) stretch.worst = i;
  }
  for (DoubtfulStretch& stretch : stretches) findCorner(result.frames[stretch.worst], stretch);
  return stretches;
}

std::vector<DoubtfulStretch> worstStretches(const ShotResult& result) {
  std::vector<DoubtfulStretch> stretches = doubtfulStretches(result);
  std::stable_sort(stretches.begin(), stretches.end(), [&](const auto& a, const auto& b) {
    return comparableError(result.frames[a.worst]) > comparableError(result.frames[b.worst]);
  });
  stretches.resize(std::min(stretches.size(), kMostStretches));
  return stretches;
}

std::vector<int> doubtfulFrames(const ShotResult& result) {
  std::vector<int> frames;
  for (const FrameResult& frame : result.frames) {
    if (!frame.doubts.empty()) frames.push_back(frame.frame);
  }
  return frames;
}

}  // namespace cornerpin
