// SPDX-License-Identifier: BSD-3-Clause
#include "shot/plane/extent.h"

#include <algorithm>
#include <cmath>

#include "shot/plane/median.h"

namespace cornerpin {

namespace {

constexpr double kFarOff = 4.0;  // in median distances; the corner of a full square is two away

}  // namespace

Box boxAround(const Points& points) {
  Box box = {points[0], points[0]};
  for (Point p : points) {
    box.low = {std::min(box.low.x, p.x), std::min(box.low.y, p.y)};
    box.high = {std::max(box.high.x, p.x), std::max(box.high.y, p.y)};
  }
  return box;
}

Quad cornersOf(const Box& box) {
  return {box.low, {box.high.x, box.low.y}, box.high, {box.low.x, box.high.y}};
}

Points withoutFarOff(const Points& points) {
  std::vector<double> x, y, distances;
  for (Point p : points) {
    x.push_back(p.x);
    y.push_back(p.y);
  }
  const Point centre = {upperMedian(x), upperMedian(y)};
  for (Point p : points) distances.push_back(std::hypot(p.x - centre.x, p.y - centre.y));
  const double farthest = kFarOff * upperMedian(distances);
  Points near;
  for (std::size_t i = 0; i < points.size(); ++i) {
    if (distances[i] <= farthest) near.add(points[i]);
  }
  return 4 * near.size() < 3 * points.size() ? points : near;
}

}  // namespace cornerpin
