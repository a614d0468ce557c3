// SPDX-License-Identifier: BSD-3-Clause
#include "shot/time/smooth.h"

#include <gtest/gtest.h>

#include <cmath>

#include "shot/plane/quad_map.h"
#include "shot/solve/shot_solver.h"
#include "tests/shot/known_shots.h"
#include "tests/shot/random.h"
#include "tests/shot/time/made_result.h"

using namespace cornerpin;
using made::kQuad;
using made::worstCorner;

namespace {

constexpr int kNone = -1000;
constexpr double kNoBudget = 1e9;

// The transform with each corner of the quad off by noise.
Homography shaken(const Homography& h, double deviation, made::Random& random) {
  Quad corners;
  for (std::size_t i = 0; i < 4; ++i) {
    const Point p = map(h, kQuad[i]);
    const double dx = random.noise(deviation / std::sqrt(2.0));
    const double dy = random.noise(deviation / std::sqrt(2.0));
    corners[i] = {p.x + dx, p.y + dy};
  }
  return quadToQuad(kQuad, corners);
}

ShotResult shakenResult(std::uint32_t seed, double deviation = 0.5) {
  made::Random random(seed);
  ShotResult result = made::result(made::swaying, 0, 79, 0, deviation);
  for (FrameResult& frame : result.frames) {
    if (frame.frame > 0) frame.h = shaken(frame.h, deviation, random);
  }
  return result;
}

double moved(const FrameResult& frame, std::size_t corner) {
  const Homography before = frame.untouched ? frame.untouched->h : frame.h;
  return std::sqrt(squaredDistance(map(before, kQuad[corner]), map(frame.h, kQuad[corner])));
}

// Over all frames: root mean squares of the worst corner's error, and of the second difference of
// the corners' errors.
struct Figures {
  double error = 0.0;
  double jitter = 0.0;
};

Figures figuresOf(const ShotResult& result, const std::function<Homography(int)>& truth) {
  Figures figures;
  const Quad& quad = result.quads.front().corners;
  std::vector<Quad> errors;
  for (const FrameResult& frame : result.frames) {
    const double worst = worstCorner(frame.h, truth(frame.frame), quad);
    figures.error += worst * worst;
    errors.push_back({});
    for (std::size_t i = 0; i < 4; ++i) {
      const Point a = map(frame.h, quad[i]);
      const Point b = map(truth(frame.frame), quad[i]);
      errors.back()[i] = {a.x - b.x, a.y - b.y};
    }
  }
  for (std::size_t f = 1; f + 1 < errors.size(); ++f) {
    for (std::size_t i = 0; i < 4; ++i) {
      const double x = errors[f - 1][i].x - 2 * errors[f][i].x + errors[f + 1][i].x;
      const double y = errors[f - 1][i].y - 2 * errors[f][i].y + errors[f + 1][i].y;
      figures.jitter += x * x + y * y;
    }
  }
  figures.error = std::sqrt(figures.error / static_cast<double>(errors.size()));
  figures.jitter = std::sqrt(figures.jitter / (4.0 * static_cast<double>(errors.size() - 2)));
  return figures;
}

}  // namespace

TEST(Smooth, TakesJitterOut) {
  for (std::uint32_t seed = 1; seed <= 5; ++seed) {
    ShotResult result = shakenResult(seed);
    const auto truth = [](int f) { return made::swaying(f); };
    const Figures before = figuresOf(result, truth);
    smooth(result, kNoBudget, kNone);
    const Figures after = figuresOf(result, truth);
    EXPECT_LT(after.jitter, 0.5 * before.jitter) << seed;
    EXPECT_LT(after.error, 0.7 * before.error) << seed;
  }
}

TEST(Smooth, MovesNoCornerByMoreThanItMayBeOff) {
  ShotResult result = shakenResult(6, 1.0);
  for (FrameResult& frame : result.frames) {
    if (frame.frame % 2 == 0) continue;
    for (std::size_t i = 0; i < 4; ++i)
      frame.figures.quads[0][i] = {0.01 + 0.2 * static_cast<double>(i), 0.0, 0.0};
  }
  for (std::size_t i = 0; i < 4; ++i) result.frames[1].figures.quads[0][i] = {1e-4, 0.0, 0.0};
  smooth(result, kNoBudget, kNone);
  double most = 0.0;
  for (const FrameResult& frame : result.frames) {
    double furthest = 0.0;
    for (std::size_t i = 0; i < 4; ++i) {
      EXPECT_LE(moved(frame, i), frame.figures.deviations()[i] + 1e-9) << frame.frame;
      furthest = std::max(furthest, moved(frame, i));
    }
    EXPECT_NEAR(frame.smoothed, furthest, 1e-9);
    EXPECT_EQ(frame.untouched != nullptr, frame.smoothed > 0.0);
    most = std::max(most, furthest);
  }
  EXPECT_GT(most, 0.5);
}

TEST(Smooth, MovesNoCornerByMoreThanTheBudget) {
  ShotResult result = shakenResult(7, 2.0);
  smooth(result, 0.25, kNone);
  EXPECT_EQ(result.smooth, 0.25);
  int atTheLimit = 0;
  for (const FrameResult& frame : result.frames) {
    for (std::size_t i = 0; i < 4; ++i) EXPECT_LE(moved(frame, i), 0.25 + 1e-9) << frame.frame;
    atTheLimit += frame.smoothed > 0.2499;
  }
  EXPECT_GT(atTheLimit, 40);
}

// What is further than four deviations from the path is not even rounded.
TEST(Smooth, LeavesWhatStandsOutToTheBit) {
  ShotResult result = shakenResult(8);
  for (FrameResult& frame : result.frames) {
    if (frame.frame != 0) frame.figures.quads[0].fill({1e-6, 0.0, 1e-6});
  }
  const ShotResult before = result;
  smooth(result, kNoBudget, kNone);
  int same = 0;
  for (std::size_t f = 1; f < 80; ++f) {
    EXPECT_EQ(result.frames[f].untouched != nullptr, result.frames[f].smoothed > 0.0);
    same += !result.frames[f].untouched && result.frames[f].h == before.frames[f].h;
  }
  EXPECT_GT(same, 60);
}

// The second quad reaches far beyond the first, so that its corners move further.
ShotResult shakenWithALargeQuad(std::uint32_t seed, double itsDeviation) {
  ShotResult result = shakenResult(seed, 1.0);
  result.quads.push_back({"large", {{{-200, -150}, {1200, -150}, {1200, 750}, {-200, 750}}}});
  const double half = 0.5 * itsDeviation * itsDeviation;
  for (FrameResult& frame : result.frames) {
    frame.figures.quads.push_back(frame.figures.quads[0]);
    if (frame.frame != 0) frame.figures.quads[1].fill({half, 0.0, half});
  }
  return result;
}

double furthestOfLargeQuad(const ShotResult& result, const FrameResult& frame) {
  const Homography before = frame.untouched ? frame.untouched->h : frame.h;
  return worstCorner(before, frame.h, result.quads[1].corners);
}

TEST(Smooth, KeepsToTheDeviationsOfAllQuads) {
  ShotResult result = shakenWithALargeQuad(6, 0.4);
  smooth(result, kNoBudget, kNone);
  int atTheLimit = 0;
  for (const FrameResult& frame : result.frames) {
    EXPECT_LE(furthestOfLargeQuad(result, frame), 0.4 + 1e-8) << frame.frame;
    for (std::size_t i = 0; i < 4; ++i) EXPECT_LE(moved(frame, i), 1.0 + 1e-8) << frame.frame;
    atTheLimit += frame.smoothed > 0.399;
  }
  EXPECT_GT(atTheLimit, 40);
}

TEST(Smooth, KeepsToTheBudgetInAllQuads) {
  ShotResult result = shakenWithALargeQuad(6, 100.0);
  for (Symmetric2& c : result.frames[50].figures.quads[1]) c.xx = std::nan("");
  smooth(result, 0.25, kNone);
  int atTheLimit = 0;
  for (const FrameResult& frame : result.frames) {
    const double furthest = furthestOfLargeQuad(result, frame);
    EXPECT_LE(furthest, 0.25 + 1e-8) << frame.frame;
    EXPECT_NEAR(frame.smoothed, furthest, 1e-8) << frame.frame;
    atTheLimit += furthest > 0.2499;
  }
  EXPECT_GT(atTheLimit, 60);
}

TEST(Smooth, LeavesTheBaseFrameAndTheFixedOne) {
  ShotResult result = shakenResult(8);
  const Homography before = result.frames[31].h;
  smooth(result, kNoBudget, 31);
  EXPECT_EQ(result.frames[0].h, kIdentity);
  EXPECT_EQ(result.frames[31].h, before);
  EXPECT_EQ(result.frames[31].smoothed, 0.0);
  EXPECT_GT(result.frames[32].smoothed, 0.0);
}

TEST(Smooth, LeavesFramesThatAreNotSolvedOrHaveNoFigures) {
  ShotResult result = shakenResult(9);
  const Homography wrong = {{{1, 0, 400}, {0, 1, 90}, {0, 0, 1}}};
  for (std::size_t f : {20u, 21u, 22u}) {
    result.frames[f].verdict.status = f == 21 ? Status::Reduced : Status::Held;
    result.frames[f].h = wrong;
  }
  result.frames[40].figures.quads[0][3].yy = std::nan("");
  const Homography blind = result.frames[40].h;
  const ShotResult before = result;
  smooth(result, kNoBudget, kNone);
  for (std::size_t f : {20u, 21u, 22u}) {
    EXPECT_EQ(result.frames[f].h, wrong);
    EXPECT_FALSE(result.frames[f].untouched);
  }
  EXPECT_EQ(result.frames[40].h, blind);
  for (std::size_t f : {19u, 23u}) {
    EXPECT_LT(worstCorner(result.frames[f].h, made::swaying(static_cast<double>(f))), 1.5);
  }
}

// A camera that shakes by 20 px from frame to frame, known to half a pixel: what looks like jitter
// is none.
TEST(Smooth, LeavesAShakingThatErrorsDoNotExplain) {
  made::Random random(3);
  ShotResult result = made::result(made::swaying, 0, 79, 0);
  for (FrameResult& frame : result.frames) {
    const double x = random.noise(20.0);
    const double y = random.noise(20.0);
    if (frame.frame > 0) {
      frame.h = withLastOne(product({{{1, 0, x}, {0, 1, y}, {0, 0, 1}}}, frame.h));
    }
  }
  smooth(result, kNoBudget, kNone);
  double squares = 0.0;
  for (const FrameResult& frame : result.frames) squares += frame.smoothed * frame.smoothed;
  EXPECT_LT(std::sqrt(squares / 80.0), 0.15);
}

// A camera that shakes by 1.5 px in five frames, with errors of 1 px of each corner by itself: the
// shaking, which all corners share, stays.
TEST(Smooth, TellsAShakingFromErrorsOfSingleCorners) {
  const auto truth = [](int f) {
    Homography h = made::swaying(f);
    const Homography shake = {{{1, 0, 1.5 * std::sin(1.3 * f)}, {0, 1, 0}, {0, 0, 1}}};
    return f == 0 ? kIdentity : withLastOne(product(shake, h));
  };
  double before = 0.0;
  double after = 0.0;
  for (std::uint32_t seed = 1; seed <= 10; ++seed) {
    made::Random random(seed);
    ShotResult result = made::result(made::swaying, 0, 79, 0, 1.0);
    for (FrameResult& frame : result.frames) {
      if (frame.frame > 0) frame.h = shaken(truth(frame.frame), 1.0, random);
    }
    before += figuresOf(result, truth).error;
    smooth(result, kNoBudget, kNone);
    after += figuresOf(result, truth).error;
  }
  EXPECT_LT(after, 0.7 * before);
}

// The lower corners come within a tenth of the horizon, where a tenth of a pixel in the middle is
// many pixels: paths are smooth in the middle.
TEST(Smooth, GoesByTheMiddleWhereAHorizonIsNear) {
  const auto truth = [](int f) {
    Homography h = made::swaying(0.3 * f);
    h[2][1] -= 0.9 / 540.0 * f / 79.0;
    return h;
  };
  const Quad middle = {{{400, 200}, {600, 200}, {600, 380}, {400, 380}}};
  double before = 0.0;
  double after = 0.0;
  for (std::uint32_t seed = 1; seed <= 10; ++seed) {
    made::Random random(seed);
    ShotResult result = made::result(made::swaying, 0, 79, 0, 100.0);
    for (FrameResult& frame : result.frames) {
      Quad corners = middle;
      for (Point& p : corners) {
        p = map(truth(frame.frame), p);
        const double dx = random.noise(0.1);
        const double dy = random.noise(0.1);
        p = {p.x + dx, p.y + dy};
      }
      if (frame.frame > 0) frame.h = quadToQuad(middle, corners);
    }
    before += figuresOf(result, truth).error;
    smooth(result, kNoBudget, kNone);
    after += figuresOf(result, truth).error;
  }
  EXPECT_LT(after, 0.7 * before);
}

// A cut in frame 40: the frames beside it come nearer to the truth, like the others.
TEST(Smooth, DragsNothingAcrossACut) {
  double before = 0.0;
  double after = 0.0;
  for (std::uint32_t seed = 1; seed <= 20; ++seed) {
    const Homography turn = {{{-0.6, 0.7, 500}, {-0.7, -0.6, 900}, {0, 0, 1}}};
    const auto truth = [&](int f) {
      return f < 40 ? made::swaying(f) : withLastOne(product(turn, made::swaying(f)));
    };
    made::Random random(seed);
    ShotResult result = made::result(made::swaying, 0, 79, 0);
    for (FrameResult& frame : result.frames) {
      if (frame.frame > 0) frame.h = shaken(truth(frame.frame), 0.5, random);
    }
    ShotResult smoothed = result;
    smooth(smoothed, kNoBudget, kNone);
    for (std::size_t f : {38u, 39u, 40u, 41u}) {
      const Homography t = truth(static_cast<int>(f));
      before += std::pow(worstCorner(result.frames[f].h, t), 2);
      after += std::pow(worstCorner(smoothed.frames[f].h, t), 2);
    }
  }
  EXPECT_LT(after, 0.8 * before);
}

// Corners come and go behind the horizon: nothing moves there, and what moves stays finite.
TEST(Smooth, MovesNoFrameWithACornerBehindTheHorizon) {
  made::Random random(2);
  const auto tilting = [](int f) {
    return Homography{{{1, 0, 0}, {0, 1, 0}, {-1.6e-5 * f, 0, 1}}};
  };
  ShotResult result = made::result(tilting, 0, 79, 0);
  for (FrameResult& frame : result.frames) {
    const double shift = random.noise(0.3);
    frame.h[0][2] += frame.frame > 0 ? shift : 0.0;
  }
  smooth(result, kNoBudget, kNone);
  int moved = 0;
  for (const FrameResult& frame : result.frames) {
    const bool hidden = 1.6e-5 * frame.frame * 900 >= 1.0;
    EXPECT_FALSE(hidden && frame.untouched) << frame.frame;
    EXPECT_TRUE(isFinite(frame.h));
    moved += frame.untouched != nullptr;
  }
  EXPECT_GT(moved, 50);
}

// Twelve tracks with noise of half a pixel.
TEST(Smooth, BringsASolvedShotNearerToTheTruth) {
  made::Late what;
  what.fromTheStart = 12;
  what.later = 0;
  what.frames = 60;
  for (std::uint32_t seed = 1; seed <= 3; ++seed) {
    const made::KnownShot shot = made::late(what, seed);
    SolveOptions options;
    options.base = 0;
    ShotResult result = solveShot(shot.tracks, options);
    const auto truth = [&](int f) { return shot.truth(0, f); };
    const Figures before = figuresOf(result, truth);
    smooth(result, kNoBudget, kNone);
    const Figures after = figuresOf(result, truth);
    EXPECT_LT(after.jitter, 0.6 * before.jitter) << seed;
    EXPECT_LT(after.error, before.error) << seed;
  }
}
