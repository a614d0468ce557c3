// SPDX-License-Identifier: BSD-3-Clause
#include "shot/plane/extent.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/shot/lists.h"

using namespace cornerpin;

TEST(WithoutFarOff, LeavesOutWhatIsMoreThanFourMedianDistancesAway) {
  // Around the origin, at distances 0 1 1 1 1 2 2 2 and another.
  std::vector<Point> points = {{1, 0}, {-1, 0}, {0, 1}, {0, -1}, {2, 0}, {-2, 0}, {0, 2}};
  points.push_back({0, 0});
  points.push_back({0, -8});
  ASSERT_EQ(withoutFarOff(lists::points(points)).size(), 8u);
  points.back() = {0, -4};
  ASSERT_EQ(withoutFarOff(lists::points(points)).size(), 9u);
}

TEST(WithoutFarOff, KeepsADenseGroupAndASparseOneTogether) {
  std::vector<Point> points(6, {10, 10});
  for (int i = 0; i < 2; ++i) points.push_back({1000.0 * i, 500});
  EXPECT_EQ(withoutFarOff(lists::points(points)).size(), 6u);
  points.push_back({700, 20});
  EXPECT_EQ(withoutFarOff(lists::points(points)).size(), 9u) << "three of nine are not few";
}

TEST(WithoutFarOff, TakesNoPoints) { EXPECT_TRUE(withoutFarOff({}).empty()); }
