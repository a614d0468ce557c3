// SPDX-License-Identifier: BSD-3-Clause
#include "shot/plane/similarity.h"

#include <gtest/gtest.h>

#include <limits>

using cornerpin::denormalised;
using cornerpin::Homography;
using cornerpin::Point;
using cornerpin::Similarity;

TEST(Similarity, CarriesTheBoxOntoMinusOneToOneWithOneScale) {
  const Similarity c = Similarity::fitting({{100, 50}, {300, 100}, {200, 80}});
  EXPECT_EQ(c.scale, 0.01);
  EXPECT_EQ(c.apply({100, 50}).x, -1.0);
  EXPECT_EQ(c.apply({300, 100}).x, 1.0);
  EXPECT_EQ(c.apply({300, 100}).y, 0.25);
}

TEST(Similarity, FitsTheLongerDirectionWhicheverItIs) {
  const Similarity c = Similarity::fitting({{100, 50}, {110, 90}});
  EXPECT_EQ(c.scale, 0.05);
  EXPECT_EQ(c.centre.x, 105.0);
  EXPECT_EQ(c.centre.y, 70.0);
}

TEST(Similarity, KeepsTheScaleOfPointsThatCoincide) {
  const Similarity c = Similarity::fitting({{5, 7}, {5, 7}});
  EXPECT_EQ(c.scale, 1.0);
  EXPECT_EQ(c.apply({6, 7}).x, 1.0);
}

TEST(Similarity, HoldsAtTheEdgeOfDoublePrecision) {
  const double most = std::numeric_limits<double>::max();
  const Similarity c = Similarity::fitting({{-most, -most}, {most, most}});
  EXPECT_EQ(c.centre.x, 0.0);
  EXPECT_NEAR(c.apply({most, 0}).x, 1.0, 1e-15);
}

TEST(Similarity, ComesBackByItsInverse) {
  const Similarity s{{30, -40}, 0.25};
  const Point there = s.apply({38, -60});
  EXPECT_EQ(there.x, 2.0);
  EXPECT_EQ(there.y, -5.0);
  EXPECT_EQ(s.inverse().apply(there).x, 38.0);
  EXPECT_EQ(s.inverse().apply(there).y, -60.0);
}

TEST(SquareAround, IsAsHighAsWideAroundTheMiddleOfTheBox) {
  const cornerpin::Quad square = cornerpin::squareAround({{100, 50}, {300, 100}, {200, 80}});
  const Point expected[] = {{100, -25}, {300, -25}, {300, 175}, {100, 175}};
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(square[i].x, expected[i].x) << i;
    EXPECT_EQ(square[i].y, expected[i].y) << i;
  }
}

TEST(Denormalised, ActsOnTheCallersPointsAsTheTransformDoesOnNormalisedOnes) {
  const Similarity from{{30, 40}, 0.5};
  const Similarity to{{-7, 9}, 2.0};
  const Homography h = {{{1.1, 0.2, 0.3}, {-0.1, 0.9, 0.4}, {0.05, -0.02, 1.0}}};
  const Homography full = denormalised(h, from, to);
  EXPECT_EQ(full[2][2], 1.0);
  for (const Point p : {Point{31, 42}, Point{28, 37}, Point{30, 40}}) {
    const Point normalisedPlace = map(h, from.apply(p));
    const Point there = to.apply(map(full, p));
    EXPECT_NEAR(there.x, normalisedPlace.x, 1e-13);
    EXPECT_NEAR(there.y, normalisedPlace.y, 1e-13);
  }
}

TEST(Denormalised, LeavesTheNumbersAloneBetweenEqualUnits) {
  const Homography h = {{{1.1, 0.2, 0.3}, {-0.1, 0.9, 0.4}, {0.05, -0.02, 1.0}}};
  EXPECT_EQ(denormalised(h, {}, {}), h);
}

TEST(Normalised, IsTheWayBackOfDenormalised) {
  const Similarity from{{30, 40}, 0.5};
  const Similarity to{{-7, 9}, 2.0};
  const Homography h = {{{1.1, 0.2, 0.3}, {-0.1, 0.9, 0.4}, {0.05, -0.02, 1.0}}};
  const Homography back = cornerpin::normalised(denormalised(h, from, to), from, to);
  for (std::size_t i = 0; i < 9; ++i) EXPECT_NEAR(back[i / 3][i % 3], h[i / 3][i % 3], 1e-12);
}
