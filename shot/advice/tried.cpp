// SPDX-License-Identifier: BSD-3-Clause
#include "shot/advice/tried.h"

#include <algorithm>
#include <cmath>

namespace cornerpin {

namespace {

constexpr double kHelps = 0.5;  // of the expected error, or of the doubtful frames

bool isIn(Stretch stretch, int frame) { return stretch.first <= frame && frame <= stretch.last; }

// What a try changes outside the stretches speaks against all of it.
bool makesOthersDoubtful(const ShotResult& before, const ShotResult& after,
                         const std::vector<DoubtfulStretch>& stretches) {
  for (std::size_t i = 0; i < after.frames.size(); ++i) {
    if (!before.frames[i].doubts.empty() || after.frames[i].doubts.empty()) continue;
    const int frame = after.frames[i].frame;
    const bool tried = std::any_of(stretches.begin(), stretches.end(),
                                   [&](const auto& s) { return isIn(s.frames, frame); });
    if (!tried) return true;
  }
  return false;
}

bool helps(const ShotResult& before, const ShotResult& after, const DoubtfulStretch& stretch) {
  const double error = largestError(before, stretch.frames);
  const double left = largestError(after, stretch.frames);
  if (!std::isfinite(left)) return false;
  if (error > before.maxError) return left <= kHelps * error || left <= before.maxError;
  const auto doubtful = static_cast<double>(doubtfulIn(after, stretch.frames));
  return doubtful <= kHelps * static_cast<double>(stretch.count);
}

}  // namespace

std::vector<bool> helped(const ShotResult& before, const ShotResult& after,
                         const std::vector<DoubtfulStretch>& stretches) {
  std::vector<bool> found(stretches.size(), false);
  if (makesOthersDoubtful(before, after, stretches)) return found;
  for (std::size_t i = 0; i < found.size(); ++i) found[i] = helps(before, after, stretches[i]);
  return found;
}

double largestError(const ShotResult& result, Stretch stretch) {
  double largest = 0.0;
  for (const FrameResult& frame : result.frames) {
    if (isIn(stretch, frame.frame)) largest = std::max(largest, comparableError(frame));
  }
  return largest;
}

std::size_t doubtfulIn(const ShotResult& result, Stretch stretch) {
  const std::vector<int> frames = doubtfulFrames(result);
  return static_cast<std::size_t>(
      std::count_if(frames.begin(), frames.end(), [&](int frame) { return isIn(stretch, frame); }));
}

}  // namespace cornerpin
