// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_PLANE_SIMILARITY_H
#define SHOT_PLANE_SIMILARITY_H

#include <array>
#include <vector>

namespace cornerpin {

struct Point {
  double x = 0.0;
  double y = 0.0;
};

/// Four corners, in order around.
using Quad = std::array<Point, 4>;

/// A 3 x 3 projective transform by rows; points are columns (x, y, 1).
using Homography = std::array<std::array<double, 3>, 3>;

/// The point's image. The third coordinate is `denominator`: 0 on the transform's horizon, and of
/// different signs on its two sides.
Point map(const Homography& h, Point p);
double denominator(const Homography& h, Point p);

double squaredDistance(Point a, Point b);

bool isFinite(const Homography& h);

/// Whether all the points (at least one) lie strictly on one side of the horizon.
bool onOneSide(const Homography& h, const std::vector<Point>& points);

/// The transform b, then a.
Homography product(const Homography& a, const Homography& b);

constexpr Homography kIdentityTransform = {{{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}}};

/// The points without the far-off ones: those up to four times the median distance from the median
/// point. All of them where that would leave out more than a quarter, as a dense group beside a
/// sparse one does.
std::vector<Point> withoutFarOff(const std::vector<Point>& points);

/// The similarity p -> scale * (p - centre) between the caller's coordinates and those in which
/// the solver works best. One scale for both axes: a least-squares optimum stays one.
struct Conditioning {
  /// Carries the box around the points (at least one) onto -1 .. 1 in its longer direction, its
  /// centre onto 0; the scale is 1 when the points coincide.
  static Conditioning fitting(const std::vector<Point>& points);

  Point apply(Point p) const { return {scale * (p.x - centre.x), scale * (p.y - centre.y)}; }

  /// The way back.
  Conditioning inverse() const { return {{-scale * centre.x, -scale * centre.y}, 1.0 / scale}; }

  Point centre;
  double scale = 1.0;
};

/// inv(to) * h * from, divided by its last element: h between conditioned coordinates, turned into
/// the same transform between the callers'.
Homography unconditioned(const Homography& h, const Conditioning& from, const Conditioning& to);

}  // namespace cornerpin

#endif
