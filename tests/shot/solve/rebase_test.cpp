// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/rebase.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>

#include "shot/solve/shot_solver.h"
#include "tests/shot/solve/small_shots.h"

using namespace cornerpin;
using small_shots::motion;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

const Quad kSquare = {{{0, 0}, {4, 0}, {4, 4}, {0, 4}}};

FrameResult solved(int frame, const Homography& h, const Symmetric2& covariance) {
  FrameResult result;
  result.frame = frame;
  result.verdict.status = Status::Solved;
  result.verdict.model = Model::Projective;
  result.h = h;
  result.rms = 0.5;
  result.figures.quads = {{covariance, covariance, covariance, covariance}};
  return result;
}

// Frame 5 is the base; frame 6 is twice as large and 10 to the right, frame 7 turned by a quarter.
ShotResult threeFrames() {
  ShotResult result;
  result.baseFrame = result.referenceFrame = 5;
  result.baseCentre = {2, 2};
  result.quads = {{"q", kSquare}};
  result.frames = {solved(5, kIdentity, {}),
                   solved(6, {{{2, 0, 10}, {0, 2, 0}, {0, 0, 1}}}, {4, 0, 1}),
                   solved(7, {{{0, -1, 0}, {1, 0, 0}, {0, 0, 1}}}, {1, 0.5, 2})};
  result.frames[0].verdict.status = Status::Base;
  result.tracks = {{"a", {1, 2}, {0.25, 0.125, 0.5}, {{5, 7, TrackUse::Good}}}, {}};
  result.tracks[1].name = "b";
  return result;
}

void expectCovariance(const Symmetric2& c, double xx, double xy, double yy) {
  EXPECT_DOUBLE_EQ(c.xx, xx);
  EXPECT_DOUBLE_EQ(c.xy, xy);
  EXPECT_DOUBLE_EQ(c.yy, yy);
}

// NaN is near NaN alone.
void expectNear(double a, double b, double tolerance) {
  EXPECT_EQ(std::isnan(a), std::isnan(b));
  if (std::isnan(a)) return;
  EXPECT_NEAR(a, b, tolerance);
}

void expectNear(const Symmetric2& a, const Symmetric2& b, double tolerance) {
  expectNear(a.xx, b.xx, tolerance);
  expectNear(a.xy, b.xy, tolerance);
  expectNear(a.yy, b.yy, tolerance);
}

// All that a rebase touches, to a share of a pixel.
void expectSame(const ShotResult& a, const ShotResult& b, double pixels) {
  EXPECT_EQ(a.referenceFrame, b.referenceFrame);
  const auto near = [&](Point p, Point q) {
    expectNear(p.x, q.x, pixels);
    expectNear(p.y, q.y, pixels);
  };
  near(a.baseCentre, b.baseCentre);
  for (std::size_t t = 0; t < a.tracks.size(); ++t) {
    near(a.tracks[t].place, b.tracks[t].place);
    expectNear(a.tracks[t].covariance, b.tracks[t].covariance, pixels);
  }
  for (std::size_t f = 0; f < a.frames.size(); ++f) {
    for (std::size_t c = 0; c < 4; ++c) {
      near(a.quads[0].corners[c], b.quads[0].corners[c]);
      near(map(a.frames[f].h, a.quads[0].corners[c]), map(b.frames[f].h, b.quads[0].corners[c]));
      expectNear(a.frames[f].figures.quads[0][c], b.frames[f].figures.quads[0][c], pixels);
    }
    EXPECT_EQ(a.frames[f].h[2][2], 1.0);
  }
}

// Sixteen tracks over eleven frames, with noise and perspective.
Tracks noisyShot() {
  std::mt19937_64 random(11);
  std::normal_distribution<double> normal(0, 0.4);
  Tracks tracks;
  for (int f = 0; f < 11; ++f) {
    for (int t = 0; t < 16; ++t) {
      const int column = t % 4;
      const int row = t / 4;
      const Point p = map(motion(10 * f), {80.0 + 150.0 * column, 60.0 + 110.0 * row});
      const double dx = normal(random);
      const double dy = normal(random);
      small_shots::see(tracks, t, f, {p.x + dx, p.y + dy});
    }
  }
  return tracks;
}

SolveOptions relativeTo(int reference) {
  SolveOptions options;
  options.base = 5;
  options.reference = reference;
  return options;
}

// The message with which a frame is refused; the result stays as it was.
std::string refusal(ShotResult result, int reference) {
  const ShotResult before = result;
  try {
    rebase(result, reference);
  } catch (const std::invalid_argument& error) {
    expectSame(result, before, 0.0);
    return error.what();
  }
  return "nothing thrown";
}

}  // namespace

TEST(Rebase, MultipliesTransformsByTheReferencesInverse) {
  ShotResult result = threeFrames();
  rebase(result, 6);
  EXPECT_EQ(result.baseFrame, 5);
  EXPECT_EQ(result.referenceFrame, 6);
  EXPECT_EQ(result.frames[0].h, (Homography{{{0.5, 0, -5}, {0, 0.5, 0}, {0, 0, 1}}}));
  EXPECT_EQ(result.frames[1].h, kIdentity);
  EXPECT_EQ(result.frames[2].h, (Homography{{{0, -0.5, 0}, {0.5, 0, -5}, {0, 0, 1}}}));
  EXPECT_EQ(result.frames[0].verdict.status, Status::Base);
  EXPECT_EQ(result.frames[2].rms, 0.5);
}

// It speaks of errors relative to another frame.
TEST(Rebase, KeepsNoAdviceForAnotherFrame) {
  ShotResult result = threeFrames();
  result.advice = {{{5, 6}, "do this"}};
  rebase(result, 5);
  EXPECT_EQ(result.advice.size(), 1u);
  rebase(result, 6);
  EXPECT_TRUE(result.advice.empty());
}

TEST(Rebase, CarriesWhatLiesOnTheSurface) {
  ShotResult result = threeFrames();
  rebase(result, 6);
  EXPECT_EQ(result.quads[0].corners[2].x, 18.0);
  EXPECT_EQ(result.quads[0].corners[2].y, 8.0);
  EXPECT_EQ(result.baseCentre.x, 14.0);
  EXPECT_EQ(result.tracks[0].place.x, 12.0);
  EXPECT_EQ(result.tracks[0].place.y, 4.0);
  expectCovariance(result.tracks[0].covariance, 1.0, 0.5, 2.0);
  EXPECT_TRUE(std::isnan(result.tracks[1].place.x));
}

// Frame 6 has the errors of frame 5 in its own picture, which is twice as large: a quarter of its
// covariance. Frame 7 has them turned, on top of its own.
TEST(Rebase, AddsTheErrorsOfBothFrames) {
  ShotResult result = threeFrames();
  rebase(result, 6);
  for (std::size_t c = 0; c < 4; ++c) {
    expectCovariance(result.frames[0].figures.quads[0][c], 1.0, 0.0, 0.25);
    expectCovariance(result.frames[1].figures.quads[0][c], 0.0, 0.0, 0.0);
    expectCovariance(result.frames[2].figures.quads[0][c], 1.25, 0.5, 3.0);
  }
}

// From frame 6 to frame 7 and not to the base frame: seen from there frame 6 has its own errors and
// those of frame 7, doubled and turned back.
TEST(Rebase, GoesFromOneFrameToAnother) {
  ShotResult result = threeFrames();
  rebase(result, 6);
  rebase(result, 7);
  expectCovariance(result.frames[0].figures.quads[0][1], 2.0, -0.5, 1.0);
  expectCovariance(result.frames[1].figures.quads[0][1], 4.0 + 8.0, -2.0, 1.0 + 4.0);
  expectCovariance(result.frames[2].figures.quads[0][1], 0.0, 0.0, 0.0);
  ShotResult once = threeFrames();
  rebase(once, 7);
  expectSame(result, once, 1e-12);
}

TEST(Rebase, LeadsBackToTheBaseFrame) {
  const ShotResult first = solveShot(noisyShot(), relativeTo(5));
  for (int f : {0, 4, 10}) {
    ShotResult result = first;
    rebase(result, f);
    EXPECT_EQ(result.frames[static_cast<std::size_t>(f)].h, kIdentity);
    rebase(result, 5);
    expectSame(result, first, 1e-9);
  }
}

TEST(Rebase, TwiceIsOnce) {
  const ShotResult first = solveShot(noisyShot(), relativeTo(5));
  ShotResult twice = first;
  rebase(twice, 9);
  rebase(twice, 1);
  ShotResult once = first;
  rebase(once, 1);
  expectSame(twice, once, 1e-9);
}

// The derivative of the transform between two frames by differences, with perspective.
TEST(Rebase, CarriesErrorsThroughThePerspective) {
  const ShotResult first = solveShot(noisyShot(), relativeTo(5));
  ShotResult result = first;
  rebase(result, 8);
  const Homography& from = first.frames[8].h;
  const Homography& to = first.frames[2].h;
  for (std::size_t c = 0; c < 4; ++c) {
    const Point p = map(from, first.quads[0].corners[c]);
    const auto seen = [&](double dx, double dy) {
      return map(to, map(inverse(from), {p.x + dx, p.y + dy}));
    };
    const double step = 1e-3;
    const double Xx = (seen(step, 0).x - seen(-step, 0).x) / (2 * step);
    const double Yx = (seen(step, 0).y - seen(-step, 0).y) / (2 * step);
    const double Xy = (seen(0, step).x - seen(0, -step).x) / (2 * step);
    const double Yy = (seen(0, step).y - seen(0, -step).y) / (2 * step);
    const Symmetric2 r = first.frames[8].figures.quads[0][c];
    const Symmetric2 f = first.frames[2].figures.quads[0][c];
    const Symmetric2 expected = {
        f.xx + Xx * Xx * r.xx + 2 * Xx * Xy * r.xy + Xy * Xy * r.yy,
        f.xy + Xx * Yx * r.xx + (Xx * Yy + Xy * Yx) * r.xy + Xy * Yy * r.yy,
        f.yy + Yx * Yx * r.xx + 2 * Yx * Yy * r.xy + Yy * Yy * r.yy};
    expectNear(result.frames[2].figures.quads[0][c], expected, 1e-6 * expected.trace());
  }
}

TEST(Rebase, HasNoFigureWhereTheReferenceHasNone) {
  ShotResult result = threeFrames();
  result.frames[1].figures.quads[0][3] = {kNaN, kNaN, kNaN};
  rebase(result, 6);
  EXPECT_TRUE(std::isnan(result.frames[2].figures.quads[0][3].xx));
  EXPECT_TRUE(std::isnan(result.frames[0].figures.quads[0][3].yy));
  expectCovariance(result.frames[1].figures.quads[0][3], 0.0, 0.0, 0.0);
  expectCovariance(result.frames[2].figures.quads[0][2], 1.25, 0.5, 3.0);
}

// Relative to frame 6 frame 7 has less than frame 6 alone brings along.
TEST(Rebase, LeavesNoCovarianceBelowZero) {
  ShotResult result = threeFrames();
  rebase(result, 6);
  result.frames[2].figures.quads[0].fill({0.2, 0.1, 3.0});
  rebase(result, 5);
  expectCovariance(result.frames[2].figures.quads[0][0], 0.0, 0.0, 2.0);
}

TEST(Rebase, LosesAPlaceBehindTheHorizonAlone) {
  ShotResult result = threeFrames();
  result.frames[1].h = {{{1, 0, 0}, {0, 1, 0}, {-0.01, 0, 1}}};  // the horizon is at x = 100
  result.tracks = {{"before", {50, 10}, {1, 0, 1}, {}},
                   {"on", {100, 10}, {1, 0, 1}, {}},
                   {"behind", {150, 10}, {1, 0, 1}, {}}};
  rebase(result, 6);
  EXPECT_DOUBLE_EQ(result.tracks[0].place.x, 100.0);
  EXPECT_DOUBLE_EQ(result.tracks[0].place.y, 20.0);
  for (std::size_t t : {1u, 2u}) {
    EXPECT_TRUE(std::isnan(result.tracks[t].place.y));
    EXPECT_TRUE(std::isnan(result.tracks[t].covariance.xy));
  }
}

TEST(Rebase, SaysWhyAFrameIsRefused) {
  const ShotResult result = threeFrames();
  EXPECT_EQ(refusal(result, 8), "reference frame 8 is not in the shot: take one from 5 to 7");
  EXPECT_EQ(refusal(result, -1), "reference frame -1 is not in the shot: take one from 5 to 7");
  ShotResult held = result;
  held.frames[1].verdict.status = Status::Held;
  EXPECT_EQ(refusal(held, 6), "frame 6 cannot be the reference: it was held: take another one");
  held.frames[1].texts = std::make_shared<FrameTexts>(FrameTexts{"", "no tracks"});
  EXPECT_EQ(refusal(held, 6),
            "frame 6 cannot be the reference: it was held (no tracks): take another one");
  ShotResult flat = result;
  flat.frames[1].h = {{{1, 0, 0}, {0, 0, 0}, {0, 0, 1}}};
  EXPECT_EQ(refusal(flat, 6),
            "frame 6 cannot be the reference: its transform has no inverse: take another one");
  flat.frames[1].h = {{{1, 0, 0}, {1, 1e-18, 0}, {0, 0, 1}}};
  EXPECT_EQ(refusal(flat, 6),
            "frame 6 cannot be the reference: its transform has no inverse: take another one");
  ShotResult tilted = result;
  tilted.frames[1].h = {{{1, 0, 0}, {0, 1, 0}, {-0.3, 0, 1}}};  // the horizon is at x = 3.3
  EXPECT_EQ(refusal(tilted, 6),
            "frame 6 cannot be the reference: a corner of the quad \"q\" lies on or behind its "
            "horizon: take another one");
  // A frame that has the horizon through the reference frame's corner (0, 0).
  ShotResult endless = result;
  endless.frames[1].h = {{{1, 0, 1}, {0, 1, 0}, {0, 0, 1}}};
  endless.frames[2].h = {{{1, 0, 0}, {0, 1, 0}, {1, 0, 1}}};
  EXPECT_EQ(refusal(endless, 6),
            "frame 6 cannot be the reference: from it, frame 7 has no finite transform: take "
            "another one");
}

TEST(Rebase, TakesAReducedFrame) {
  ShotResult result = threeFrames();
  result.frames[1].verdict.status = Status::Reduced;
  rebase(result, 6);
  EXPECT_EQ(result.frames[1].h, kIdentity);
}

// The frame's vanishing line is x = 100. The base frame's centre, x = 300, is seen at x = 75.
TEST(CarriedToBase, KeepsToTheSideOnWhichTheBaseFramesCentreIsSeen) {
  FrameResult frame;
  frame.frame = 6;
  frame.verdict.status = Status::Solved;
  frame.h = {{{1, 0, 0}, {0, 1, 0}, {0.01, 0, 1}}};
  const auto carriedFrom = [&](double right) {
    const Quad quad = {{{50, 0}, {right, 0}, {right, 10}, {50, 10}}};
    return carriedToBase({{"q", quad}}, frame, {300, 0})[0].corners;
  };
  const Quad corners = carriedFrom(80);
  EXPECT_DOUBLE_EQ(corners[0].x, 100.0);
  EXPECT_DOUBLE_EQ(corners[2].x, 400.0);
  EXPECT_DOUBLE_EQ(corners[2].y, 50.0);
  EXPECT_DOUBLE_EQ(corners[3].y, 20.0);
  EXPECT_THROW(carriedFrom(100), std::invalid_argument);
  EXPECT_THROW(carriedFrom(120), std::invalid_argument);
  frame.verdict.status = Status::Held;
  EXPECT_THROW(carriedFrom(80), std::invalid_argument);
}

TEST(SolveRelative, KeepsEveryBitWhereTheReferenceIsTheBase) {
  const ShotResult with = solveShot(noisyShot(), relativeTo(5));
  SolveOptions options = relativeTo(5);
  options.reference.reset();
  const ShotResult without = solveShot(noisyShot(), options);
  expectSame(with, without, 0.0);
  for (std::size_t f = 0; f < 11; ++f) EXPECT_EQ(with.frames[f].h, without.frames[f].h);
}

TEST(SolveRelative, IsTheSolveAndThenARebase) {
  for (Loss loss : {Loss::None, Loss::Tukey}) {
    SolveOptions options = relativeTo(5);
    options.loss = loss;
    ShotResult expected = solveShot(noisyShot(), options);
    rebase(expected, 2);
    options.reference = 2;
    const ShotResult result = solveShot(noisyShot(), options);
    expectSame(result, expected, 0.0);
    for (std::size_t f = 0; f < 11; ++f) {
      EXPECT_EQ(result.frames[f].h, expected.frames[f].h);
      EXPECT_EQ(result.frames[f].rms, expected.frames[f].rms);
    }
  }
}

TEST(SolveRelative, HasItsQuadsInTheReferenceFrame) {
  const Quad quad = {{{300, 100}, {700, 120}, {720, 400}, {310.1, 380}}};
  SolveOptions options = relativeTo(9);
  options.quads = {{"sign", quad}};
  options.influences = true;
  const ShotResult result = solveShot(noisyShot(), options);
  for (std::size_t c = 0; c < 4; ++c) {
    EXPECT_EQ(result.quads[0].corners[c].x, quad[c].x);
    EXPECT_EQ(result.quads[0].corners[c].y, quad[c].y);
  }
  // The same corners, told in the base frame.
  const ShotResult plain = solveShot(noisyShot(), relativeTo(5));
  SolveOptions inBase = relativeTo(5);
  inBase.influences = true;
  inBase.quads = {{"sign", quad}};
  for (Point& p : inBase.quads[0].corners) p = map(inverse(plain.frames[9].h), p);
  ShotResult expected = solveShot(noisyShot(), inBase);
  rebase(expected, 9);
  expectSame(result, expected, 1e-9);
  EXPECT_NEAR(result.frames[1].influences[3].influence, expected.frames[1].influences[3].influence,
              1e-9);
  EXPECT_GT(result.frames[1].figures.deviations()[0], 0.1);
}

TEST(SolveRelative, RefusesFramesAndQuadsThatTheReferenceCannotHave) {
  Tracks tracks = noisyShot();
  SolveOptions outside = relativeTo(11);
  outside.quads = {{"sign", kSquare}};
  const auto progress = [](Phase, std::size_t, std::size_t) {
    ADD_FAILURE() << "refused too late";
  };
  EXPECT_THROW(solveShot(tracks, outside, progress), std::invalid_argument);
  small_shots::see(tracks, 3, 12, {1, 1}, 0.0f);
  EXPECT_THROW(solveShot(tracks, relativeTo(12)), std::invalid_argument);  // held
  SolveOptions options = relativeTo(9);
  options.quads = {{"sign", {{{0, -1e7}, {9, -1e7}, {9, 1e7}, {0, 1e7}}}}};
  try {
    solveShot(noisyShot(), options);
    ADD_FAILURE();
  } catch (const std::invalid_argument& error) {
    EXPECT_STREQ(error.what(),
                 "frame 9 cannot be the reference: a corner of the quad \"sign\" lies on or behind "
                 "its horizon: take another one");
  }
}
