// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/good_tracks.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace cornerpin;

TEST(GoodTracks, LeaveOutWhatIsIgnoredAbsentOrWithoutWeight) {
  Tracks tracks;
  tracks.picture.width = 20;
  tracks.names = {"a", "b", "c"};
  for (int frame = 1; frame <= 4; ++frame) {
    for (int track = 0; track < 3; ++track) {
      Observation row;
      row.track = track;
      row.frame = frame;
      row.x = 10 * track + frame;
      if (track == 2 && frame == 2) row.weight = 0.0f;
      tracks.observations.push_back(row);
    }
  }
  tracks.arrange();
  ShotResult result;
  result.tracks.resize(3);
  result.tracks[0].runs = {{1, 4, TrackUse::Ignored}};
  result.tracks[1].runs = {
      {1, 1, TrackUse::Absent}, {2, 3, TrackUse::Good}, {4, 4, TrackUse::Ignored}};
  result.tracks[2].runs = {{1, 4, TrackUse::Good}};
  const Tracks good = goodTracks(tracks, result);
  EXPECT_EQ(good.names, (std::vector<std::string>{"b", "c"}));
  std::vector<double> x;
  for (const Observation& row : good.observations) x.push_back(row.x);
  EXPECT_EQ(x, (std::vector<double>{21, 12, 13, 23, 24}));
  EXPECT_EQ(good.observations[1].track, 0);
  EXPECT_EQ(good.picture.width, 20);
}

TEST(GoodTracks, MayBeNone) {
  Tracks tracks;
  tracks.names = {"a"};
  tracks.observations.resize(1);
  ShotResult result;
  result.tracks.resize(1);
  EXPECT_TRUE(goodTracks(tracks, result).observations.empty());
}
