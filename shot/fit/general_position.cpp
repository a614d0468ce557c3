// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/general_position.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "shot/fit/lapack.h"
#include "shot/fit/place_matrix.h"

namespace cornerpin {

namespace {

constexpr double kClear = 10.0 * kGeneralPosition;  // of the ratio

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

// By the pivots of an elimination.
bool isPositiveDefinite(SquareMatrix<8>& a) {
  for (std::size_t k = 0; k < 8; ++k) {
    const double pivot = a[k * 8 + k];
    if (!(pivot > 0.0)) return false;
    for (std::size_t j = k + 1; j < 8; ++j) {
      const double factor = a[k * 8 + j] / pivot;
      for (std::size_t i = k + 1; i < 8; ++i) a[j * 8 + i] -= factor * a[k * 8 + i];
    }
  }
  return true;
}

// Whether the ratio is far above its limit, without eigenvalues: the largest is no more than their
// sum, the trace, and all are above a number by which the diagonal can be lowered.
bool isClear(const Points& points) {
  const double count = static_cast<double>(points.size());
  Point sum;
  double squares = 0.0;
  for (Point p : points) sum = {sum.x + p.x, sum.y + p.y};
  const Point mean = {sum.x / count, sum.y / count};
  for (Point p : points) squares += squaredDistance(p, mean);
  const Similarity unit = {mean, std::sqrt(2.0 * count / squares)};
  if (!std::isnormal(unit.scale)) return false;
  SquareMatrix<8> normal = placeMatrix(points, unit);
  double trace = 0.0;
  for (std::size_t i = 0; i < 8; ++i) trace += normal[i * 8 + i];
  for (std::size_t i = 0; i < 8; ++i) normal[i * 8 + i] -= kClear * kClear * trace;
  return isPositiveDefinite(normal);
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

bool inGeneralPosition(const Points& points) {
  return isClear(points) || positionRatio(points) > kGeneralPosition;
}

}  // namespace cornerpin
