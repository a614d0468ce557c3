// SPDX-License-Identifier: BSD-3-Clause
#include "shot/plane/placement.h"

#include <cmath>

namespace cornerpin {

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kTurn = 360.0;

Point middleOf(const Quad& quad) {
  return {(quad[0].x + quad[1].x + quad[2].x + quad[3].x) / 4.0,
          (quad[0].y + quad[1].y + quad[2].y + quad[3].y) / 4.0};
}

// Sums over the corners, about both middles: of x and y squared on the one side, and of their
// products with the corners on the other.
struct Sums {
  double xx = 0.0;
  double yy = 0.0;
  Point x;
  Point y;
};

Sums sumsOf(const Quad& from, Point anchor, const Quad& to, Point position) {
  Sums sums;
  for (std::size_t i = 0; i < from.size(); ++i) {
    const Point d = {from[i].x - anchor.x, from[i].y - anchor.y};
    const Point t = {to[i].x - position.x, to[i].y - position.y};
    sums.xx += d.x * d.x;
    sums.yy += d.y * d.y;
    sums.x = {sums.x.x + t.x * d.x, sums.x.y + t.y * d.x};
    sums.y = {sums.y.x + t.x * d.y, sums.y.y + t.y * d.y};
  }
  return sums;
}

double ratio(double value, double over) { return over > 0.0 ? value / over : 0.0; }

// The angle t that makes (u.(cos t, sin t))^2 / xx + (w.(cos t, sin t))^2 / yy largest.
double bestAngle(const Sums& sums) {
  const Point u = sums.x;
  const Point w = {sums.y.y, -sums.y.x};
  const double both = ratio(u.x * u.y, sums.xx) + ratio(w.x * w.y, sums.yy);
  const double more = ratio(u.x * u.x - u.y * u.y, sums.xx) + ratio(w.x * w.x - w.y * w.y, sums.yy);
  return 0.5 * std::atan2(2.0 * both, more);
}

}  // namespace

Point Placement::apply(Point p) const {
  const Point moved = {position.x - anchor.x, position.y - anchor.y};
  if (degrees == 0.0 && scale.x == 1.0 && scale.y == 1.0) return {p.x + moved.x, p.y + moved.y};
  const double angle = degrees * (kPi / (kTurn / 2.0));
  const double c = std::cos(angle);
  const double s = std::sin(angle);
  const double x = scale.x * (p.x - anchor.x);
  const double y = scale.y * (p.y - anchor.y);
  return {position.x + (c * x - s * y), position.y + (s * x + c * y)};
}

Placement nearestPlacement(const Quad& from, const Quad& to, double near) {
  Placement placement;
  placement.anchor = middleOf(from);
  placement.position = middleOf(to);
  const Sums sums = sumsOf(from, placement.anchor, to, placement.position);
  const double angle = bestAngle(sums);
  const double c = std::cos(angle);
  const double s = std::sin(angle);
  placement.scale = {ratio(c * sums.x.x + s * sums.x.y, sums.xx),
                     ratio(c * sums.y.y - s * sums.y.x, sums.yy)};
  placement.degrees = angle * (kTurn / 2.0 / kPi);
  if (placement.scale.x < 0.0) {
    placement.scale = {-placement.scale.x, -placement.scale.y};
    placement.degrees += kTurn / 2.0;
  }
  placement.degrees += kTurn * std::round((near - placement.degrees) / kTurn);
  return placement;
}

}  // namespace cornerpin
