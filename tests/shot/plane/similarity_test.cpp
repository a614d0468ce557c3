// SPDX-License-Identifier: BSD-3-Clause
#include "shot/plane/similarity.h"

#include <gtest/gtest.h>

#include <limits>

using cornerpin::Conditioning;
using cornerpin::Homography;
using cornerpin::Point;
using cornerpin::unconditioned;

TEST(Conditioning, CarriesTheBoxOntoMinusOneToOneWithOneScale) {
  const Conditioning c = Conditioning::fitting({{100, 50}, {300, 100}, {200, 80}});
  EXPECT_EQ(c.scale, 0.01);
  EXPECT_EQ(c.apply({100, 50}).x, -1.0);
  EXPECT_EQ(c.apply({300, 100}).x, 1.0);
  EXPECT_EQ(c.apply({300, 100}).y, 0.25);
}

TEST(Conditioning, KeepsTheScaleOfPointsThatCoincide) {
  const Conditioning c = Conditioning::fitting({{5, 7}, {5, 7}});
  EXPECT_EQ(c.scale, 1.0);
  EXPECT_EQ(c.apply({6, 7}).x, 1.0);
}

TEST(Conditioning, HoldsAtTheEdgeOfDoublePrecision) {
  const double most = std::numeric_limits<double>::max();
  const Conditioning c = Conditioning::fitting({{-most, -most}, {most, most}});
  EXPECT_EQ(c.centre.x, 0.0);
  EXPECT_NEAR(c.apply({most, 0}).x, 1.0, 1e-15);
}

TEST(WithoutFarOff, LeavesOutWhatIsMoreThanFourMedianDistancesAway) {
  // Around the origin, at distances 0 1 1 1 1 2 2 2 and another.
  std::vector<Point> points = {{1, 0}, {-1, 0}, {0, 1}, {0, -1}, {2, 0}, {-2, 0}, {0, 2}};
  points.push_back({0, 0});
  points.push_back({0, -8});
  ASSERT_EQ(cornerpin::withoutFarOff(points).size(), 8u);
  points.back() = {0, -4};
  ASSERT_EQ(cornerpin::withoutFarOff(points).size(), 9u);
}

TEST(WithoutFarOff, KeepsADenseGroupAndASparseOneTogether) {
  std::vector<Point> points(6, {10, 10});
  for (int i = 0; i < 2; ++i) points.push_back({1000.0 * i, 500});
  EXPECT_EQ(cornerpin::withoutFarOff(points).size(), 6u);
  points.push_back({700, 20});
  EXPECT_EQ(cornerpin::withoutFarOff(points).size(), 9u) << "three of nine are not few";
}

TEST(WithoutFarOff, TakesNoPoints) { EXPECT_TRUE(cornerpin::withoutFarOff({}).empty()); }

TEST(Unconditioned, ActsOnTheCallersPointsAsTheTransformDoesOnConditionedOnes) {
  const Conditioning from{{30, 40}, 0.5};
  const Conditioning to{{-7, 9}, 2.0};
  const Homography h = {{{1.1, 0.2, 0.3}, {-0.1, 0.9, 0.4}, {0.05, -0.02, 1.0}}};
  const Homography full = unconditioned(h, from, to);
  EXPECT_EQ(full[2][2], 1.0);
  for (const Point p : {Point{31, 42}, Point{28, 37}, Point{30, 40}}) {
    const Point conditioned = map(h, from.apply(p));
    const Point there = to.apply(map(full, p));
    EXPECT_NEAR(there.x, conditioned.x, 1e-13);
    EXPECT_NEAR(there.y, conditioned.y, 1e-13);
  }
}

TEST(Unconditioned, LeavesTheNumbersAloneWithoutConditioning) {
  const Homography h = {{{1.1, 0.2, 0.3}, {-0.1, 0.9, 0.4}, {0.05, -0.02, 1.0}}};
  EXPECT_EQ(unconditioned(h, {}, {}), h);
}
