// SPDX-License-Identifier: BSD-3-Clause
#include "shot/plane/points.h"

#include <gtest/gtest.h>

#include <vector>

using namespace cornerpin;

namespace {

Points counted(std::size_t count) {
  Points points;
  for (std::size_t i = 1; i <= count; ++i) {
    points.add({static_cast<double>(i), -static_cast<double>(i)});
  }
  return points;
}

}  // namespace

TEST(SquaredDistance, IsThatOfPythagoras) {
  EXPECT_EQ(squaredDistance({1, 2}, {4, -2}), 25.0);
  EXPECT_EQ(squaredDistance({4, -2}, {1, 2}), 25.0);
}

TEST(Points, KeepTheOrderInWhichTheyWereAdded) {
  for (std::size_t count : {1u, 3u, 4u, 5u, 8u, 9u}) {
    const Points points = counted(count);
    ASSERT_EQ(points.size(), count);
    double expected = 0.0;
    for (Point p : points) {
      expected += 1.0;
      EXPECT_EQ(p.x, expected);
      EXPECT_EQ(p.y, -expected);
    }
    EXPECT_EQ(expected, static_cast<double>(count));
    EXPECT_EQ(points[count - 1].x, expected);
    EXPECT_EQ(points[count - 1].y, -expected);
  }
}

TEST(Points, AreFilledUpWithZerosToAWholeNumberOfFours) {
  const std::size_t padded[] = {0, 4, 4, 4, 4, 8, 8, 8, 8, 12};
  for (std::size_t count = 0; count < 10; ++count) {
    const Points points = counted(count);
    ASSERT_EQ(points.paddedSize(), padded[count]) << count;
    for (std::size_t i = 0; i < padded[count]; ++i) {
      const double expected = i < count ? static_cast<double>(i + 1) : 0.0;
      EXPECT_EQ(points.x()[i], expected) << count;
      EXPECT_EQ(points.y()[i], -expected) << count;
    }
  }
}

TEST(Points, OfANumberLieAtTheOriginUntilTheyAreSet) {
  for (std::size_t count : {0u, 1u, 4u, 6u}) {
    Points points(count);
    ASSERT_EQ(points.size(), count);
    ASSERT_EQ(points.paddedSize(), (count + 3) / 4 * 4);
    for (std::size_t i = 0; i < count; ++i) {
      EXPECT_EQ(points[i].x, 0.0);
      points.set(i, {static_cast<double>(i + 1), -2.0});
    }
    for (std::size_t i = 0; i < points.paddedSize(); ++i) {
      EXPECT_EQ(points.x()[i], i < count ? static_cast<double>(i + 1) : 0.0);
      EXPECT_EQ(points.y()[i], i < count ? -2.0 : 0.0);
    }
  }
}

TEST(Points, AreEmptyUntilOneIsAdded) {
  Points points;
  EXPECT_TRUE(points.empty());
  EXPECT_FALSE(points.begin() != points.end());
  points.add({0, 0});
  EXPECT_FALSE(points.empty());
}

TEST(Points, ComeFromAList) {
  const Points points = {{1, 2}, {3, 4}};
  ASSERT_EQ(points.size(), 2u);
  EXPECT_EQ(points[1].x, 3.0);
  EXPECT_EQ(points[1].y, 4.0);
}
