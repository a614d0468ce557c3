// SPDX-License-Identifier: BSD-3-Clause
#include "shot/plane/points.h"

namespace cornerpin {

double squaredDistance(Point a, Point b) {
  const double x = a.x - b.x;
  const double y = a.y - b.y;
  return x * x + y * y;
}

Points::Points(std::initializer_list<Point> points) {
  for (Point p : points) add(p);
}

void Points::add(Point p) {
  if (size_ == x_.size()) {
    x_.resize(size_ + 4);
    y_.resize(size_ + 4);
  }
  x_[size_] = p.x;
  y_[size_] = p.y;
  ++size_;
}

}  // namespace cornerpin
