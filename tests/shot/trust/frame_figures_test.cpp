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

namespace {

const Symmetric2 kNone = {kNoFigure, kNoFigure, kNoFigure};
const Symmetric2 kLong = {1, 0.5, 2};  // of noise 1

// The same for each corner.
FrameErrors errorsWith(double noise, double freedom, const Symmetric2& jackknife) {
  const CornerCovariances ofOne = {kLong, kLong, kLong, kLong};
  return {noise, freedom, {{ofOne, {jackknife, jackknife, jackknife, jackknife}}}};
}

FrameErrors errorsIn(const lists::Frame& frame, const Quad& corners, Point front) {
  const Matches matches = frame.arrays();
  const FittedFrame fitted = frame.fitted();
  return errorsOf(FrameFits(matches, fitted, fitted), {corners}, front);
}

Symmetric2 figureOf(const FrameErrors& errors, const NoiseEstimate& shot) {
  const FrameFigures figures = figuresOf(errors, shot);
  EXPECT_EQ(figures.quads.size(), 1u);
  return figures.quads[0][3];
}

void expectNear(const Symmetric2& a, const Symmetric2& b) {
  EXPECT_NEAR(a.xx, b.xx, 1e-12);
  EXPECT_NEAR(a.xy, b.xy, 1e-12);
  EXPECT_NEAR(a.yy, b.yy, 1e-12);
}

}  // namespace

// Residuals (0, -3) and (0, 3) of a mean of two: their variance is 9 along each axis, half of it
// from the base frame, so a track's noise has the variance 4.5. The mean has half of that, once for
// each frame, along each of two axes. Without one of the two the other decides: it moves by 3 along
// y, twice, and the jackknife has half of the sum of squares.
TEST(ErrorsOf, AShiftAreThoseOfAMeanInEveryCorner) {
  const lists::Frame frame = {Model::Translation,
                              {{{1, 0, 10}, {0, 1, 0}, {0, 0, 1}}},
                              {{{-3, 0}, {7, -3}}, {{3, 0}, {13, 3}}}};
  const Quad corners = {{{0, 0}, {50, 0}, {50, 60}, {-1e4, 7}}};
  const FrameErrors errors = errorsIn(frame, corners, {0, 0});
  EXPECT_NEAR(errors.noise, std::sqrt(4.5), 1e-12);
  EXPECT_EQ(errors.freedom, 2.0);
  for (std::size_t c = 0; c < 4; ++c) {
    expectNear(errors.quads[0].ofOne[c], {1, 0, 1});
    expectNear(errors.quads[0].jackknife[c], {0, 0, 9});
  }
}

TEST(ErrorsOf, AHeldFrameAreNotKnown) {
  lists::Frame frame = {Model::Held, kIdentity, {{{-3, 0}, {7, -3}}, {{3, 0}, {13, 3}}}};
  const Quad corners = {{{0, 0}, {50, 0}, {50, 60}, {0, 60}}};
  const FrameErrors errors = errorsIn(frame, corners, {0, 0});
  EXPECT_TRUE(std::isnan(errors.quads[0].ofOne[0].xx));
  EXPECT_TRUE(std::isnan(errors.quads[0].jackknife[0].xx));
  EXPECT_EQ(errors.freedom, 0.0);
}

// 8 / 8 (e - 1) is the factor of a variance of eight degrees of freedom.
TEST(FiguresOf, AFrameAreThoseOfEqualNoise) {
  const double factor = std::exp(1.0) - 1.0;
  expectNear(figureOf(errorsWith(2.0, 8.0, {}), {}), times(4.0 * factor, kLong));
  EXPECT_EQ(figuresOf(errorsWith(2.0, 8.0, {}), {}).noise, 2.0);
}

TEST(FiguresOf, AFrameTakeTheShotsNoiseIn) {
  // 4 of 4 and 2 of 12 errors: a variance of 2.5 by 16 errors.
  const double factor = 2.0 * (std::exp(0.5) - 1.0);
  expectNear(figureOf(errorsWith(2.0, 4.0, {}), {2.0, 12.0}), times(2.5 * factor, kLong));
  // Four tracks.
  expectNear(figureOf(errorsWith(kNoFigure, 0.0, {}), {2.0, 16.0}), times(2.0 * factor, kLong));
  EXPECT_TRUE(std::isnan(figureOf(errorsWith(kNoFigure, 0.0, {}), {}).xx));
  EXPECT_TRUE(std::isnan(figuresOf(errorsWith(kNoFigure, 0.0, {}), {2.0, 16.0}).noise));
}

TEST(FiguresOf, AFrameAreTheJackknifesWhereThatIsLarger) {
  const double factor = std::exp(1.0) - 1.0;  // traces of 3 factor and 5.1, 5.2
  expectNear(figureOf(errorsWith(1.0, 8.0, {0.1, 0.2, 5.0}), {}), times(factor, kLong));
  expectNear(figureOf(errorsWith(1.0, 8.0, {0.1, 0.2, 5.1}), {}), {0.1, 0.2, 5.1});
}

// The frame's own figures have the trace 12, of which equal noise as its residuals tell it, of
// variance 1, has 3: three quarters are beyond. The same 3 are a quarter of the joint ones, whose
// other three quarters errors that last make twice as large.
TEST(TakeJoint, AddsWhatTheFrameHasBeyondEqualNoise) {
  const FrameErrors errors = errorsWith(1.0, 8.0, {2, 1, 10});
  FrameFigures figures = figuresOf(errors, {});
  const std::vector<Symmetric2> joint(4, {7, 3, 5});
  takeJoint(joint, 2.0, errors, figures);
  expectNear(figures.quads[0][2], {1.75 * 7 + 1.5, 1.75 * 3 + 0.75, 1.75 * 5 + 7.5});
}

TEST(TakeJoint, LeavesNothingWhereTheJointFitSaysNothing) {
  const FrameErrors errors = errorsWith(1.0, 8.0, {2, 1, 10});
  FrameFigures figures = figuresOf(errors, {});
  takeJoint(std::vector<Symmetric2>(4, kNone), 1.0, errors, figures);
  EXPECT_TRUE(std::isnan(figures.quads[0][0].xx));
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
  const FrameFigures before = figuresOf(errorsIn(frame, corners, {0, 0}), {});
  EXPECT_GT(before.deviations()[0], 0.0);
  EXPECT_GT(before.deviations()[1], before.deviations()[0]);
  EXPECT_TRUE(std::isnan(before.deviations()[2]));
  EXPECT_TRUE(std::isnan(before.deviations()[3]));
  const FrameFigures behind = figuresOf(errorsIn(frame, corners, {200, 0}), {});
  EXPECT_TRUE(std::isnan(behind.deviations()[1]));
  EXPECT_TRUE(std::isnan(behind.deviations()[2]));
  EXPECT_GT(behind.deviations()[3], 0.0);
}
