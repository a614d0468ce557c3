// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/general_position.h"

#include <algorithm>
#include <cmath>

#include "shot/plane/symmetric_eigen.h"

namespace cornerpin {

namespace {

// Centres the points and scales them to an RMS distance of sqrt(2); false when they coincide.
bool normalise(std::vector<Point>& points) {
  const double count = static_cast<double>(points.size());
  Point mean;
  for (const Point& p : points) {
    mean.x += p.x / count;
    mean.y += p.y / count;
  }
  double reach = 0.0;  // taken out before squaring, which could overflow
  for (const Point& p : points) {
    reach = std::max({reach, std::fabs(p.x - mean.x), std::fabs(p.y - mean.y)});
  }
  if (!(reach > 0.0) || !std::isfinite(reach)) return false;
  double squares = 0.0;
  for (Point& p : points) {
    p = {(p.x - mean.x) / reach, (p.y - mean.y) / reach};
    squares += p.x * p.x + p.y * p.y;
  }
  const double scale = std::sqrt(2.0 * count / squares);
  for (Point& p : points) p = {p.x * scale, p.y * scale};
  return std::isfinite(scale);
}

}  // namespace

double positionRatio(const std::vector<Point>& points) {
  std::vector<Point> normalised = points;
  if (points.size() < 4 || !normalise(normalised)) return 0.0;
  NormalMatrix<8> normal;
  for (const Point& p : normalised) {
    normal.add({p.x, p.y, 1.0, 0.0, 0.0, 0.0, -p.x * p.x, -p.x * p.y});
    normal.add({0.0, 0.0, 0.0, p.x, p.y, 1.0, -p.y * p.x, -p.y * p.y});
  }
  if (!normal.decompose()) return 0.0;
  const auto& squares = normal.eigenvalues;
  return std::sqrt(std::max(squares.front(), 0.0) / squares.back());
}

bool inGeneralPosition(const std::vector<Point>& points) {
  return positionRatio(points) > kGeneralPosition;
}

}  // namespace cornerpin
