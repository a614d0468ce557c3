// SPDX-License-Identifier: BSD-3-Clause
#include "shot/plane/points.h"

namespace cornerpin {

Points::Points(std::initializer_list<Point> points) {
  reserve(points.size());
  for (Point p : points) add(p);
}

Points::Points(std::size_t size) : size_(size), x_((size + 3) / 4 * 4), y_(x_.size()) {}

void Points::reserve(std::size_t size) {
  const std::size_t padded = (size + 3) / 4 * 4;
  x_.reserve(padded);
  y_.reserve(padded);
}

void Points::makeRoom() {
  x_.resize(size_ + 4);
  y_.resize(size_ + 4);
}

}  // namespace cornerpin
