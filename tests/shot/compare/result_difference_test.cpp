// SPDX-License-Identifier: BSD-3-Clause
#include "shot/compare/result_difference.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/shot/compare/two_results.h"

using namespace cornerpin;

TEST(ResultDifference, IsNoneOfAResultAndItself) {
  const ShotResult shot = steadyShot(0, 9, 4);
  const ResultDifference difference = differenceOf(shot, shot);
  EXPECT_FALSE(difference.any());
  EXPECT_EQ(difference.frames.size(), 10u);
  EXPECT_EQ(difference.worst()->distance, 0.0);
}

// Scaled by 1.03 in x, a corner at x = 100 moves by 3 pixels and one at 0 not at all; moved down by
// 4 besides, one by 5 and the other by 4.
TEST(ResultDifference, IsWhereTheCornersOfTheQuadsAre) {
  const ShotResult first = steadyShot(0, 9, 4);
  ShotResult second = first;
  second.frames[2].h[0][0] = 1.03;
  second.frames[7].h[0][0] = 1.03;
  second.frames[7].h[1][2] = 4.0;
  const ResultDifference difference = differenceOf(first, second);
  EXPECT_NEAR(difference.frames[2].distance, 3.0, 1e-12);
  EXPECT_NEAR(difference.frames[7].distance, 5.0, 1e-12);
  EXPECT_EQ(difference.worst()->frame, 7);
  EXPECT_EQ(difference.worst()->corner, 1u);
  EXPECT_EQ(difference.framesBeyond(0.0), (std::vector<int>{2, 7}));
  EXPECT_EQ(difference.framesBeyond(4.0), (std::vector<int>{7}));
  EXPECT_TRUE(difference.any());
}

TEST(ResultDifference, HasNoMeasureWhereOnlyOneIsInFrontOfTheHorizon) {
  const ShotResult first = steadyShot(0, 9, 4);
  ShotResult second = first;
  second.frames[3].h[2][0] = -0.015;  // 1 - 0.015 x: the horizon is at x = 66.7
  const ResultDifference difference = differenceOf(first, second);
  EXPECT_EQ(difference.worst()->frame, 3);
  EXPECT_TRUE(std::isinf(difference.worst()->distance));
}

TEST(ResultDifference, ComparesTheFramesThatBothHave) {
  const ResultDifference difference = differenceOf(steadyShot(0, 9, 4), steadyShot(3, 11, 4));
  EXPECT_EQ(difference.otherFrames.first, (std::vector<int>{0, 1, 2}));
  EXPECT_EQ(difference.otherFrames.second, (std::vector<int>{10, 11}));
  ASSERT_EQ(difference.frames.size(), 7u);
  EXPECT_EQ(difference.frames.front().frame, 3);
  EXPECT_EQ(difference.worst()->distance, 0.0);
}

TEST(ResultDifference, NamesTracksOptionsAndOriginsOfOneOnly) {
  ShotResult first = steadyShot(0, 9, 4);
  ShotResult second = first;
  first.tracks.resize(2);
  first.tracks[0].name = "a";
  first.tracks[1].name = "b";
  second.tracks.resize(1);
  second.tracks[0].name = "b";
  second.loss = Loss::Huber;
  second.provenance.input = {{"other.csv", "12", "csv", 3}};
  second.provenance.program = {{"cornerpin", "9", ""}};
  const ResultDifference difference = differenceOf(first, second);
  EXPECT_EQ(difference.otherTracks.first, (std::vector<std::string>{"a"}));
  EXPECT_TRUE(difference.otherTracks.second.empty());
  EXPECT_TRUE(difference.otherOptions.first.empty());
  EXPECT_EQ(textOf(difference.otherOptions.second), "--loss huber");
  EXPECT_TRUE(difference.input);
  EXPECT_TRUE(difference.program);
}

// The same surface seen from frame 6: its quad stands two pixels further right.
TEST(ResultDifference, IsTakenRelativeToOneFrame) {
  ShotResult second = steadyShot(0, 9, 6);
  for (Point& corner : second.quads[0].corners) corner.x += 2.0;
  second.baseCentre.x += 2.0;
  second.frames[1].h[1][2] = 0.5;
  const ResultDifference difference = differenceOf(steadyShot(0, 9, 4), second);
  EXPECT_EQ(difference.comparedIn, 4);
  EXPECT_FALSE(difference.quads);
  EXPECT_EQ(difference.framesBeyond(0.0), (std::vector<int>{1}));
  EXPECT_NEAR(difference.worst()->distance, 0.5, 1e-12);
  EXPECT_EQ(difference.secondReference, 6);
  EXPECT_EQ(difference.secondBase, 6);
  EXPECT_FALSE(difference.frames[4].status);
}

TEST(ResultDifference, TakesTheOtherReferenceWhereOneIsHeldAndNoneWhereBothAre) {
  ShotResult first = steadyShot(0, 9, 4);
  ShotResult second = steadyShot(0, 9, 6);
  second.frames[4].verdict.status = Status::Held;
  EXPECT_EQ(differenceOf(first, second).comparedIn, 6);
  first.frames[6].verdict.status = Status::Held;
  const ResultDifference difference = differenceOf(first, second);
  EXPECT_FALSE(difference.comparedIn);
  EXPECT_EQ(difference.why, "frame 4 cannot be the reference: it was held: take another one");
  EXPECT_TRUE(difference.any());
}

TEST(ResultDifference, SeesTheLastBitAStatusAndADoubt) {
  const ShotResult first = steadyShot(0, 9, 4);
  ShotResult second = first;
  second.frames[0].h[2][1] = 0x1p-1000;
  second.frames[1].verdict.status = Status::Reduced;
  second.frames[2].doubts = {{DoubtCode::Jump, "jumps"}};
  const ResultDifference difference = differenceOf(first, second);
  EXPECT_TRUE(difference.any());
  EXPECT_TRUE(difference.frames[0].transform);
  EXPECT_TRUE(difference.frames[1].status);
  EXPECT_TRUE(difference.frames[2].verdict);
  EXPECT_EQ(difference.worst()->distance, 0.0);
}
