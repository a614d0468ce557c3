// SPDX-License-Identifier: BSD-3-Clause
#include "shot/time/left_out.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/shot/time/made_result.h"

using namespace cornerpin;

namespace {

// Corners that move along parabolas: x by t^2 / 4.
Homography speeding(double t) { return {{{1, 0, 0.25 * t * t}, {0, 1, 2 * t}, {0, 0, 1}}}; }

std::vector<double> times(const std::vector<TimedTransform>& ends) {
  std::vector<double> all;
  for (const TimedTransform& end : ends) all.push_back(end.frame);
  return all;
}

}  // namespace

TEST(IsAnchor, WantsATransformOfItsOwnThatMayBeRight) {
  FrameResult frame = made::frame(3, kIdentity, Status::Solved, 0.5);
  EXPECT_TRUE(isAnchor(frame));
  for (DoubtCode mild :
       {DoubtCode::ExpectedError, DoubtCode::NoFigures, DoubtCode::NothingToCheck}) {
    frame.doubts = {{mild, ""}};
    EXPECT_TRUE(isAnchor(frame));
  }
  for (DoubtCode grave :
       {DoubtCode::ChanceAgreement, DoubtCode::BudgetSpent, DoubtCode::Rival, DoubtCode::Jump}) {
    frame.doubts = {{DoubtCode::NothingToCheck, ""}, {grave, ""}};
    EXPECT_FALSE(isAnchor(frame));
  }
  frame.doubts.clear();
  frame.verdict.status = Status::Base;
  EXPECT_TRUE(isAnchor(frame));
  for (Status status : {Status::Reduced, Status::Held}) {
    frame.verdict.status = status;
    EXPECT_FALSE(isAnchor(frame));
  }
}

// Four frames to bridge, 14 to 17: the outer frames are three off.
TEST(BridgeEnds, AreNextToTheStretchAndHalfItsLengthOff) {
  ShotResult result = made::result(speeding, 4, 27, 4);
  for (std::size_t i = 10; i < 14; ++i) result.frames[i].verdict.status = Status::Held;
  EXPECT_EQ(times(bridgeEnds(result, 9, 4, Bridge::Line)), (std::vector<double>{13, 18}));
  EXPECT_EQ(times(bridgeEnds(result, 9, 4, Bridge::Cubic)), (std::vector<double>{10, 13, 18, 21}));
  EXPECT_EQ(bridgeEnds(result, 9, 4, Bridge::Cubic)[3].h, speeding(21));
  result.frames[16].verdict.status = Status::Reduced;  // frame 20, before the outer one
  EXPECT_TRUE(bridgeEnds(result, 9, 4, Bridge::Cubic).empty());
  EXPECT_EQ(bridgeEnds(result, 9, 4, Bridge::Line).size(), 2u);
}

TEST(BridgeEnds, LieInTheShot) {
  const ShotResult result = made::result(speeding, 0, 9, 0);
  EXPECT_EQ(bridgeEnds(result, 2, 2, Bridge::Cubic).size(), 4u);
  EXPECT_TRUE(bridgeEnds(result, 1, 2, Bridge::Cubic).empty());
  EXPECT_EQ(bridgeEnds(result, 4, 2, Bridge::Cubic).size(), 4u);
  EXPECT_TRUE(bridgeEnds(result, 5, 2, Bridge::Cubic).empty());
  EXPECT_EQ(bridgeEnds(result, 6, 2, Bridge::Line).size(), 2u);
  EXPECT_TRUE(bridgeEnds(result, 7, 2, Bridge::Line).empty());
}

// A chord over t^2 / 4 from -2 to 2 misses the three places between by 3/4, 1 and 3/4; a cubic
// misses none.
TEST(MissesOf, AreThoseOfStretchesLeftOut) {
  const ShotResult result = made::result(speeding, 0, 30, 0);
  const auto line = missesOf(result, 3, Bridge::Line);
  ASSERT_TRUE(line);
  ASSERT_EQ(line->squares.size(), 3u);
  for (double square : line->squares[0][0]) EXPECT_NEAR(square, 0.5625, 1e-9);
  for (double square : line->squares[1][0]) EXPECT_NEAR(square, 1.0, 1e-9);
  for (double square : line->squares[2][0]) EXPECT_NEAR(square, 0.5625, 1e-9);
  EXPECT_NEAR(line->total, 4.0 * (1.0 + 2.0 * 0.5625), 1e-8);
  const auto cubic = missesOf(result, 3, Bridge::Cubic);
  ASSERT_TRUE(cubic);
  EXPECT_LT(cubic->total, 1e-12);
}

// The variances are 0.25; nine of the stretches of three do not overlap.
TEST(MissesOf, TellMotionFromTheFramesOwnErrors) {
  ShotResult result = made::result(speeding, 0, 30, 0);
  const auto line = missesOf(result, 3, Bridge::Line);
  ASSERT_TRUE(line);
  for (double square : line->motion[0][0]) EXPECT_NEAR(square, 0.3125 * 11.0 / 9.0, 1e-9);
  for (double square : line->motion[1][0]) EXPECT_NEAR(square, 0.75 * 11.0 / 9.0, 1e-9);
  const auto cubic = missesOf(result, 3, Bridge::Cubic);
  ASSERT_TRUE(cubic);
  for (double square : cubic->motion[1][0]) EXPECT_EQ(square, 0.0);
  for (FrameResult& frame : result.frames) frame.figures.quads[0][2].xx = std::nan("");
  const auto blind = missesOf(result, 3, Bridge::Line);
  ASSERT_TRUE(blind);
  EXPECT_NEAR(blind->motion[1][0][2], 11.0 / 9.0, 1e-9);
}

TEST(MissesOf, AreAboutEveryQuad) {
  ShotResult result = made::result(made::swaying, 0, 40, 0);
  result.quads.push_back({"small", {{{450, 250}, {550, 250}, {550, 350}, {450, 350}}}});
  for (FrameResult& frame : result.frames) frame.figures.quads.push_back(frame.figures.quads[0]);
  const auto misses = missesOf(result, 9, Bridge::Line);
  ASSERT_TRUE(misses);
  ASSERT_EQ(misses->squares[4].size(), 2u);
  EXPECT_GT(misses->squares[4][1][0], 0.0);
  EXPECT_NE(misses->squares[4][1][0], misses->squares[4][0][0]);
}

// Stretches of four frames and their two ends: three fit into eight frames, two into seven.
TEST(MissesOf, WantThreeStretches) {
  EXPECT_TRUE(missesOf(made::result(speeding, 0, 7, 0), 4, Bridge::Line));
  EXPECT_FALSE(missesOf(made::result(speeding, 0, 6, 0), 4, Bridge::Line));
  ShotResult broken = made::result(speeding, 0, 12, 0);
  broken.frames[6].verdict.status = Status::Held;
  EXPECT_FALSE(missesOf(broken, 4, Bridge::Line));
  EXPECT_TRUE(missesOf(broken, 3, Bridge::Line));
}
