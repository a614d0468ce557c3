// SPDX-License-Identifier: BSD-3-Clause
#include "shot/general_position.h"

#include <algorithm>
#include <array>
#include <cmath>

extern "C" void dsyev_(const char* job, const char* triangle, const int* n, double* a,
                       const int* lda, double* eigenvalues, double* work, const int* lwork,
                       int* info, std::size_t jobLength, std::size_t triangleLength);

namespace cornerpin {

namespace {

constexpr int kSize = 8;
using Row = std::array<double, kSize>;
using Gram = std::array<double, kSize * kSize>;

void addRow(Gram& gram, const Row& row) {
  for (std::size_t j = 0; j < kSize; ++j) {
    for (std::size_t i = 0; i < kSize; ++i) gram[j * kSize + i] += row[i] * row[j];
  }
}

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
  Gram gram{};
  for (const Point& p : normalised) {
    addRow(gram, {p.x, p.y, 1.0, 0.0, 0.0, 0.0, -p.x * p.x, -p.x * p.y});
    addRow(gram, {0.0, 0.0, 0.0, p.x, p.y, 1.0, -p.y * p.x, -p.y * p.y});
  }
  Row eigenvalues{};
  std::array<double, 34 * kSize> work{};
  const int workSize = static_cast<int>(work.size());
  int info = 0;
  dsyev_("N", "U", &kSize, gram.data(), &kSize, eigenvalues.data(), work.data(), &workSize, &info,
         1, 1);
  if (info != 0) return 0.0;
  return std::sqrt(std::max(eigenvalues.front(), 0.0) / eigenvalues.back());
}

bool inGeneralPosition(const std::vector<Point>& points) {
  return positionRatio(points) > kGeneralPosition;
}

}  // namespace cornerpin
