// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/general_position.h"

#include <gtest/gtest.h>

#include <Eigen/Dense>
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

// The ratio as it is defined, by a singular value decomposition.
double definedRatio(const Points& points) {
  const auto n = static_cast<Eigen::Index>(points.size());
  Eigen::MatrixXd places(n, 2);
  for (Eigen::Index i = 0; i < n; ++i) {
    places.row(i) << points[static_cast<std::size_t>(i)].x, points[static_cast<std::size_t>(i)].y;
  }
  places.rowwise() -= places.colwise().mean().eval();
  places *= std::sqrt(2.0 / (places.squaredNorm() / static_cast<double>(n)));
  Eigen::MatrixXd system(2 * n, 8);
  for (Eigen::Index i = 0; i < n; ++i) {
    const double x = places(i, 0), y = places(i, 1);
    system.row(2 * i) << x, y, 1, 0, 0, 0, -x * x, -x * y;
    system.row(2 * i + 1) << 0, 0, 0, x, y, 1, -y * x, -y * y;
  }
  const Eigen::VectorXd values = system.jacobiSvd().singularValues();
  return values[7] / values[0];
}

Points strip(double thickness) {
  return {{-1, 0}, {1, 0}, {0.9, thickness}, {-0.8, thickness}, {0.1, 0.5 * thickness}};
}

// How thick a strip is that has this ratio, which grows with the thickness.
double thicknessOf(double ratio) {
  double low = 0.0, high = 1.0;
  for (int i = 0; i < 60; ++i) {
    const double middle = (low + high) / 2;
    (definedRatio(strip(middle)) < ratio ? low : high) = middle;
  }
  return high;
}

}  // namespace

TEST(PositionRatio, IsThatOfTheSingularValues) {
  EXPECT_NEAR(positionRatio(kSquare), definedRatio(kSquare), 1e-12);
  for (double thickness : {1.0, 0.1, 1e-2, 1e-3}) {
    const double expected = definedRatio(strip(thickness));
    EXPECT_NEAR(positionRatio(strip(thickness)), expected, 1e-6 * expected) << thickness;
  }
}

TEST(GeneralPosition, EndsAtOnePartInAHundredThousand) {
  EXPECT_TRUE(inGeneralPosition(strip(thicknessOf(1.02e-5))));
  EXPECT_FALSE(inGeneralPosition(strip(thicknessOf(0.98e-5))));
}

// Whatever is decided without the ratio.
TEST(GeneralPosition, IsWhatTheRatioSays) {
  for (double thickness = 1.0; thickness > 1e-7; thickness *= 0.9) {
    const Points points = moved(strip(thickness), 700.0, {900, -400});
    EXPECT_EQ(inGeneralPosition(points), positionRatio(points) > cornerpin::kGeneralPosition)
        << thickness;
  }
}

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
