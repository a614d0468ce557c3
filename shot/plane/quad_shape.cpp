// SPDX-License-Identifier: BSD-3-Clause
#include "shot/plane/quad_shape.h"

#include <algorithm>
#include <cmath>

#include "shot/plane/extent.h"

namespace cornerpin {

namespace {

constexpr double kFlat = 1e-9;

}  // namespace

// At a corner the way around turns left or right. Four turns of one kind go around once. Where two
// sides cross it is two of each, where a corner is dented one against three.
QuadShape shapeOf(const Quad& quad) {
  const Box box = boxAround({quad[0], quad[1], quad[2], quad[3]});
  const double extent = std::max(box.high.x - box.low.x, box.high.y - box.low.y);
  int left = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    const Point a = quad[i];
    const Point b = quad[(i + 1) % 4];
    const Point c = quad[(i + 2) % 4];
    // Of the unit's size, so that no product is too large or too small.
    const double turn = (b.x - a.x) / extent * ((c.y - b.y) / extent) -
                        (b.y - a.y) / extent * ((c.x - b.x) / extent);
    if (!(std::fabs(turn) > kFlat)) return QuadShape::Flat;
    if (turn > 0.0) ++left;
  }
  if (left == 0 || left == 4) return QuadShape::Convex;
  return left == 2 ? QuadShape::Crossed : QuadShape::Dented;
}

}  // namespace cornerpin
