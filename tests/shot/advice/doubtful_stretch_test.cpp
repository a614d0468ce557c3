// SPDX-License-Identifier: BSD-3-Clause
#include "shot/advice/doubtful_stretch.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace cornerpin;

namespace {

// From frame 100 on, with doubtful ones by their index.
ShotResult shotWith(std::size_t frames, const std::vector<std::size_t>& doubtful) {
  ShotResult result;
  result.quads = {{"a", {}}, {"b", {}}};
  for (std::size_t i = 0; i < frames; ++i) {
    FrameResult frame;
    frame.frame = 100 + static_cast<int>(i);
    frame.expectedError = 1.0;
    frame.figures.quads.resize(2);
    result.frames.push_back(frame);
  }
  for (std::size_t i : doubtful) result.frames[i].doubts = {{DoubtCode::Jump, "jumps"}};
  return result;
}

}  // namespace

TEST(DoubtfulStretch, GoesOverThreeGoodFramesAndNoMore) {
  const std::vector<DoubtfulStretch> stretches = doubtfulStretches(shotWith(20, {2, 6, 7, 12}));
  ASSERT_EQ(stretches.size(), 2u);
  EXPECT_EQ(stretches[0].frames.first, 102);
  EXPECT_EQ(stretches[0].frames.last, 107);
  EXPECT_EQ(stretches[0].count, 3u);
  EXPECT_EQ(stretches[1].frames.first, 112);
  EXPECT_EQ(stretches[1].frames.last, 112);
  EXPECT_TRUE(doubtfulStretches(shotWith(5, {})).empty());
}

TEST(DoubtfulStretch, HasTheFrameWithTheLargestErrorForItsWorst) {
  ShotResult result = shotWith(20, {2, 3, 4, 5});
  result.frames[4].expectedError = 3.0;
  result.frames[7].expectedError = 9.0;
  EXPECT_EQ(doubtfulStretches(result).front().worst, 4u);
  result.frames[5].expectedError = std::nan("");
  EXPECT_EQ(doubtfulStretches(result).front().worst, 5u);
}

TEST(DoubtfulStretch, NamesTheCornerThatMayBeFurthestOff) {
  ShotResult result = shotWith(9, {2});
  result.frames[2].figures.quads[0][3] = {4.0, 0.0, 5.0};
  result.frames[2].figures.quads[1][1] = {4.0, 0.0, 6.0};
  EXPECT_EQ(doubtfulStretches(result).front().quad, 1u);
  EXPECT_EQ(doubtfulStretches(result).front().corner, 1u);
  result.frames[2].figures.quads[0][2].xx = std::nan("");
  EXPECT_EQ(doubtfulStretches(result).front().quad, 0u);
  EXPECT_EQ(doubtfulStretches(result).front().corner, 2u);
}

TEST(DoubtfulStretch, IsAmongTheThreeWorstByItsExpectedError) {
  ShotResult result = shotWith(40, {0, 10, 20, 30});
  result.frames[0].expectedError = 2.0;
  result.frames[20].expectedError = std::nan("");
  result.frames[30].expectedError = 4.0;
  const std::vector<DoubtfulStretch> worst = worstStretches(result);
  ASSERT_EQ(worst.size(), 3u);
  EXPECT_EQ(worst[0].frames.first, 120);
  EXPECT_EQ(worst[1].frames.first, 130);
  EXPECT_EQ(worst[2].frames.first, 100);
}

TEST(DoubtfulStretch, IsMadeOfTheDoubtfulFrames) {
  EXPECT_EQ(doubtfulFrames(shotWith(20, {2, 6, 7})), (std::vector<int>{102, 106, 107}));
}
