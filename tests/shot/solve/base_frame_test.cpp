// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/base_frame.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

#include "tests/shot/solve/small_shots.h"

using namespace cornerpin;
using namespace small_shots;

TEST(ChooseBaseFrame, TakesTheFrameWhoseTracksAreSeenMost) {
  Tracks tracks;
  see(tracks, 0, 0, {});
  see(tracks, 0, 1, {});
  see(tracks, 1, 1, {});
  see(tracks, 1, 2, {}, 0.0f);  // not seen
  see(tracks, 2, 2, {});
  see(tracks, 2, 3, {});
  see(tracks, 2, 4, {});
  EXPECT_EQ(chooseBaseFrame(tracks), 1);  // 2 + 1 observations; frames 2, 3 and 4 have 3 as well
}

TEST(ChooseBaseFrame, TakesTheSmallestOfSeveral) { EXPECT_EQ(chooseBaseFrame(movingShot(4)), 0); }

TEST(SolveShot, RefusesABaseOutsideTheShotOrWithoutTracks) {
  Tracks tracks = movingShot(3);
  see(tracks, 0, 5, {1, 1}, 0.0f);
  EXPECT_THROW(solveShot(tracks, based(-1)), std::invalid_argument);
  EXPECT_THROW(solveShot(tracks, based(6)), std::invalid_argument);
  EXPECT_THROW(solveShot(tracks, based(4)), std::invalid_argument);
  EXPECT_THROW(solveShot(tracks, based(5)), std::invalid_argument);
}

TEST(SolveShot, LeavesOutTracksAbsentFromTheBase) {
  Tracks tracks;
  for (int t = 0; t < 5; ++t) see(tracks, t, 0, kCorners[static_cast<std::size_t>(t)]);
  see(tracks, 5, 0, {1, 1}, 0.0f);
  for (int t = 0; t < 5; ++t) see(tracks, t, 1, kCorners[static_cast<std::size_t>(t)]);
  see(tracks, 5, 1, {7777, 7777});
  see(tracks, 6, 1, {8888, 8888});
  const ShotResult result = solveShot(tracks, based(0));
  EXPECT_EQ(result.baseTracks, 5);
  EXPECT_EQ(result.leftOut, 2);
  EXPECT_EQ(result.frames[1].tracks, 5);
  EXPECT_LT(result.frames[1].rms, 1e-4);
}

TEST(SolveShot, TreatsWeightZeroAsAbsent) {
  Tracks tracks = movingShot(2);
  see(tracks, 5, 0, {300, 300});
  std::swap(tracks.observations.back(), tracks.observations[5]);
  std::rotate(tracks.observations.begin() + 6, tracks.observations.end() - 1,
              tracks.observations.end());
  see(tracks, 5, 1, {9999, 9999}, 0.0f);
  const ShotResult result = solveShot(tracks, based(0));
  EXPECT_EQ(result.baseTracks, 6);
  EXPECT_EQ(result.frames[1].tracks, 5);
  EXPECT_LT(errorAtCorners(result.frames[1]), 1e-2);
}
