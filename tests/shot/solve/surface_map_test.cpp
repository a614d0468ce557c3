// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/surface_map.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "tests/shot/solve/small_shots.h"

using namespace cornerpin;
using namespace small_shots;

namespace {

SurfaceMap mapOf(const Tracks& tracks) {
  return {BaseFrame(tracks, tracks.firstFrame()), tracks.names.size()};
}

}  // namespace

TEST(SurfaceMap, MatchesTheTracksThatAFrameHasInCommonWithTheBase) {
  Tracks tracks;
  for (int t : {0, 1, 2, 4}) see(tracks, t, 0, {10.0 * t, 1}, t == 1 ? 0.0f : 1.0f);
  for (int t : {0, 1, 2, 3, 4}) see(tracks, t, 1, {20.0 * t, 2}, t == 2 ? 0.0f : 0.25f);
  const Matches matches = mapOf(tracks).matchesIn(tracks, 1);
  EXPECT_EQ(matches.tracks(), (std::vector<int>{0, 4}));
  EXPECT_EQ(matches.base()[1].x, 40.0);
  EXPECT_EQ(matches.present()[1].x, 80.0);
  EXPECT_EQ(matches.present()[1].y, 2.0);
  EXPECT_EQ(matches.weights(), (std::vector<double>{0.25, 0.25}));
  EXPECT_TRUE(mapOf(tracks).matchesIn(tracks, 2).empty());
}

TEST(SurfaceMap, MatchesATrackOnceItsPlaceIsSet) {
  Tracks tracks;
  see(tracks, 0, 0, {1, 2});
  see(tracks, 0, 1, {3, 4});
  see(tracks, 1, 1, {5, 6});
  SurfaceMap map = mapOf(tracks);
  EXPECT_FALSE(map.knows(1));
  EXPECT_EQ(map.matchesIn(tracks, 1).tracks(), (std::vector<int>{0}));
  map.setPlace(1, {7, 8});
  EXPECT_TRUE(map.knows(1));
  const Matches matches = map.matchesIn(tracks, 1);
  EXPECT_EQ(matches.tracks(), (std::vector<int>{0, 1}));
  EXPECT_EQ(matches.base()[1].x, 7.0);
  EXPECT_EQ(matches.base()[1].y, 8.0);
  EXPECT_EQ(matches.present()[1].x, 5.0);
}
