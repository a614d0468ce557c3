// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/general_position.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using cornerpin::inGeneralPosition;
using cornerpin::Point;
using cornerpin::positionRatio;

namespace {

const std::vector<Point> kSquare = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};

std::vector<Point> moved(std::vector<Point> points, double scale, Point shift) {
  for (Point& p : points) p = {scale * p.x + shift.x, scale * p.y + shift.y};
  return points;
}

}  // namespace

TEST(GeneralPosition, HoldsForASquare) {
  EXPECT_TRUE(inGeneralPosition(kSquare));
  EXPECT_GT(positionRatio(kSquare), 0.1);
}

TEST(GeneralPosition, DoesNotDependOnUnits) {
  const double ratio = positionRatio(kSquare);
  EXPECT_NEAR(positionRatio(moved(kSquare, 4096.0, {1e4, -2e4})), ratio, 1e-9 * ratio);
  EXPECT_NEAR(positionRatio(moved(kSquare, 1e-200, {})), ratio, 1e-9 * ratio);
  EXPECT_NEAR(positionRatio(moved(kSquare, 1e200, {})), ratio, 1e-9 * ratio);
}

TEST(GeneralPosition, NeedsFourPoints) {
  EXPECT_FALSE(inGeneralPosition({}));
  EXPECT_FALSE(inGeneralPosition({{0, 0}, {1, 0}, {0, 1}}));
}

TEST(GeneralPosition, FailsOnOnePlace) {
  EXPECT_FALSE(inGeneralPosition({{3, 4}, {3, 4}, {3, 4}, {3, 4}}));
}

TEST(GeneralPosition, FailsOnALine) {
  std::vector<Point> points;
  for (int i = 0; i < 20; ++i) points.push_back({100.0 + 37.0 * i, 900.0 - 11.0 * i});
  EXPECT_FALSE(inGeneralPosition(points));
}

TEST(GeneralPosition, FailsOnALineWrittenWithThreeDecimals) {
  std::vector<Point> points;
  for (int i = 0; i < 20; ++i) {
    points.push_back(
        {std::round(1e3 * i * 37.1234567) / 1e3, std::round(1e3 * i * 11.7654321) / 1e3});
  }
  EXPECT_FALSE(inGeneralPosition(points));
}

TEST(GeneralPosition, FailsOnALineAndOnePointBesideIt) {
  EXPECT_FALSE(inGeneralPosition({{0, 0}, {1, 1}, {5, 5}, {9, 9}, {3, 7}}));
  EXPECT_FALSE(inGeneralPosition({{0, 0}, {1, 1}, {2, 2}, {0, 5}}));
}

TEST(GeneralPosition, FailsWhenTwoOfFourCoincide) {
  EXPECT_FALSE(inGeneralPosition({{0, 0}, {0, 0}, {2, 1}, {0, 5}}));
}

TEST(GeneralPosition, HoldsForALineAndTwoPointsBesideIt) {
  EXPECT_TRUE(inGeneralPosition({{0, 0}, {1, 1}, {5, 5}, {9, 9}, {3, 7}, {8, 2}}));
}

TEST(GeneralPosition, HoldsForAThinStrip) {
  EXPECT_TRUE(inGeneralPosition({{0, 0}, {1000, 0}, {1000, 1}, {0, 1}}));
}

TEST(GeneralPosition, FailsOnPointsThatAreNotFinite) {
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_FALSE(inGeneralPosition({{0, 0}, {1, 0}, {1, infinity}, {0, 1}}));
}
