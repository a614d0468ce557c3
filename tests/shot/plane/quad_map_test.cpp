// SPDX-License-Identifier: BSD-3-Clause
#include "shot/plane/quad_map.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace cornerpin;

namespace {

void expectCarries(const Homography& h, const Quad& from, const Quad& to, double pixels) {
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_NEAR(map(h, from[i]).x, to[i].x, pixels);
    EXPECT_NEAR(map(h, from[i]).y, to[i].y, pixels);
  }
}

}  // namespace

TEST(QuadToQuad, CarriesEachCornerToItsOwn) {
  const Quad from = {{{100, 60}, {900, 70}, {880, 540}, {120, 500}}};
  const Quad to = {{{300, 10}, {1500, 200}, {1210, 900}, {250, 410}}};
  const Homography h = quadToQuad(from, to);
  expectCarries(h, from, to, 1e-9);
  EXPECT_EQ(h[2][2], 1.0);
}

// A square that is turned by a quarter, doubled and moved: by hand.
TEST(QuadToQuad, IsTheTransformThatLeadsThere) {
  const Quad from = {{{0, 0}, {1, 0}, {1, 1}, {0, 1}}};
  const Quad to = {{{5, 7}, {5, 9}, {3, 9}, {3, 7}}};
  const Homography expected = {{{0, -2, 5}, {2, 0, 7}, {0, 0, 1}}};
  const Homography h = quadToQuad(from, to);
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) EXPECT_NEAR(h[i][j], expected[i][j], 1e-14);
  }
}

// The corners of one quad under a known transform with perspective give that transform back.
TEST(QuadToQuad, FindsPerspective) {
  const Homography truth = {{{1.1, 0.02, 40}, {-0.05, 0.9, -20}, {2e-4, -3e-4, 1}}};
  const Quad from = {{{100, 60}, {900, 60}, {900, 540}, {100, 540}}};
  Quad to;
  for (std::size_t i = 0; i < 4; ++i) to[i] = map(truth, from[i]);
  const Homography h = quadToQuad(from, to);
  for (double x : {-300.0, 500.0, 1200.0}) {
    EXPECT_NEAR(map(h, {x, 200}).x, map(truth, {x, 200}).x, 1e-8);
    EXPECT_NEAR(map(h, {x, 200}).y, map(truth, {x, 200}).y, 1e-8);
  }
}

TEST(QuadToQuad, IsNotFiniteOntoAPoint) {
  const Quad from = {{{0, 0}, {1, 0}, {1, 1}, {0, 1}}};
  const Quad flat = {{{0, 0}, {0, 0}, {0, 0}, {0, 0}}};
  const Homography back = quadToQuad(flat, from);
  EXPECT_FALSE(isFinite(back));
}
