// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_PLANE_HOMOGRAPHY_H
#define SHOT_PLANE_HOMOGRAPHY_H

#include <array>

#include "shot/plane/points.h"

namespace cornerpin {

/// A 3 x 3 projective transform by rows; points are columns (x, y, 1).
using Homography = std::array<std::array<double, 3>, 3>;

constexpr Homography kIdentity = {{{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}}};

/// The point's image. The third coordinate is `denominator`: 0 on the transform's horizon, and of
/// different signs on its two sides.
inline double denominator(const Homography& h, Point p) {
  return h[2][0] * p.x + h[2][1] * p.y + h[2][2];
}
inline Point map(const Homography& h, Point p) {
  const double s = denominator(h, p);
  return {(h[0][0] * p.x + h[0][1] * p.y + h[0][2]) / s,
          (h[1][0] * p.x + h[1][1] * p.y + h[1][2]) / s};
}

/// How the image (X, Y) of a point moves with the point (x, y).
struct Derivative {
  double Xx, Xy;  // dX/dx, dX/dy
  double Yx, Yy;
};
inline Derivative derivative(const Homography& h, Point p) {
  const double s = denominator(h, p);
  const Point q = map(h, p);
  return {(h[0][0] - q.x * h[2][0]) / s, (h[0][1] - q.x * h[2][1]) / s,
          (h[1][0] - q.y * h[2][0]) / s, (h[1][1] - q.y * h[2][1]) / s};
}

/// Whether both points lie on the same side of the horizon, neither of them on it.
inline bool onSameSide(const Homography& h, Point a, Point b) {
  return denominator(h, a) * denominator(h, b) > 0.0;
}

/// Whether all the points (at least one) lie strictly on one side of the horizon.
bool onOneSide(const Homography& h, const Points& points);

bool isFinite(const Homography& h);

/// The transform b, then a.
Homography product(const Homography& a, const Homography& b);

/// The inverse, from the cofactors; not finite where there is none.
Homography inverse(const Homography& h);

/// The same transform with 1 as its last element.
Homography withLastOne(Homography h);

}  // namespace cornerpin

#endif
