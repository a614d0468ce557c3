// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_SURFACE_MAP_H
#define SHOT_SOLVE_SURFACE_MAP_H

#include <cstddef>
#include <vector>

#include "shot/fit/matches.h"
#include "shot/plane/points.h"
#include "shot/solve/base_frame.h"
#include "shot/solve/tracks.h"

namespace cornerpin {

/// Where tracks are on the surface, in the coordinates of the base frame's picture: the bases of
/// all matches.
class SurfaceMap {
 public:
  /// Knows the base frame's tracks, each at the place where that frame sees it.
  /// \param tracks  as many as the shot has names
  SurfaceMap(const BaseFrame& base, std::size_t tracks);

  bool knows(int track) const;
  Point placeOf(int track) const { return places_[static_cast<std::size_t>(track)]; }
  void setPlace(int track, Point place) { places_[static_cast<std::size_t>(track)] = place; }

  /// The tracks of a frame that are seen there (weight above 0) and known, in the file's unit.
  Matches matchesIn(const Tracks& tracks, int frame) const;

 private:
  std::vector<Point> places_;  // by track; NaN where it is not known
};

}  // namespace cornerpin

#endif
