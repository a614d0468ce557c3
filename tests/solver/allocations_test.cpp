// SPDX-License-Identifier: BSD-3-Clause
#include "tests/support/allocations.h"

#include <gtest/gtest.h>

#include <cmath>

#include "cornerpin/solver/matchmove.h"

namespace {

// Whether a track is present in a frame.
using Presence = bool (*)(int track, int frame);

bool always(int, int) { return true; }

// Between 4 tracks and all of them, more in one frame and fewer in the next.
bool changing(int track, int frame) {
  return track < 4 || (track * 7 + frame * 5) % 11 > frame % 7;
}

bool notInEveryThirdFrame(int, int frame) { return frame % 3 != 2; }

// Frame by frame one track more.
bool joining(int track, int frame) { return track < 4 + frame; }

// Tracks of a plane under a slow pan, with a little unevenness so that no fit is exact.
MMatchmove scene(int tracks, int frames, Presence isPresent = always, int baseFrame = 0) {
  MMatchmove result;
  result.baseFrame = baseFrame;
  result.tracks.resize(tracks);
  for (int i = 0; i < tracks; ++i) {
    MMatchmoveTrack& track = result.tracks[i];
    track.positions = MGenMatrix<float>(frames, 2, MGenMatrix<float>::RowMajor);
    track.weights = MGenVector<float>(frames);
    for (int f = 0; f < frames; ++f) {
      const double t = f - baseFrame;
      const double uneven = t == 0 ? 0.0 : 0.001;
      track.positions(f, 0) =
          static_cast<float>(std::sin(2.4 * i) + 0.01 * t + uneven * std::cos(i * t));
      track.positions(f, 1) =
          static_cast<float>(std::cos(1.7 * i) - 0.02 * t + uneven * std::sin(i * t));
      track.weights[f] = f == baseFrame || isPresent(i, f) ? 1.0f : 0.0f;
    }
  }
  return result;
}

// Blocks that the first solve of a scene allocates.
std::size_t blocksOfSolve(MMatchmove scene) {
  const std::size_t before = allocations::made();
  scene.solve();
  return allocations::made() - before;
}

// Blocks that stay allocated after it.
std::size_t blocksLeftBySolve(MMatchmove scene) {
  const std::size_t before = allocations::live();
  scene.solve();
  return allocations::live() - before;
}

class SolveAllocations : public testing::Test {
 protected:
  SolveAllocations() { scene(8, 3).solve(); }  // initialises statics
};

TEST_F(SolveAllocations, GrowByOneBlockPerFrameTheResult) {
  const std::size_t few = blocksOfSolve(scene(20, 10));
  EXPECT_EQ(blocksOfSolve(scene(20, 11)), few + 1);
  EXPECT_EQ(blocksOfSolve(scene(20, 100)), few + 90);
  EXPECT_EQ(blocksOfSolve(scene(20, 1000)), few + 990);
}

TEST_F(SolveAllocations, LeaveTheOutputsAndTheBaseFrameData) {
  // A matrix per frame, the array of them, basePositions and baseWeights.
  EXPECT_EQ(blocksLeftBySolve(scene(20, 50)), 50u + 3u);
}

TEST_F(SolveAllocations, BesideTheResultAreFewerThanThirty) {
  EXPECT_LT(blocksOfSolve(scene(20, 50)), 50u + 30u);
}

TEST_F(SolveAllocations, DoNotDependOnTheNumberOfTracks) {
  const std::size_t few = blocksOfSolve(scene(5, 30));
  for (const int tracks : {6, 8, 33, 100, 1000}) {
    EXPECT_EQ(blocksOfSolve(scene(tracks, 30)), few) << tracks << " tracks";
  }
}

TEST_F(SolveAllocations, DoNotDependOnTheActiveTracksOfAFrame) {
  for (const int frames : {20, 200}) {
    const std::size_t steady = blocksOfSolve(scene(60, frames));
    EXPECT_EQ(blocksOfSolve(scene(60, frames, changing)), steady) << frames << " frames";
    EXPECT_EQ(blocksOfSolve(scene(60, frames, notInEveryThirdFrame)), steady)
        << frames << " frames";
  }
}

TEST_F(SolveAllocations, DoNotGrowWithTracksThatJoin) {
  EXPECT_EQ(blocksOfSolve(scene(60, 50, joining)), blocksOfSolve(scene(60, 50)));
}

TEST_F(SolveAllocations, AreTheSameInBothDirections) {
  const std::size_t forwards = blocksOfSolve(scene(20, 40, changing, 0));
  EXPECT_EQ(blocksOfSolve(scene(20, 40, changing, 39)), forwards);
  EXPECT_EQ(blocksOfSolve(scene(20, 40, changing, 17)), forwards);
}

TEST_F(SolveAllocations, OfASecondSolveLeaveNothingMoreBehind) {
  MMatchmove twice = scene(20, 40, changing);
  twice.solve();
  const std::size_t before = allocations::live();
  twice.solve();
  EXPECT_EQ(allocations::live(), before);
}

}  // namespace
