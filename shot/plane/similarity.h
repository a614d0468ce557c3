// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_PLANE_SIMILARITY_H
#define SHOT_PLANE_SIMILARITY_H

#include "shot/plane/extent.h"
#include "shot/plane/homography.h"
#include "shot/plane/points.h"

namespace cornerpin {

/// The similarity p -> scale * (p - centre) between two units. One scale for both axes: a
/// least-squares optimum stays one.
struct Similarity {
  /// Carries the box around the points (at least one) onto -1 .. 1 in its longer direction, its
  /// centre onto 0; the scale is 1 when the points coincide. Solvers work best on such numbers.
  static Similarity fitting(const Points& points) { return ofBox(boxAround(points)); }
  static Similarity ofBox(const Box& box);

  Point apply(Point p) const { return {scale * (p.x - centre.x), scale * (p.y - centre.y)}; }

  /// The way back.
  Similarity inverse() const { return {{-scale * centre.x, -scale * centre.y}, 1.0 / scale}; }

  Point centre;
  double scale = 1.0;
};

/// The square around the box of the points (at least one), which `Similarity::fitting` carries onto
/// -1 .. 1: what a fit has to carry well, not only the strip or patch that its tracks lie in.
Quad squareAround(const Points& points);

/// A transform between the units that `from` and `to` lead to, as the same transform between those
/// that they start from: inv(to) * h * from, divided by its last element.
Homography denormalised(const Homography& h, const Similarity& from, const Similarity& to);

/// The way back: to * h * inv(from), divided by its last element.
Homography normalised(const Homography& h, const Similarity& from, const Similarity& to);

}  // namespace cornerpin

#endif
