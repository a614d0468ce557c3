// SPDX-License-Identifier: BSD-3-Clause
#include "shot/plane/similarity.h"

#include <algorithm>
#include <cmath>

namespace cornerpin {

namespace {

constexpr double kFarOff = 4.0;  // in median distances; the corner of a full square is two away

}  // namespace

double denominator(const Homography& h, Point p) { return h[2][0] * p.x + h[2][1] * p.y + h[2][2]; }

Point map(const Homography& h, Point p) {
  const double s = denominator(h, p);
  return {(h[0][0] * p.x + h[0][1] * p.y + h[0][2]) / s,
          (h[1][0] * p.x + h[1][1] * p.y + h[1][2]) / s};
}

double squaredDistance(Point a, Point b) {
  const double x = a.x - b.x;
  const double y = a.y - b.y;
  return x * x + y * y;
}

bool isFinite(const Homography& h) {
  for (const auto& row : h) {
    for (double element : row) {
      if (!std::isfinite(element)) return false;
    }
  }
  return true;
}

bool onOneSide(const Homography& h, const std::vector<Point>& points) {
  const bool front = denominator(h, points.front()) > 0.0;
  return std::all_of(points.begin(), points.end(), [&](Point p) {
    const double s = denominator(h, p);
    return front ? s > 0.0 : s < 0.0;
  });
}

Homography product(const Homography& a, const Homography& b) {
  Homography c{};
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) {
      c[i][j] = a[i][0] * b[0][j] + a[i][1] * b[1][j] + a[i][2] * b[2][j];
    }
  }
  return c;
}

std::vector<Point> withoutFarOff(const std::vector<Point>& points) {
  if (points.empty()) return points;
  const auto median = [](std::vector<double> numbers) {
    const auto middle = numbers.begin() + static_cast<std::ptrdiff_t>(numbers.size() / 2);
    std::nth_element(numbers.begin(), middle, numbers.end());
    return *middle;
  };
  std::vector<double> x, y, distances;
  for (const Point& p : points) {
    x.push_back(p.x);
    y.push_back(p.y);
  }
  const Point centre = {median(x), median(y)};
  for (const Point& p : points) distances.push_back(std::hypot(p.x - centre.x, p.y - centre.y));
  const double farthest = kFarOff * median(distances);
  std::vector<Point> near;
  for (std::size_t i = 0; i < points.size(); ++i) {
    if (distances[i] <= farthest) near.push_back(points[i]);
  }
  return 4 * near.size() < 3 * points.size() ? points : near;
}

Conditioning Conditioning::fitting(const std::vector<Point>& points) {
  Point smallest = points.front();
  Point largest = smallest;
  for (const Point& p : points) {
    smallest = {std::min(smallest.x, p.x), std::min(smallest.y, p.y)};
    largest = {std::max(largest.x, p.x), std::max(largest.y, p.y)};
  }
  // Halves first: the box may be as wide as numbers go.
  const double half = std::max(largest.x / 2 - smallest.x / 2, largest.y / 2 - smallest.y / 2);
  const double scale = 1.0 / half;
  return {{smallest.x / 2 + largest.x / 2, smallest.y / 2 + largest.y / 2},
          std::isfinite(scale) ? scale : 1.0};
}

Homography unconditioned(const Homography& h, const Conditioning& from, const Conditioning& to) {
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
  const double last = result[2][2];
  for (auto& row : result) {
    for (double& element : row) element /= last;
  }
  return result;
}

}  // namespace cornerpin
