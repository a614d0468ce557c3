// SPDX-License-Identifier: BSD-3-Clause
#include "shot/plane/extent.h"

#include <algorithm>
#include <cmath>

#include "shot/plane/median.h"

namespace cornerpin {

namespace {

constexpr double kFarOff = 4.0;  // in median distances; the corner of a full square is two away

void extend(Box& box, Point p) {
  box.low = {std::min(box.low.x, p.x), std::min(box.low.y, p.y)};
  box.high = {std::max(box.high.x, p.x), std::max(box.high.y, p.y)};
}

}  // namespace

Box boxAround(const Points& points) {
  Box box = {points[0], points[0]};
  for (std::size_t i = 1; i < points.size(); ++i) extend(box, points[i]);
  return box;
}

Box boxAround(const Points& points, const std::vector<double>& weights) {
  std::size_t i = 0;
  while (!(weights[i] > 0.0)) ++i;
  Box box = {points[i], points[i]};
  for (++i; i < points.size(); ++i) {
    if (weights[i] > 0.0) extend(box, points[i]);
  }
  return box;
}

Quad cornersOf(const Box& box) {
  return {box.low, {box.high.x, box.low.y}, box.high, {box.low.x, box.high.y}};
}

Points withoutFarOff(const Points& points) {
  const std::size_t count = points.size();
  const Point centre = {upperMedian({points.x(), points.x() + count}),
                        upperMedian({points.y(), points.y() + count})};
  std::vector<double> squares(count);
  double largest = 0.0;
  for (std::size_t i = 0; i < count; ++i) {
    squares[i] = squaredDistance(points[i], centre);
    largest = std::max(largest, squares[i]);
  }
  // Where one is, more than half of all distances are below a quarter of the largest.
  const auto low = std::count_if(squares.begin(), squares.end(), [&](double square) {
    return kFarOff * kFarOff * square < largest;
  });
  if (static_cast<std::size_t>(low) <= count / 2) return points;
  const double farthest = kFarOff * kFarOff * upperMedian(squares);
  Points near;
  for (std::size_t i = 0; i < count; ++i) {
    if (squares[i] <= farthest) near.add(points[i]);
  }
  return 4 * near.size() < 3 * count ? points : near;
}

}  // namespace cornerpin
