// SPDX-License-Identifier: BSD-3-Clause
#include "shot/trust/frame_figures.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/shot/lists.h"

using namespace cornerpin;

TEST(BaseFrameFigures, HaveNoDeviationAndNoNoise) {
  const FrameFigures figures = baseFrameFigures(1);
  EXPECT_TRUE(std::isnan(figures.noise));
  EXPECT_EQ(figures.deviations(), (std::array<double, 4>{0, 0, 0, 0}));
}

TEST(FrameFigures, AreNoneUntilTheyAreKnown) {
  EXPECT_TRUE(std::isnan(FrameFigures().noise));
  for (double deviation : FrameFigures().deviations()) EXPECT_TRUE(std::isnan(deviation));
}

// Residuals (0, -3) and (0, 3) of a mean of two: their variance is 9 along each axis, half of it
// from the base frame, so a track's noise has the variance 4.5. The mean has half of that, once for
// each frame, along each of two axes: 9 in all.
TEST(FiguresOf, AShiftAreThoseOfAMeanInEveryCorner) {
  const lists::Frame frame = {Model::Translation,
                              {{{1, 0, 10}, {0, 1, 0}, {0, 0, 1}}},
                              {{{-3, 0}, {7, -3}}, {{3, 0}, {13, 3}}}};
  const Quad corners = {{{0, 0}, {50, 0}, {50, 60}, {-1e4, 7}}};
  const FrameFigures figures = figuresOf(frame.arrays(), frame.fitted(), {corners}, {0, 0});
  EXPECT_NEAR(figures.noise, std::sqrt(4.5), 1e-12);
  for (double deviation : figures.deviations()) EXPECT_NEAR(deviation, 3.0, 1e-9);
}

TEST(FiguresOf, AFrameHaveNoneForACornerOnOrBehindTheHorizon) {
  lists::Frame frame;
  frame.h = {{{1, 0, 0}, {0, 1, 0}, {-0.01, 0, 1}}};  // the horizon is at x = 100
  for (int i = 0; i < 9; ++i) {
    const Point p = {10.0 * (i % 3), 4.0 * i};
    const Point q = map(frame.h, p);
    frame.matches.push_back({p, {q.x + (i % 2 ? 0.5 : -0.5), q.y}});
  }
  const Quad corners = {{{20, 0}, {99, 0}, {100, 5}, {101, 0}}};
  const FrameFigures before = figuresOf(frame.arrays(), frame.fitted(), {corners}, {0, 0});
  EXPECT_GT(before.deviations()[0], 0.0);
  EXPECT_GT(before.deviations()[1], before.deviations()[0]);
  EXPECT_TRUE(std::isnan(before.deviations()[2]));
  EXPECT_TRUE(std::isnan(before.deviations()[3]));
  const FrameFigures behind = figuresOf(frame.arrays(), frame.fitted(), {corners}, {200, 0});
  EXPECT_TRUE(std::isnan(behind.deviations()[1]));
  EXPECT_TRUE(std::isnan(behind.deviations()[2]));
  EXPECT_GT(behind.deviations()[3], 0.0);
}
