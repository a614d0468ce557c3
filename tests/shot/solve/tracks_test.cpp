// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/tracks.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/shot/solve/small_shots.h"

using namespace cornerpin;
using namespace small_shots;

namespace {

// Tracks 0 and 2 in frame -3, track 1 in frame 0.
Tracks shotWithAGap() {
  Tracks tracks;
  see(tracks, 0, -3, {1, 0});
  see(tracks, 2, -3, {2, 0});
  see(tracks, 1, 0, {3, 0});
  return tracks;
}

std::vector<int> seenIn(const Tracks& tracks, int frame) {
  std::vector<int> seen;
  for (const Observation& o : tracks.inFrame(frame)) seen.push_back(o.track);
  return seen;
}

}  // namespace

TEST(Observation, CountsInFullAndComesFromNoLineUnlessItSays) {
  EXPECT_EQ(Observation().weight, 1.0f);
  EXPECT_EQ(Observation().line, 0u);
}

TEST(Tracks, SpanTheirFramesAndTheGapsBetween) {
  EXPECT_EQ(shotWithAGap().firstFrame(), -3);
  EXPECT_EQ(shotWithAGap().lastFrame(), 0);
  EXPECT_EQ(shotWithAGap().frameCount(), 4);
}

TEST(Tracks, InAFrameComeInTheirOrder) {
  EXPECT_EQ(seenIn(shotWithAGap(), -3), (std::vector<int>{0, 2}));
  EXPECT_EQ(seenIn(shotWithAGap(), 0), (std::vector<int>{1}));
}

TEST(Tracks, InAGapAndOutsideTheShotAreNone) {
  for (int frame : {-4, -2, -1, 1}) EXPECT_TRUE(seenIn(shotWithAGap(), frame).empty()) << frame;
}
