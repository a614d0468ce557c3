// SPDX-License-Identifier: BSD-3-Clause
#include "shot/trust/lasting_errors.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace cornerpin;

namespace {

constexpr int kStretch = LastingErrors::kStretch;

// Tracks of n frames; each error holds on to `kept` of the one before. Residuals are distances from
// their mean.
double ratioOf(int tracks, int n, double kept) {
  std::mt19937_64 random(9);
  std::normal_distribution<double> normal;
  LastingErrors errors(static_cast<std::size_t>(tracks));
  for (int t = 0; t < tracks; ++t) {
    std::vector<Point> all;
    Point mean;
    for (int i = 0; i < n; ++i) {
      const Point before = i > 0 ? all.back() : Point{};
      const double nx = normal(random), ny = normal(random);
      const double fresh = i > 0 ? std::sqrt(1.0 - kept * kept) : 1.0;
      all.push_back({kept * before.x + fresh * nx, kept * before.y + fresh * ny});
      mean = {mean.x + all.back().x / n, mean.y + all.back().y / n};
    }
    for (int i = 0; i < n; ++i) {
      const Point p = all[static_cast<std::size_t>(i)];
      errors.add(t, 100 - i, {p.x - mean.x, p.y - mean.y});
    }
  }
  return errors.varianceRatio();
}

}  // namespace

// Two stretches of 12 ones: their sums have the square 288, the ones 24, and 24 numbers without
// relation, as distances from their mean, would have 24 * 12 / 23.
TEST(LastingErrors, CompareTheSquaresOfSumsAndTheSumsOfSquares) {
  LastingErrors errors(2);
  for (int f = 0; f < 24; ++f) errors.add(1, f, {0.6, -0.8});
  EXPECT_NEAR(errors.varianceRatio(), 288.0 / (24.0 * 12 / 23), 1e-12);
}

TEST(LastingErrors, AreNoneWithoutAFullStretch) {
  LastingErrors errors(1);
  EXPECT_EQ(errors.varianceRatio(), 1.0);
  for (int f = 0; f < 2 * kStretch; ++f) {
    if (f != kStretch - 1) errors.add(0, f, {1, 0});
  }
  EXPECT_GT(errors.varianceRatio(), 1.0);  // the stretch behind the gap
  LastingErrors gaps(1);
  for (int f = 0; f < 10 * kStretch; ++f) {
    if (f % kStretch != 0) gaps.add(0, f, {1, 0});
  }
  EXPECT_EQ(gaps.varianceRatio(), 1.0);
}

TEST(LastingErrors, DoNotMakeAVarianceSmaller) {
  LastingErrors errors(1);
  for (int f = 0; f < 10 * kStretch; ++f) errors.add(0, f, {f % 2 ? 1.0 : -1.0, 0});
  EXPECT_EQ(errors.varianceRatio(), 1.0);
}

// 1,500 stretches: known to 3 %. Short tracks lose a good part of the sums to their mean.
TEST(LastingErrors, AreNoneWhereErrorsHaveNothingToDoWithEachOther) {
  EXPECT_NEAR(ratioOf(500, 3 * kStretch, 0.0), 1.0, 0.1);
  EXPECT_NEAR(ratioOf(750, 2 * kStretch, 0.0), 1.0, 0.1);
}

// The sum of 12 numbers of which each holds on to a half has, over 12 variances, 1 and twice the
// sum of (1 - k / 12) / 2^k.
TEST(LastingErrors, AreFoundWhereTheyHoldOn) {
  double expected = 1.0;
  for (int k = 1; k < kStretch; ++k) expected += 2.0 * (1.0 - k / 12.0) * std::pow(0.5, k);
  EXPECT_NEAR(ratioOf(40, 100 * kStretch, 0.5) / expected, 1.0, 0.1);
}
