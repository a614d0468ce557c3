// SPDX-License-Identifier: BSD-3-Clause
#include "shot/plane/similarity.h"

#include <algorithm>
#include <cmath>

namespace cornerpin {

Similarity Similarity::ofBox(const Box& box) {
  const auto [low, high] = box;
  // Halves first: the box may be as wide as numbers go.
  const double half = std::max(high.x / 2 - low.x / 2, high.y / 2 - low.y / 2);
  const double scale = 1.0 / half;
  return {{low.x / 2 + high.x / 2, low.y / 2 + high.y / 2}, std::isfinite(scale) ? scale : 1.0};
}

Quad squareAround(const Points& points) {
  const Similarity box = Similarity::fitting(points);
  const double half = 1.0 / box.scale;
  const auto corner = [&](double x, double y) {
    return Point{box.centre.x + x * half, box.centre.y + y * half};
  };
  return {corner(-1, -1), corner(1, -1), corner(1, 1), corner(-1, 1)};
}

Homography denormalised(const Homography& h, const Similarity& from, const Similarity& to) {
  Homography right = h;  // h * from
  for (auto& row : right) {
    row[2] -= from.scale * (row[0] * from.centre.x + row[1] * from.centre.y);
    row[0] *= from.scale;
    row[1] *= from.scale;
  }
  Homography result = right;  // inv(to) * h * from
  for (std::size_t j = 0; j < 3; ++j) {
    result[0][j] = right[0][j] / to.scale + to.centre.x * right[2][j];
    result[1][j] = right[1][j] / to.scale + to.centre.y * right[2][j];
  }
  return withLastOne(result);
}

Homography normalised(const Homography& h, const Similarity& from, const Similarity& to) {
  return denormalised(h, from.inverse(), to.inverse());
}

}  // namespace cornerpin
