// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/base_frame.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

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

TEST(BaseFrame, SaysWhatItRefuses) {
  Tracks tracks = movingShot(3);
  see(tracks, 0, 5, {1, 1}, 0.0f);
  const auto refusal = [&](int frame) -> std::string {
    try {
      const BaseFrame base(tracks, frame);
    } catch (const std::invalid_argument& error) {
      return error.what();
    }
    return "none";
  };
  EXPECT_EQ(refusal(-1), "base frame -1 is not in the shot: take one from 0 to 5");
  EXPECT_EQ(refusal(6), "base frame 6 is not in the shot: take one from 0 to 5");
  EXPECT_EQ(refusal(4), "base frame 4 has no track");
  EXPECT_EQ(refusal(5), "base frame 5 has no track");
  EXPECT_EQ(refusal(0), "none");
}

TEST(BaseFrame, LeavesOutATrackOfWeightZero) {
  Tracks tracks;
  see(tracks, 0, 0, {10, 20}, 0.5f);
  see(tracks, 1, 0, {7777, 7777}, 0.0f);
  see(tracks, 2, 0, {30, 40}, 2.0f);
  see(tracks, 3, 1, {50, 60});
  const BaseFrame base(tracks, 0);
  ASSERT_EQ(base.places().size(), 2u);
  EXPECT_EQ(base.places()[1].x, 30.0);
  EXPECT_EQ(base.tracks(), (std::vector<int>{0, 2}));
}

// Five are too few to tell a bad one.
TEST(SurfacePlaces, LeaveOutAFarOffOneOfSixWithALoss) {
  Points places = {{0, 0}, {10, 0}, {10, 10}, {0, 10}, {1e4, 0}};
  EXPECT_EQ(surfacePlaces(places, Loss::Tukey).size(), 5u);
  places.add({5, 5});
  EXPECT_EQ(surfacePlaces(places, Loss::Tukey).size(), 5u);
  EXPECT_EQ(surfacePlaces(places, Loss::Huber).size(), 5u);
  EXPECT_EQ(surfacePlaces(places, Loss::None).size(), 6u);
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
  EXPECT_EQ(describe(*result.unused), "2 absent in the base frame");
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
