// SPDX-License-Identifier: BSD-3-Clause
#include "shot/time/corner_path.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/shot/time/made_result.h"

using namespace cornerpin;
using made::kQuad;
using made::worstCorner;

namespace {

constexpr Point kFront = {500, 300};

Homography moved(double x, double y) { return {{{1, 0, x}, {0, 1, y}, {0, 0, 1}}}; }

}  // namespace

TEST(TransformBetween, IsHalfwayBetweenTwo) {
  const auto h = transformBetween({{4, moved(10, 0)}, {6, moved(30, -8)}}, 5, kQuad, kFront);
  ASSERT_TRUE(h);
  EXPECT_LT(worstCorner(*h, moved(20, -4)), 1e-9);
  EXPECT_EQ((*h)[2][2], 1.0);
}

// Corners that move by cubics are met at any time from four of their places.
TEST(TransformBetween, FollowsACubicThroughFour) {
  const auto motion = [](double t) {
    return moved(3 * t - 0.5 * t * t + 0.1 * t * t * t, 200 - t * t * t);
  };
  std::vector<TimedTransform> known;
  for (double t : {-3.0, 0.0, 2.0, 7.0}) known.push_back({t, motion(t)});
  for (double t : {-2.5, 0.25, 1.0, 6.5}) {
    const auto h = transformBetween(known, t, kQuad, kFront);
    ASSERT_TRUE(h);
    EXPECT_LT(worstCorner(*h, motion(t)), 1e-8) << t;
  }
}

TEST(TransformBetween, IsTheOneGivenAtItsTime) {
  const Homography odd = {{{1, 1.0 / 3.0, 0.1}, {-0.7, 1, 0}, {1e-5, 0, 1}}};
  const auto h = transformBetween({{1, moved(1, 1)}, {2, odd}}, 2, kQuad, kFront);
  ASSERT_TRUE(h);
  EXPECT_EQ(*h, odd);
}

// One transform has the far corners behind its horizon; between two like it lies one like them.
TEST(TransformBetween, DrawsAQuadTogetherThatReachesBehindAHorizon) {
  const auto tilted = [](double x) {
    return Homography{{{1, 0, x}, {0, 1, 0}, {-1.2e-3, 0, 1}}};  // the horizon is at x = 833
  };
  const auto h = transformBetween({{1, tilted(0)}, {2, tilted(20)}}, 1.5, kQuad, kFront);
  ASSERT_TRUE(h);
  const Homography expected = tilted(10);
  for (Point p : {Point{500, 300}, Point{400, 200}, Point{700, 500}}) {
    EXPECT_NEAR(map(*h, p).x, map(expected, p).x, 1e-6);
    EXPECT_NEAR(map(*h, p).y, map(expected, p).y, 1e-6);
  }
}

TEST(TransformBetween, FindsNoneWhereTheCornersMeet) {
  const Homography turned = {{{-1, 0, 1000}, {0, -1, 600}, {0, 0, 1}}};
  EXPECT_FALSE(transformBetween({{1, kIdentity}, {2, turned}}, 1.5, kQuad, kFront));
  EXPECT_TRUE(transformBetween({{1, kIdentity}, {2, turned}}, 1.25, kQuad, kFront));
}

TEST(ShownByAll, IsTheQuadUnlessAHorizonIsNear) {
  const Quad same = shownByAll({kIdentity, moved(5, 5)}, kQuad, kFront);
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(same[i].x, kQuad[i].x);
    EXPECT_EQ(same[i].y, kQuad[i].y);
  }
  // The third coordinate is 0.5 at the front and 0.1 at x = 900: below a quarter; halved, 0.3.
  const Homography tilted = {{{1, 0, 0}, {0, 1, 0}, {-1e-3, 0, 1}}};
  const Quad halved = shownByAll({kIdentity, tilted}, kQuad, kFront);
  EXPECT_EQ(halved[1].x, 700.0);
  EXPECT_EQ(halved[1].y, 180.0);
  EXPECT_EQ(halved[3].x, 300.0);
}

TEST(LeadsTo, WantsEachCornerInFrontAndAtItsPlace) {
  Quad to = kQuad;
  for (Point& p : to) p.x += 10.0;
  EXPECT_TRUE(leadsTo(moved(10, 0), kQuad, to, kFront));
  EXPECT_FALSE(leadsTo(moved(10.1, 0), kQuad, to, kFront));
  const Homography tilted = {{{1, 0, 0}, {0, 1, 0}, {-1.2e-3, 0, 1}}};
  const Quad far = {{{900, 60}, {950, 60}, {950, 540}, {900, 540}}};  // the horizon is at x = 833
  Quad behind;
  for (std::size_t i = 0; i < 4; ++i) behind[i] = map(tilted, far[i]);
  EXPECT_FALSE(leadsTo(tilted, far, behind, kFront));
  EXPECT_TRUE(leadsTo(tilted, far, behind, {920, 300}));
  Homography nowhere = kIdentity;
  nowhere[0][0] = std::nan("");
  EXPECT_FALSE(leadsTo(nowhere, kQuad, kQuad, kFront));
}
