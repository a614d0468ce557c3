// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_TIME_LEFT_OUT_H
#define SHOT_TIME_LEFT_OUT_H

#include <array>
#include <optional>
#include <vector>

#include "shot/solve/result.h"
#include "shot/time/corner_path.h"

namespace cornerpin {

/// Whether a frame is one to interpolate from: it has a transform of its own, which nothing says
/// may be a wrong one altogether. That it may be a little off is no reason against it.
bool isAnchor(const FrameResult& frame);

/// The frames that a stretch is interpolated between, by their offsets from the one before it.
enum class Bridge {
  Line,   ///< the two next to the stretch
  Cubic,  ///< these, and one more on either side half as far off as the stretch is long
};

/// How many frames off the outer frames of a cubic are, for so many frames to fill in.
std::size_t outerDistance(std::size_t length);

/// The frames to bridge a stretch of `length` frames from behind frame `before` (an index) on; none
/// where one of them lies outside the result, or a frame between an outer one and the stretch is no
/// anchor.
std::vector<TimedTransform> bridgeEnds(const ShotResult& result, std::size_t before,
                                       std::size_t length, Bridge bridge);

/// How far interpolation misses, told by stretches of the same length that are left out where the
/// result has all frames.
struct Misses {
  using Corners = std::vector<std::array<double, 4>>;  // of all quads

  /// Mean squares of the corners, by frame of the stretch, first to last.
  std::vector<Corners> squares;
  /// What of these the left-out frames' own variances do not explain, which is motion. Few
  /// stretches may all be lucky: it counts as if there were two more like the mean with nothing to
  /// their credit, besides those that do not overlap.
  std::vector<Corners> motion;
  double total = 0.0;  ///< all squares of the first quad added up
};

/// None where fewer than three stretches can be left out.
std::optional<Misses> missesOf(const ShotResult& result, std::size_t length, Bridge bridge);

}  // namespace cornerpin

#endif
