// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_TIME_CORNER_PATH_H
#define SHOT_TIME_CORNER_PATH_H

#include <optional>
#include <vector>

#include "shot/plane/homography.h"
#include "shot/plane/points.h"

namespace cornerpin {

/// A transform from the surface to the picture at some time, in frames.
struct TimedTransform {
  double frame = 0.0;
  Homography h{};
};

/// Whether a transform is finite and carries each corner of a quad, which it shows in front of its
/// horizon as it does `front`, to its own place, and the quad there is one that a camera shows.
bool leadsTo(const Homography& h, const Quad& from, const Quad& to, Point front);

/// A quad that all the transforms show well in front of their horizons, as they do `front`: the one
/// given, or that drawn together towards `front`.
Quad shownByAll(const std::vector<Homography>& transforms, Quad quad, Point front);

/// The transform at a time from those at two to four others (at rising times), by the paths of four
/// corners (`quadAt`), those of `shownByAll`. At one of the given times it is the one given. None
/// where the corners come to lie so that no transform leads there.
std::optional<Homography> transformBetween(const std::vector<TimedTransform>& known, double frame,
                                           const Quad& quad, Point front);

}  // namespace cornerpin

#endif
