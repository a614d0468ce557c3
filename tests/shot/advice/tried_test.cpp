// SPDX-License-Identifier: BSD-3-Clause
#include "shot/advice/tried.h"

#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>

using namespace cornerpin;

namespace {

// Frames from 0 whose corners may be off by so much; those beyond the limit of 2 are doubtful.
ShotResult shotOff(std::initializer_list<double> errors) {
  ShotResult result;
  result.maxError = 2.0;
  for (double error : errors) {
    FrameResult frame;
    frame.frame = static_cast<int>(result.frames.size());
    frame.expectedError = error;
    if (!(error <= result.maxError)) frame.doubts = {{DoubtCode::ExpectedError, "far off"}};
    result.frames.push_back(frame);
  }
  return result;
}

void makeDoubtful(ShotResult& result, std::initializer_list<std::size_t> frames) {
  for (std::size_t frame : frames) {
    result.frames[frame].doubts = {{DoubtCode::Jump, "jumps"}};
  }
}

using Helped = std::vector<bool>;

Helped helpedBy(const ShotResult& before, const ShotResult& after) {
  return helped(before, after, doubtfulStretches(before));
}

}  // namespace

TEST(Helped, IsWhatHasHalfTheErrorOrOneBelowTheLimit) {
  const ShotResult before = shotOff({1, 8, 6, 1});
  EXPECT_EQ(helpedBy(before, shotOff({1, 4, 4, 1})), Helped{true});
  EXPECT_EQ(helpedBy(before, shotOff({1, 1, 4.1, 1})), Helped{false});
  EXPECT_EQ(helpedBy(shotOff({1, 3, 1}), shotOff({1, 2, 1})), Helped{true});
  EXPECT_EQ(helpedBy(shotOff({1, 3, 1}), shotOff({1, 2.1, 1})), Helped{false});
  EXPECT_EQ(helpedBy(before, shotOff({1, 4, std::nan(""), 1})), Helped{false});
  EXPECT_EQ(helpedBy(shotOff({1, std::nan(""), 1}), shotOff({1, 100, 1})), Helped{true});
}

TEST(Helped, IsBelowTheLimitWhatHasHalfTheDoubtfulFrames) {
  ShotResult before = shotOff({1, 1, 1, 1, 1});
  makeDoubtful(before, {1, 2, 3, 4});
  ShotResult after = shotOff({1, 1, 1, 1, 1});
  makeDoubtful(after, {2, 3, 4});
  EXPECT_EQ(helpedBy(before, after), Helped{false});
  after.frames[3].doubts.clear();
  EXPECT_EQ(helpedBy(before, after), Helped{true});
}

TEST(Helped, IsNothingWhereAFrameOutsideBecomesDoubtful) {
  const ShotResult before = shotOff({8, 1, 1, 1, 1, 8, 1, 8, 1, 1, 3});
  ASSERT_EQ(doubtfulStretches(before).size(), 2u);
  ShotResult after = shotOff({1, 1, 1, 1, 1, 1, 1, 8, 1, 1, 1});
  EXPECT_EQ(helpedBy(before, after), (Helped{true, false}));
  after = shotOff({1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1});
  makeDoubtful(after, {6});  // between the doubtful ones of a stretch
  EXPECT_EQ(helpedBy(before, after), (Helped{true, true}));
  makeDoubtful(after, {2});
  EXPECT_EQ(helpedBy(before, after), (Helped{false, false}));
}
