// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/general_position.h"

#include <algorithm>
#include <cmath>

#include "shot/fit/lapack.h"

namespace cornerpin {

namespace {

// The points centred on their mean and scaled to an RMS distance of sqrt(2); none when they
// coincide.
Points normalised(const Points& points) {
  const double count = static_cast<double>(points.size());
  Point mean;
  for (Point p : points) {
    mean.x += p.x / count;
    mean.y += p.y / count;
  }
  double reach = 0.0;  // taken out before squaring, which could overflow
  for (Point p : points) {
    reach = std::max({reach, std::fabs(p.x - mean.x), std::fabs(p.y - mean.y)});
  }
  if (!(reach > 0.0) || !std::isfinite(reach)) return {};
  double squares = 0.0;
  for (Point p : points) {
    const Point q = {(p.x - mean.x) / reach, (p.y - mean.y) / reach};
    squares += q.x * q.x + q.y * q.y;
  }
  const double scale = std::sqrt(2.0 * count / squares);
  if (!std::isfinite(scale)) return {};
  Points result;
  for (Point p : points) {
    result.add({(p.x - mean.x) / reach * scale, (p.y - mean.y) / reach * scale});
  }
  return result;
}

}  // namespace

// A homography's eight parameters are fixed when the linear system of the identity, u s = U and
// v s = V, has full rank. On a line, and with one point beside it, a whole family of transforms
// carries each point onto itself, and the smallest singular value is 0.
double positionRatio(const Points& points) {
  const Points centred = points.size() < 4 ? Points() : normalised(points);
  if (centred.empty()) return 0.0;
  NormalMatrix<8> normal;
  for (Point p : centred) {
    normal.add({p.x, p.y, 1.0, 0.0, 0.0, 0.0, -p.x * p.x, -p.x * p.y});
    normal.add({0.0, 0.0, 0.0, p.x, p.y, 1.0, -p.y * p.x, -p.y * p.y});
  }
  if (!normal.decompose()) return 0.0;
  const auto& squares = normal.eigenvalues;
  return std::sqrt(std::max(squares.front(), 0.0) / squares.back());
}

bool inGeneralPosition(const Points& points) { return positionRatio(points) > kGeneralPosition; }

}  // namespace cornerpin
