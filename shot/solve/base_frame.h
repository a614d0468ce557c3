// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_BASE_FRAME_H
#define SHOT_SOLVE_BASE_FRAME_H

#include <cstddef>
#include <vector>

#include "shot/fit/loss.h"
#include "shot/fit/matches.h"
#include "shot/plane/points.h"
#include "shot/solve/tracks.h"

namespace cornerpin {

/// The frame whose tracks have the most observations in the whole shot (weight above 0); the
/// smallest of several.
int chooseBaseFrame(const Tracks& tracks);

/// The frame that all others are measured from, and the tracks that take part: those seen in it.
class BaseFrame {
 public:
  /// Throws `std::invalid_argument` for a frame outside the shot or without tracks.
  BaseFrame(const Tracks& tracks, int frame);

  int frame() const { return frame_; }

  /// The tracks' places here, and their weights, in the order of the tracks.
  const Points& places() const { return places_; }
  const std::vector<float>& weights() const { return weights_; }

  /// Where a track stands in that order; -1 when it is absent here.
  int rankOf(int track) const { return ranks_[static_cast<std::size_t>(track)]; }

  /// The tracks of a frame that are seen there and here (weight above 0), in the file's unit.
  Matches matchesIn(const Tracks& tracks, int frame) const;

 private:
  int frame_;
  Points places_;
  std::vector<float> weights_;
  std::vector<int> ranks_;
};

/// The places in the base frame that tell how far the surface reaches: all of them, or with a
/// robust loss and enough tracks to tell a bad one those that are not far off (`withoutFarOff`).
Points surfacePlaces(const Points& base, Loss loss);

}  // namespace cornerpin

#endif
