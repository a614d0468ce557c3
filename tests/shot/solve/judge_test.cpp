// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/judge.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <utility>

#include "shot/solve/jumps.h"
#include "shot/solve/rebase.h"
#include "shot/solve/shot_solver.h"
#include "tests/shot/solve/small_shots.h"

using namespace cornerpin;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// Of corners 0 to 3 along x, in both quads' turn.
FrameResult frame(int number, Status status, std::array<double, 4> deviations) {
  FrameResult f;
  f.frame = number;
  f.h = kIdentity;
  f.verdict.status = status;
  f.verdict.model = status == Status::Solved ? Model::Projective : Model::Held;
  f.tracks = f.good = 20;
  f.figures.quads.resize(1);
  for (std::size_t i = 0; i < 4; ++i) f.figures.quads[0][i].xx = deviations[i] * deviations[i];
  return f;
}

// A base frame and a solved one, with a limit of 5.
ShotResult twoGood() {
  ShotResult result;
  result.loss = Loss::Tukey;
  result.maxError = 5.0;
  result.baseCentre = {50, 50};
  result.quads = {{"a", {{{0, 0}, {100, 0}, {100, 100}, {0, 100}}}}};
  result.frames = {frame(0, Status::Base, {0, 0, 0, 0}), frame(1, Status::Solved, {1, 4, 2, 3})};
  return result;
}

// The doubts of the second frame: "code: text", a line each.
std::string doubtsIn(ShotResult result) {
  judge(result);
  std::string text;
  for (const Doubt& doubt : result.frames[1].doubts) {
    text += std::string(nameOf(doubt.code)) + ": " + doubt.text + "\n";
  }
  return text;
}

}  // namespace

TEST(Judge, FindsNothingInGoodFrames) {
  ShotResult result = twoGood();
  result.frames[1].doubts = {{DoubtCode::Jump, "of an earlier time"}};
  judge(result);
  EXPECT_EQ(doubtsIn(result), "");
  EXPECT_TRUE(result.frames[0].doubts.empty());
  EXPECT_EQ(result.frames[0].expectedError, 0.0);
  EXPECT_EQ(result.frames[1].expectedError, 4.0);
}

TEST(Judge, DoubtsFramesWithACornerAboveTheLimit) {
  ShotResult result = twoGood();
  result.maxError = 4.0;
  EXPECT_EQ(doubtsIn(result), "");
  result.maxError = 3.75;
  EXPECT_EQ(doubtsIn(result),
            "expected-error: the top right corner may be 4 px off, the limit is 3.75 px\n");
}

TEST(Judge, NamesCornersAsThePictureShowsThem) {
  ShotResult result = twoGood();
  result.maxError = 3.75;
  result.provenance.picture.y = YAxis::Up;
  EXPECT_EQ(doubtsIn(result),
            "expected-error: the bottom right corner may be 4 px off, the limit is 3.75 px\n");
}

TEST(Judge, TakesTheWorstCornerOfAllQuads) {
  ShotResult result = twoGood();
  result.quads.push_back({"sign", {{{10, 10}, {20, 10}, {20, 20}, {10, 20}}}});
  for (FrameResult& f : result.frames) f.figures.quads.emplace_back();
  result.frames[1].figures.quads[1][3] = {1000.0 * 1000.0, 0.0, 0.0};
  EXPECT_EQ(
      doubtsIn(result),
      "expected-error: the bottom left corner of \"sign\" may be 1000 px off, the limit is 5 px\n");
  judge(result);
  EXPECT_EQ(result.frames[1].expectedError, 1000.0);
}

TEST(Judge, DoubtsFramesWithoutAFigure) {
  ShotResult result = twoGood();
  result.frames[1] = frame(1, Status::Solved, {1, 2, kNaN, HUGE_VAL});
  EXPECT_EQ(doubtsIn(result),
            "no-figures: nothing tells how far the bottom right corner may be off\n");
  judge(result);
  EXPECT_TRUE(std::isnan(result.frames[1].expectedError));
  result.frames[1].figures.quads[0][0].xx = 36.0;
  EXPECT_EQ(doubtsIn(result),
            "expected-error: the top left corner may be 6 px off, the limit is 5 px\n"
            "no-figures: nothing tells how far the bottom right corner may be off\n");
  result.frames[1] = frame(1, Status::Solved, {kNaN, kNaN, kNaN, kNaN});
  EXPECT_EQ(doubtsIn(result), "no-figures: nothing tells how far the top left corner may be off\n");
}

// The horizon is at x = 80.
TEST(Judge, DoubtsFramesWithACornerBehindTheHorizon) {
  ShotResult result = twoGood();
  result.frames[1] = frame(1, Status::Solved, {1, kNaN, kNaN, 1});
  result.frames[1].h[2][0] = -1.0 / 80.0;
  EXPECT_EQ(doubtsIn(result), "no-figures: the top right corner lies on or behind the horizon\n");
}

TEST(Judge, KnowsNoExpectedErrorsWithoutALimit) {
  ShotResult result = twoGood();
  result.maxError = kNaN;
  EXPECT_EQ(doubtsIn(result), "");
}

TEST(Judge, DoubtsFramesOfFewerThanSixTracks) {
  ShotResult result = twoGood();
  FrameResult& f = result.frames[1];
  f.tracks = f.good = 6;
  EXPECT_EQ(doubtsIn(result), "");
  f.tracks = f.good = 5;
  const std::string five = "nothing-to-check: 5 tracks: too few to check them against each other\n";
  EXPECT_EQ(doubtsIn(result), five);
  f.tracks = 12;
  EXPECT_EQ(doubtsIn(result),
            "nothing-to-check: only 5 of 12 tracks agree: too few to check them against each "
            "other\n");
  // Nobody asked which of them agree.
  result.loss = Loss::None;
  EXPECT_EQ(doubtsIn(result), "");
  f.tracks = 5;
  EXPECT_EQ(doubtsIn(result), five);
}

TEST(Judge, DoubtsWhatChanceBringsInMoreThanOnePictureInAMillion) {
  ShotResult result = twoGood();
  Origin& origin = result.frames[1].verdict.origin;
  origin.chance = -6.0;
  EXPECT_EQ(doubtsIn(result), "");
  origin.chance = -3.0;
  EXPECT_EQ(doubtsIn(result),
            "chance: chance makes as many tracks agree as closely in one of 1000 pictures\n");
  for (double often : {0.0, 4.0}) {
    origin.chance = often;
    EXPECT_EQ(doubtsIn(result),
              "chance: chance makes as many tracks agree as closely in any "
              "picture\n");
  }
}

TEST(Judge, DoubtsASearchThatEndedAtItsLimit) {
  ShotResult result = twoGood();
  result.frames[1].verdict.origin.budgetSpent = true;
  EXPECT_EQ(doubtsIn(result),
            "budget: the search ended at its limit: it may have missed a transform that fits more "
            "tracks\n");
}

TEST(Judge, DoubtsATransformThatHasARival) {
  ShotResult result = twoGood();
  result.frames[1].verdict.origin.rivalled = true;
  EXPECT_EQ(doubtsIn(result), "rival: other tracks agree on another transform about as well\n");
}

TEST(Judge, DoubtsReducedAndHeldFramesForTheirReasons) {
  ShotResult result = twoGood();
  FrameResult& f = result.frames[1];
  f.tracks = 3;
  f.good = 0;
  f.verdict.status = Status::Reduced;
  f.verdict.model = Model::Affine;
  f.texts = std::make_shared<FrameTexts>(FrameTexts{"", "3 of the 4 tracks needed"});
  EXPECT_EQ(doubtsIn(result), "reduced: affine: 3 of the 4 tracks needed\n");
  f.verdict.status = Status::Held;
  f.texts = std::make_shared<FrameTexts>(FrameTexts{"", "no tracks"});
  EXPECT_EQ(doubtsIn(result), "held: its neighbour's transform: no tracks\n");
  f.texts.reset();
  EXPECT_EQ(doubtsIn(result), "held: its neighbour's transform\n");
}

TEST(Judge, NeverDoubtsTheTracksOfTheBaseFrame) {
  ShotResult result = twoGood();
  result.frames[0].tracks = 4;
  result.frames[0].good = 0;
  judge(result);
  EXPECT_TRUE(result.frames[0].doubts.empty());
}

// Its transform is given; what is off is the picture.
TEST(Judge, NeverDoubtsABaseFrameThatJumps) {
  ShotResult result = twoGood();
  result.frames.clear();
  for (int f = 0; f < 20; ++f) {
    result.frames.push_back(
        frame(f, f == 10 ? Status::Base : Status::Solved, {0.1, 0.1, 0.1, 0.1}));
  }
  result.frames[10].h[0][2] = 5.0;
  EXPECT_NEAR(jumpsOf(result)[10], 5.0, 1e-9);
  judge(result);
  for (const FrameResult& f : result.frames) EXPECT_TRUE(f.doubts.empty()) << f.frame;
  std::swap(result.frames[10].verdict, result.frames[11].verdict);
  judge(result);
  ASSERT_EQ(result.frames[10].doubts.size(), 1u);
  EXPECT_EQ(result.frames[10].doubts[0].text,
            "a corner is 5 px from where the frames around it put it");
}

// Relative to frame 1 the base frame is off as far as frame 1 was.
TEST(JudgeFigures, FollowsTheReferenceFrameAndKeepsOtherDoubts) {
  ShotResult result = twoGood();
  result.maxError = 3.5;
  result.frames[1].doubts = {{DoubtCode::ExpectedError, "old"},
                             {DoubtCode::ChanceAgreement, "kept"},
                             {DoubtCode::NoFigures, "old"},
                             {DoubtCode::Jump, "kept too"}};
  ShotResult same = result;
  judgeFigures(same);
  ASSERT_EQ(same.frames[1].doubts.size(), 3u);
  EXPECT_EQ(same.frames[1].doubts[0].text,
            "the top right corner may be 4 px off, the limit is 3.5 px");
  EXPECT_EQ(same.frames[1].doubts[1].text, "kept");
  EXPECT_EQ(same.frames[1].doubts[2].text, "kept too");
  rebase(result, 1);
  EXPECT_EQ(result.frames[0].expectedError, 4.0);
  ASSERT_EQ(result.frames[0].doubts.size(), 1u);
  EXPECT_EQ(result.frames[0].doubts[0].code, DoubtCode::ExpectedError);
  EXPECT_EQ(result.frames[1].expectedError, 0.0);
  ASSERT_EQ(result.frames[1].doubts.size(), 2u);
  EXPECT_EQ(result.frames[1].doubts[0].text, "kept");
}

// Five tracks over 410 x 320: the limit is 0.5 % of 410 unless it is given.
TEST(SolveShot, JudgesItsFramesByALimit) {
  Tracks tracks = small_shots::movingShot(4);
  SolveOptions options = small_shots::based(1);
  const ShotResult result = solveShot(tracks, options);
  EXPECT_NEAR(result.maxError, 0.005 * (500 + 0.01 * 120 + 3 - 90), 0.05);
  EXPECT_EQ(result.frames[1].doubts.size(), 0u);
  EXPECT_EQ(result.frames[1].expectedError, 0.0);
  ASSERT_EQ(result.frames[2].doubts.size(), 1u);
  EXPECT_EQ(result.frames[2].doubts[0].code, DoubtCode::NothingToCheck);
  options.maxError = 1e-12;
  const ShotResult strict = solveShot(tracks, options);
  EXPECT_EQ(strict.maxError, 1e-12);
  ASSERT_EQ(strict.frames[2].doubts.size(), 2u);
  EXPECT_EQ(strict.frames[2].doubts[0].code, DoubtCode::ExpectedError);
  EXPECT_EQ(strict.frames[2].h, result.frames[2].h);
}

TEST(SolveShot, DoubtsEveryFrameOfFourTracks) {
  Tracks tracks;
  for (int f = 0; f < 3; ++f) small_shots::seeAll(tracks, f, 4);
  for (Loss loss : {Loss::None, Loss::Tukey}) {
    SolveOptions options = small_shots::based(0);
    options.loss = loss;
    const ShotResult result = solveShot(tracks, options);
    EXPECT_TRUE(result.frames[0].doubts.empty());
    for (std::size_t f : {1u, 2u}) {
      ASSERT_EQ(result.frames[f].doubts.size(), 2u);
      EXPECT_EQ(result.frames[f].doubts[0].code, DoubtCode::NoFigures);
      EXPECT_EQ(result.frames[f].doubts[1].code, DoubtCode::NothingToCheck);
    }
  }
}
