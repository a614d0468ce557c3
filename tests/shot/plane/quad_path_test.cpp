// SPDX-License-Identifier: BSD-3-Clause
#include "shot/plane/quad_path.h"

#include <gtest/gtest.h>

using namespace cornerpin;

namespace {

const Quad kQuad = {{{100, 60}, {900, 60}, {900, 540}, {100, 540}}};

Homography moved(double x, double y) { return {{{1, 0, x}, {0, 1, y}, {0, 0, 1}}}; }

}  // namespace

TEST(QuadAt, IsWhereOneTransformHasIt) {
  const Quad quad = quadAt(5, {2}, {moved(3, -4)}, kQuad);
  EXPECT_EQ(quad[2].x, 903.0);
  EXPECT_EQ(quad[2].y, 536.0);
}

// A quarter of the way from 4 to 8, and as far beyond.
TEST(QuadAt, GoesStraightThroughTwo) {
  const std::vector<Homography> ends = {moved(10, 0), moved(30, -8)};
  EXPECT_EQ(quadAt(5, {4, 8}, ends, kQuad)[0].x, 115.0);
  EXPECT_EQ(quadAt(5, {4, 8}, ends, kQuad)[0].y, 58.0);
  EXPECT_EQ(quadAt(9, {4, 8}, ends, kQuad)[1].x, 935.0);
}

TEST(QuadAt, FollowsACubicThroughFour) {
  const auto place = [](double t) { return 1.0 + 2.0 * t - 0.5 * t * t + 0.25 * t * t * t; };
  const std::vector<double> times = {-2, 3, -5, 4};
  std::vector<Homography> transforms;
  for (double t : times) transforms.push_back(moved(place(t), -place(t)));
  for (double t : {-4.0, 0.0, 1.5, 6.0}) {
    const Quad quad = quadAt(t, times, transforms, kQuad);
    for (std::size_t i = 0; i < 4; ++i) {
      EXPECT_NEAR(quad[i].x, kQuad[i].x + place(t), 1e-9) << t;
      EXPECT_NEAR(quad[i].y, kQuad[i].y - place(t), 1e-9) << t;
    }
  }
}

// The corners go straight where a transform with perspective does not.
TEST(QuadAt, MovesCornersAndNotElements) {
  const Homography bent = {{{1.2, 0.1, 5}, {-0.1, 1.1, 7}, {1e-3, -5e-4, 1}}};
  const Quad quad = quadAt(0, {-1, 1}, {kIdentity, bent}, kQuad);
  for (std::size_t i = 0; i < 4; ++i) {
    const Point end = map(bent, kQuad[i]);
    EXPECT_NEAR(quad[i].x, (kQuad[i].x + end.x) / 2, 1e-9);
    EXPECT_NEAR(quad[i].y, (kQuad[i].y + end.y) / 2, 1e-9);
  }
}
