// SPDX-License-Identifier: BSD-3-Clause
#include "shot/time/fill.h"

#include <gtest/gtest.h>

#include <cmath>

#include "shot/time/left_out.h"
#include "tests/shot/table_random.h"
#include "tests/shot/time/made_result.h"

using namespace cornerpin;
using made::worstCorner;

namespace {

const Homography kWrong = {{{2, 0, 77}, {0, 2, 0}, {0, 0, 1}}};

void lose(ShotResult& result, int first, int last, Status status = Status::Held) {
  for (FrameResult& frame : result.frames) {
    if (frame.frame < first || frame.frame > last) continue;
    frame.verdict.status = status;
    frame.h = kWrong;
    const double half = status == Status::Reduced ? 1e6 : kNoFigure;
    frame.figures.quads[0].fill({half, 0.0, half});
    frame.doubts = {{status == Status::Held ? DoubtCode::Held : DoubtCode::Reduced, ""}};
  }
}

const FrameResult& at(const ShotResult& result, int frame) {
  return result.frames[static_cast<std::size_t>(frame - result.frames.front().frame)];
}

}  // namespace

TEST(Fill, MeetsAMotionThatIsSmooth) {
  ShotResult result = made::result(made::swaying, -5, 80, 0);
  lose(result, 20, 29);
  lose(result, 50, 52, Status::Reduced);
  fill(result);
  EXPECT_TRUE(result.fill);
  for (const FrameResult& frame : result.frames) {
    const bool lost =
        (frame.frame >= 20 && frame.frame <= 29) || (frame.frame >= 50 && frame.frame <= 52);
    EXPECT_EQ(frame.filled, lost) << frame.frame;
    EXPECT_EQ(frame.untouched != nullptr, lost);
    if (!lost) continue;
    EXPECT_LT(worstCorner(frame.h, made::swaying(frame.frame)), 1.0) << frame.frame;
    EXPECT_EQ(frame.untouched->h, kWrong);
    EXPECT_EQ(frame.doubts.size(), 1u);
    EXPECT_EQ(frame.h[2][2], 1.0);
  }
  EXPECT_EQ(at(result, 25).verdict.status, Status::Held);
  EXPECT_EQ(at(result, 51).verdict.status, Status::Reduced);
}

TEST(Fill, LeavesTheEndsOfAShot) {
  ShotResult result = made::result(made::swaying, 0, 40, 20);
  lose(result, 0, 3);
  lose(result, 38, 40);
  fill(result);
  for (const FrameResult& frame : result.frames) EXPECT_FALSE(frame.filled) << frame.frame;
  EXPECT_EQ(at(result, 39).h, kWrong);
}

// In frames 30 to 33 the corners wait at one place: a cubic swings across, and a line does not.
// In one of three reduced frames a corner is 50 px from where its neighbours put it.
TEST(Fill, LeavesAStretchInWhichTheCameraDidSomething) {
  for (double variance : {100.0, 10000.0}) {
    ShotResult result = made::result(made::swaying, 0, 60, 0);
    lose(result, 30, 32, Status::Reduced);
    lose(result, 45, 46);
    for (int f : {30, 31, 32}) {
      FrameResult& frame = result.frames[static_cast<std::size_t>(f)];
      frame.h = made::swaying(f);
      frame.figures.quads[0].fill({0.5 * variance, 0.0, 0.5 * variance});
    }
    result.frames[31].h[0][2] += 50.0;  // 5 deviations, or half a one
    const Homography before = at(result, 30).h;
    fill(result);
    for (int f : {30, 31, 32}) {
      EXPECT_EQ(at(result, f).filled, variance > 100.0) << f;
      EXPECT_EQ(at(result, f).untouched != nullptr, variance > 100.0) << f;
    }
    if (variance == 100.0) {
      EXPECT_EQ(at(result, 30).h, before);
    }
    EXPECT_TRUE(at(result, 45).filled);
  }
}

TEST(Fill, GoesStraightWhereALineMissesLess) {
  const auto stepping = [](double t) {
    const double x = 40.0 * std::floor(t / 2.0);
    return Homography{{{1, 0, x}, {0, 1, std::fmod(t, 4.0) < 2 ? 0.0 : 60.0}, {0, 0, 1}}};
  };
  ShotResult result = made::result(stepping, 0, 60, 0);
  lose(result, 30, 31);
  ASSERT_LT(missesOf(result, 2, Bridge::Line)->total, missesOf(result, 2, Bridge::Cubic)->total);
  fill(result);
  const Homography before = stepping(29);
  const Homography after = stepping(32);
  EXPECT_NEAR(at(result, 30).h[0][2], before[0][2] + (after[0][2] - before[0][2]) / 3.0, 1e-9);
  EXPECT_NEAR(at(result, 31).h[1][2], before[1][2] + (after[1][2] - before[1][2]) / 1.5, 1e-9);
}

TEST(Fill, GoesStraightWhereTheOuterFramesAreMissing) {
  ShotResult result = made::result(made::swaying, 0, 60, 0);
  lose(result, 2, 5);  // the outer frame would be -2
  fill(result);
  const auto line = transformBetween({{1, made::swaying(1)}, {6, made::swaying(6)}}, 3, made::kQuad,
                                     result.baseCentre);
  EXPECT_LT(worstCorner(at(result, 3).h, *line), 1e-12);
}

// What a cubic is expected to miss here is some 0.5 px, and the ends are off by as much.
TEST(Fill, LeavesAFrameThatKnowsItsPlaceBetter) {
  ShotResult result = made::result(made::swaying, 0, 60, 0);
  lose(result, 30, 33, Status::Reduced);
  for (int f : {31, 32}) {
    FrameResult& frame = result.frames[static_cast<std::size_t>(f)];
    frame.h = made::swaying(f);
    frame.figures.quads[0].fill({0.005, 0.0, 0.005});
  }
  const ShotResult before = result;
  fill(result);
  for (int f = 30; f <= 33; ++f) {
    const bool known = f == 31 || f == 32;
    EXPECT_EQ(at(result, f).filled, !known) << f;
    EXPECT_EQ(at(result, f).untouched != nullptr, !known) << f;
    if (known) {
      EXPECT_EQ(at(result, f).h, at(before, f).h) << f;
    }
  }
}

// One corner of the second quad is less certain than it would be, and it is the worst one.
TEST(Fill, ComparesTheWorstCornersOfAllQuads) {
  for (double variance : {1e-4, 100.0}) {
    ShotResult result = made::result(made::swaying, 0, 60, 0);
    result.quads.push_back({"small", {{{450, 250}, {550, 250}, {550, 350}, {450, 350}}}});
    for (FrameResult& frame : result.frames) {
      frame.figures.quads.push_back(frame.figures.quads[0]);
    }
    FrameResult& frame = result.frames[30];
    frame.verdict.status = Status::Reduced;
    for (auto& quad : frame.figures.quads) quad.fill({1e-4, 0.0, 1e-4});
    frame.figures.quads[1][2] = {variance, 0.0, variance};
    fill(result);
    EXPECT_EQ(result.frames[30].filled, variance > 1.0);
  }
}

// The base frame's error shifts all frames alike, each frame's own error shifts that one. Of a
// round error two deviations hold 98.2 %.
TEST(Fill, IsRightlyUncertain) {
  int within = 0;
  constexpr int kShots = 200;
  for (unsigned seed = 1; seed <= kShots; ++seed) {
    made::TableRandom random(seed);
    const double x = random.normal();
    const double y = random.normal();
    ShotResult result = made::result(made::swaying, 0, 99, 0, 2.0);
    for (std::size_t f = 1; f < result.frames.size(); ++f) {
      const double dx = random.normal();
      const double dy = random.normal();
      const Homography shift = {{{1, 0, x + dx}, {0, 1, y + dy}, {0, 0, 1}}};
      result.frames[f].h = product(shift, result.frames[f].h);
    }
    lose(result, 50, 53);
    fill(result);
    const FrameResult& frame = at(result, 51);
    const Point miss = map(frame.h, made::kQuad[0]);
    const double square = squaredDistance(miss, map(made::swaying(51), made::kQuad[0]));
    within += square <= 4.0 * frame.figures.quads[0][0].trace();
  }
  EXPECT_GE(within, kShots * 95 / 100);
  EXPECT_LE(within, kShots - 1);
}

// The deviation squared is that of the worse end, plus what left-out stretches were missed by.
// Deviations of a hundredth of a pixel leave these to motion.
TEST(Fill, KnowsHowFarItMayBeOff) {
  ShotResult result = made::result(made::swaying, 0, 60, 0, 0.01);
  lose(result, 30, 33);
  for (Symmetric2& c : result.frames[34].figures.quads[0]) c = {4.0, 1.0, 5.0};
  const auto misses = missesOf(result, 4, Bridge::Cubic);
  ASSERT_TRUE(misses);
  ASSERT_GT(misses->motion[1][0][0], 0.0);
  fill(result);
  for (std::size_t k = 0; k < 4; ++k) {
    const FrameResult& frame = result.frames[30 + k];
    for (std::size_t i = 0; i < 4; ++i) {
      const Symmetric2& c = frame.figures.quads[0][i];
      EXPECT_NEAR(c.trace(), 9.0 + misses->motion[k][0][i], 1e-12);
      EXPECT_EQ(c.xx, c.yy);
    }
    EXPECT_TRUE(std::isnan(frame.untouched->quads[0][0].xx));
  }
}

TEST(Fill, HasNoFiguresWhereNothingTellsThem) {
  ShotResult few = made::result(made::swaying, 0, 12, 0);
  lose(few, 4, 8);
  fill(few);
  EXPECT_TRUE(at(few, 6).filled);
  EXPECT_TRUE(std::isnan(at(few, 6).figures.deviations()[0]));
  ShotResult blind = made::result(made::swaying, 0, 60, 0);
  lose(blind, 30, 33);
  blind.frames[29].figures.quads[0][2].xx = std::nan("");
  fill(blind);
  EXPECT_TRUE(std::isnan(at(blind, 31).figures.deviations()[2]));
  EXPECT_FALSE(std::isnan(at(blind, 31).figures.deviations()[1]));
}

// Frame 34 is solved, but may be wrong altogether: it stays, and the frames before it are filled
// in from beyond.
TEST(Fill, GoesByNoFrameThatMayBeWrong) {
  ShotResult result = made::result(made::swaying, 0, 60, 0);
  lose(result, 30, 33);
  result.frames[34].h = kWrong;
  result.frames[34].doubts = {{DoubtCode::Jump, ""}};
  fill(result);
  EXPECT_EQ(result.frames[34].h, kWrong);
  EXPECT_FALSE(result.frames[34].filled);
  for (int f = 30; f <= 33; ++f) EXPECT_LT(worstCorner(at(result, f).h, made::swaying(f)), 1.0);
}
