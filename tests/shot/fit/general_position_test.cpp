// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/general_position.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using cornerpin::inGeneralPosition;
using cornerpin::Point;
using cornerpin::Points;
using cornerpin::positionRatio;

namespace {

const Points kSquare = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};

Points moved(const Points& points, double scale, Point shift) {
  Points result;
  for (Point p : points) result.add({scale * p.x + shift.x, scale * p.y + shift.y});
  return result;
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
  Points points;
  for (int i = 0; i < 20; ++i) points.add({100.0 + 37.0 * i, 900.0 - 11.0 * i});
  EXPECT_FALSE(inGeneralPosition(points));
}

TEST(GeneralPosition, FailsOnALineWrittenWithThreeDecimals) {
  Points points;
  for (int i = 0; i < 20; ++i) {
    points.add({std::round(1e3 * i * 37.1234567) / 1e3, std::round(1e3 * i * 11.7654321) / 1e3});
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
