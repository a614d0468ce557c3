// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_ADVICE_DOUBTFUL_STRETCH_H
#define SHOT_ADVICE_DOUBTFUL_STRETCH_H

#include <cstddef>
#include <string>
#include <vector>

#include "shot/solve/result.h"
#include "shot/solve/wording.h"

namespace cornerpin {

/// Doubtful frames that belong together: up to `kMostBetween` good ones in a row may lie between.
struct DoubtfulStretch {
  Stretch frames;
  std::size_t count = 0;  ///< of its doubtful frames
  std::size_t worst = 0;  ///< index of the frame with the largest expected error; none is largest
  std::size_t quad = 0;   ///< of the corner there that may be furthest off, or has no figure
  std::size_t corner = 0;

  static constexpr int kMostBetween = 3;
};

/// By frame.
std::vector<DoubtfulStretch> doubtfulStretches(const ShotResult& result);

/// The three with the largest expected errors, a missing one being largest; the worst first.
std::vector<DoubtfulStretch> worstStretches(const ShotResult& result);

/// The expected error that counts when frames are compared: infinite where nothing tells it.
double comparableError(const FrameResult& frame);

/// The doubtful frames of a result.
std::vector<int> doubtfulFrames(const ShotResult& result);

}  // namespace cornerpin

#endif
