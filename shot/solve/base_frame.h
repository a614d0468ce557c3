// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_BASE_FRAME_H
#define SHOT_SOLVE_BASE_FRAME_H

#include <cstddef>
#include <vector>

#include "shot/fit/loss.h"
#include "shot/plane/points.h"
#include "shot/solve/tracks.h"

namespace cornerpin {

/// The frame whose tracks have the most observations in the whole shot (weight above 0); the
/// smallest of several.
int chooseBaseFrame(const Tracks& tracks);

/// The frame that all others are measured from, and the tracks seen in it (weight above 0).
class BaseFrame {
 public:
  /// Throws `std::invalid_argument` for a frame outside the shot or without tracks.
  BaseFrame(const Tracks& tracks, int frame);

  int frame() const { return frame_; }

  /// The tracks, in their order, and their places here.
  const std::vector<int>& tracks() const { return tracks_; }
  const Points& places() const { return places_; }
  bool sees(int track) const {
    const auto t = static_cast<std::size_t>(track);
    return t < seen_.size() && seen_[t] != 0;
  }

 private:
  int frame_;
  std::vector<int> tracks_;
  Points places_;
  std::vector<char> seen_;  // by track, 1 or 0; up to the last of the shot that has a name
};

/// The places in the base frame that tell how far the surface reaches: all of them, or with a
/// robust loss and enough tracks to tell a bad one those that are not far off (`withoutFarOff`).
Points surfacePlaces(const Points& base, Loss loss);

}  // namespace cornerpin

#endif
