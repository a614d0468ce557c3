// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_CONDITIONING_H
#define SHOT_CONDITIONING_H

#include <array>

namespace cornerpin {

struct Point {
  double x = 0.0;
  double y = 0.0;
};

/// A 3 x 3 projective transform by rows; points are columns (x, y, 1).
using Homography = std::array<std::array<double, 3>, 3>;

/// The point's image. The third coordinate is `denominator`: 0 on the transform's horizon, and of
/// different signs on its two sides.
Point map(const Homography& h, Point p);
double denominator(const Homography& h, Point p);

bool isFinite(const Homography& h);

/// The similarity p -> scale * (p - centre) between the caller's coordinates and those in which
/// the solver works best. One scale for both axes: a least-squares optimum stays one.
struct Conditioning {
  /// Carries the box onto -1 .. 1 in its longer direction, its centre onto 0; the scale is 1 when
  /// the box is a point.
  static Conditioning fitting(Point smallest, Point largest);

  Point apply(Point p) const { return {scale * (p.x - centre.x), scale * (p.y - centre.y)}; }

  /// inv(N) * h * N, N being this similarity, divided by its last element.
  Homography undo(const Homography& h) const;

  Point centre;
  double scale = 1.0;
};

}  // namespace cornerpin

#endif
