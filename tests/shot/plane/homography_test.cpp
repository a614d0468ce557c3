// SPDX-License-Identifier: BSD-3-Clause
#include "shot/plane/homography.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace cornerpin;

namespace {

const Homography kView = {{{1.1, 0.2, 0.3}, {-0.1, 0.9, 0.4}, {0.25, -0.5, 2.0}}};
const Homography kOther = {{{0.7, -0.3, 5.0}, {0.4, 1.2, -6.0}, {0.01, 0.02, 0.5}}};

// The points with x = 2 are its horizon.
const Homography kHorizonAtTwo = {{{1, 0, 0}, {0, 1, 0}, {-0.5, 0, 1}}};

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

}  // namespace

TEST(Map, DividesByTheThirdCoordinate) {
  const Homography h = {{{1, 2, 3}, {4, 5, 6}, {0.5, -1, 4}}};
  EXPECT_EQ(denominator(h, {2, 3}), 2.0);
  EXPECT_EQ(map(h, {2, 3}).x, 5.5);
  EXPECT_EQ(map(h, {2, 3}).y, 14.5);
}

TEST(Map, ByTheIdentityLeavesAPointAlone) {
  EXPECT_EQ(map(kIdentity, {-3.5, 7.25}).x, -3.5);
  EXPECT_EQ(map(kIdentity, {-3.5, 7.25}).y, 7.25);
}

TEST(Derivative, OfAnAffineTransformIsItsLinearPart) {
  const Derivative d = derivative({{{2, 3, 100}, {5, 7, 200}, {0, 0, 1}}}, {11, 13});
  EXPECT_EQ(d.Xx, 2.0);
  EXPECT_EQ(d.Xy, 3.0);
  EXPECT_EQ(d.Yx, 5.0);
  EXPECT_EQ(d.Yy, 7.0);
}

// The error of a central difference is of the order of the square of its step.
TEST(Derivative, IsTheLimitOfDifferences) {
  constexpr double kStep = 1e-5;
  for (Point p : {Point{0.3, -0.7}, Point{-2.0, 0.5}, Point{4.0, 1.0}}) {
    const Derivative d = derivative(kView, p);
    const Point right = map(kView, {p.x + kStep, p.y}), left = map(kView, {p.x - kStep, p.y});
    const Point up = map(kView, {p.x, p.y + kStep}), down = map(kView, {p.x, p.y - kStep});
    EXPECT_NEAR(d.Xx, (right.x - left.x) / (2 * kStep), 1e-9);
    EXPECT_NEAR(d.Yx, (right.y - left.y) / (2 * kStep), 1e-9);
    EXPECT_NEAR(d.Xy, (up.x - down.x) / (2 * kStep), 1e-9);
    EXPECT_NEAR(d.Yy, (up.y - down.y) / (2 * kStep), 1e-9);
  }
}

TEST(Inverse, UndoesTheTransformOnBothSides) {
  for (const Homography& h : {kView, kOther, kHorizonAtTwo}) {
    for (const Homography& both : {product(h, inverse(h)), product(inverse(h), h)}) {
      for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) EXPECT_NEAR(both[i][j], i == j ? 1.0 : 0.0, 1e-13);
      }
    }
  }
}

TEST(Inverse, OfASingularTransformIsNotFinite) {
  EXPECT_FALSE(isFinite(inverse({{{1, 2, 3}, {2, 4, 6}, {0, 0, 1}}})));
  EXPECT_FALSE(isFinite(inverse({})));
}

TEST(OnSameSide, HoldsOnEitherSideOfTheHorizon) {
  EXPECT_TRUE(onSameSide(kHorizonAtTwo, {1.9, 5}, {-9, 0}));
  EXPECT_TRUE(onSameSide(kHorizonAtTwo, {2.1, 5}, {9, 0}));
  EXPECT_FALSE(onSameSide(kHorizonAtTwo, {1.9, 5}, {2.1, 5}));
}

TEST(OnSameSide, FailsOnTheHorizon) {
  EXPECT_FALSE(onSameSide(kHorizonAtTwo, {2, 5}, {2, 5}));
  EXPECT_FALSE(onSameSide(kHorizonAtTwo, {2, 5}, {1, 5}));
}

TEST(OnOneSide, HoldsForPointsThatAreAllInFrontOrAllBehind) {
  EXPECT_TRUE(onOneSide(kHorizonAtTwo, {{0, 0}, {1.9, 7}, {-5, 2}}));
  EXPECT_TRUE(onOneSide(kHorizonAtTwo, {{3, 0}, {2.1, 7}, {8, 2}}));
}

TEST(OnOneSide, FailsForPointsOnBothSides) {
  EXPECT_FALSE(onOneSide(kHorizonAtTwo, {{0, 0}, {1.9, 7}, {2.1, 2}}));
  EXPECT_FALSE(onOneSide(kHorizonAtTwo, {{3, 0}, {1.9, 7}, {8, 2}}));
}

TEST(OnOneSide, FailsForAPointOnTheHorizon) {
  EXPECT_FALSE(onOneSide(kHorizonAtTwo, {{2, 0}, {3, 0}}));
  EXPECT_FALSE(onOneSide(kHorizonAtTwo, {{3, 0}, {2, 0}}));
  EXPECT_FALSE(onOneSide(kHorizonAtTwo, {{0, 0}, {2, 0}}));
}

TEST(OnOneSide, FailsForAPointThatIsNotANumber) {
  EXPECT_FALSE(onOneSide(kHorizonAtTwo, {{kNone, 0}}));
  EXPECT_FALSE(onOneSide(kHorizonAtTwo, {{0, 0}, {kNone, 0}}));
}

TEST(IsFinite, LooksAtEveryElement) {
  EXPECT_TRUE(isFinite(kView));
  for (double bad : {kNone, HUGE_VAL, -HUGE_VAL}) {
    for (std::size_t i = 0; i < 9; ++i) {
      Homography h = kView;
      h[i / 3][i % 3] = bad;
      EXPECT_FALSE(isFinite(h)) << i;
    }
  }
}

TEST(Product, IsTheMatrixProduct) {
  const Homography c =
      product({{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}}, {{{1, 0, 2}, {0, 3, 0}, {4, 0, 5}}});
  const Homography expected = {{{13, 6, 17}, {28, 15, 38}, {43, 24, 59}}};
  EXPECT_EQ(c, expected);
}

TEST(Product, MapsByTheSecondFactorFirst) {
  const Point p = {1.5, -0.5};
  const Point expected = map(kView, map(kOther, p));
  EXPECT_NEAR(map(product(kView, kOther), p).x, expected.x, 1e-14);
  EXPECT_NEAR(map(product(kView, kOther), p).y, expected.y, 1e-14);
}

TEST(WithLastOne, DividesEveryElementByTheLast) {
  const Homography h = withLastOne({{{2, 4, 6}, {-8, 10, 12}, {1, 3, -2}}});
  const Homography expected = {{{-1, -2, -3}, {4, -5, -6}, {-0.5, -1.5, 1}}};
  EXPECT_EQ(h, expected);
}

TEST(WithLastOne, IsNotFiniteWhereTheLastIsZero) {
  EXPECT_FALSE(isFinite(withLastOne({{{1, 0, 0}, {0, 1, 0}, {1, 0, 0}}})));
}
