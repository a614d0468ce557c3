// SPDX-License-Identifier: BSD-3-Clause
#include "shot/plane/extent.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "tests/shot/lists.h"

using namespace cornerpin;

TEST(BoxAround, ReachesFromTheLeastToTheGreatestOfEachCoordinate) {
  const Box box = boxAround({{3, -1}, {-2, 5}, {1, 7}, {2, -4}});
  EXPECT_EQ(box.low.x, -2.0);
  EXPECT_EQ(box.low.y, -4.0);
  EXPECT_EQ(box.high.x, 3.0);
  EXPECT_EQ(box.high.y, 7.0);
}

TEST(BoxAround, OfOnePointIsThatPoint) {
  const Box box = boxAround({{-5, -6}});
  EXPECT_EQ(box.low.x, -5.0);
  EXPECT_EQ(box.high.x, -5.0);
  EXPECT_EQ(box.low.y, -6.0);
  EXPECT_EQ(box.high.y, -6.0);
}

TEST(BoxAround, LeavesOutPointsWithoutWeight) {
  const Points points = {{90, 90}, {3, -1}, {-2, 5}, {-80, 1}, {1, 7}};
  const Box box = boxAround(points, {0.0, 0.5, 2.0, 0.0, 1.0});
  EXPECT_EQ(box.low.x, -2.0);
  EXPECT_EQ(box.low.y, -1.0);
  EXPECT_EQ(box.high.x, 3.0);
  EXPECT_EQ(box.high.y, 7.0);
}

TEST(CornersOf, GoAroundFromTheLowOneAlongTheXAxisFirst) {
  const Quad corners = cornersOf({{1, 2}, {3, 4}});
  const Point expected[] = {{1, 2}, {3, 2}, {3, 4}, {1, 4}};
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(corners[i].x, expected[i].x) << i;
    EXPECT_EQ(corners[i].y, expected[i].y) << i;
  }
}

TEST(WithoutFarOff, LeavesOutWhatIsMoreThanFourMedianDistancesAway) {
  // Around the origin, at distances 0 1 1 1 1 2 2 2 and another.
  std::vector<Point> points = {{1, 0}, {-1, 0}, {0, 1}, {0, -1}, {2, 0}, {-2, 0}, {0, 2}};
  points.push_back({0, 0});
  points.push_back({0, -8});
  ASSERT_EQ(withoutFarOff(lists::points(points)).size(), 8u);
  points.back() = {0, -4};
  ASSERT_EQ(withoutFarOff(lists::points(points)).size(), 9u);
  points.back() = {0, -4.02};
  ASSERT_EQ(withoutFarOff(lists::points(points)).size(), 8u);
}

TEST(WithoutFarOff, LeavesOutAQuarterButNoMore) {
  const auto left = [](int far) {
    Points points;
    for (int i = 0; i < 100; ++i) {
      const double length = i < far ? 50.0 : 1.0;
      points.add({length * std::cos(0.1 * i), length * std::sin(0.1 * i)});
    }
    return withoutFarOff(points).size();
  };
  EXPECT_EQ(left(25), 75u);
  EXPECT_EQ(left(26), 100u);
}

TEST(WithoutFarOff, KeepsTheOrder) {
  const Points near = withoutFarOff({{1, 0}, {900, 0}, {0, 1}, {-1, 0}, {0, -1}});
  ASSERT_EQ(near.size(), 4u);
  EXPECT_EQ(near[0].x, 1.0);
  EXPECT_EQ(near[1].y, 1.0);
  EXPECT_EQ(near[2].x, -1.0);
  EXPECT_EQ(near[3].y, -1.0);
}

TEST(WithoutFarOff, KeepsADenseGroupAndASparseOneTogether) {
  std::vector<Point> points(6, {10, 10});
  for (int i = 0; i < 2; ++i) points.push_back({1000.0 * i, 500});
  EXPECT_EQ(withoutFarOff(lists::points(points)).size(), 6u);
  points.push_back({700, 20});
  EXPECT_EQ(withoutFarOff(lists::points(points)).size(), 9u) << "three of nine are not few";
}

TEST(WithoutFarOff, TakesNoPoints) { EXPECT_TRUE(withoutFarOff({}).empty()); }
