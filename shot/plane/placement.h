// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_PLANE_PLACEMENT_H
#define SHOT_PLANE_PLACEMENT_H

#include "shot/plane/points.h"

namespace cornerpin {

/// How layers are placed: position + R S (p - anchor) with a scale for each axis, then a rotation
/// from x towards y, which is clockwise where y is down.
struct Placement {
  Point anchor;
  Point position;
  Point scale = {1.0, 1.0};
  double degrees = 0.0;

  /// A point's image; exact where nothing is turned or scaled and position and anchor are the same.
  Point apply(Point p) const;
};

/// The placement about the middle of `from` whose images of its corners are nearest to the corners
/// of `to` in the sum of squares. All corners must be finite.
///
/// The position is where the middle goes, whatever the rest. Of the rest, the images' sum of
/// products with `to` is a quadratic form of (cos, sin) once the best scales are put in, so that
/// its larger axis is the angle. Half a turn with both scales negated is the same placement: x is
/// scaled by no negative number, and a mirrored quad has a negative y.
///
/// \param near  the rotation to which the result's is nearest, whole turns added: rotations that
///              go on from frame to frame do not jump
Placement nearestPlacement(const Quad& from, const Quad& to, double near);

}  // namespace cornerpin

#endif
