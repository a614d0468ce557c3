// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/owned_tracks.h"

#include <gtest/gtest.h>

using namespace cornerpin;

TEST(OwnedTracks, HaveTheirOwnersInTheirNamesOnlyWhereThatIsNeeded) {
  TrackBuilder builder("f", {});
  OwnedTracks tracks(builder);
  const std::int32_t a1 = tracks.track("a", "1");
  const std::int32_t b1 = tracks.track("b", "1");
  EXPECT_EQ(tracks.track("a", "1"), a1);
  const std::int32_t a2 = tracks.track("a", "2");
  EXPECT_NE(a2, a1);
  EXPECT_EQ(tracks.track("a", "1"), a1);
  EXPECT_EQ(tracks.track("a", "2"), a2);
  EXPECT_EQ(tracks.track("b", "1"), b1);
  const std::int32_t a3 = tracks.track("a", "3");
  std::int32_t frame = 0;
  for (const std::int32_t track : {a1, b1, a2, a3}) {
    Observation row;
    row.track = track;
    row.frame = frame++;
    builder.add(row);
  }
  EXPECT_TRUE(builder.has("a@1"));
  EXPECT_FALSE(builder.has("a"));
  EXPECT_EQ(builder.finish().names, (std::vector<std::string>{"a@1", "a@2", "a@3", "b"}));
}

TEST(OwnedTracks, DoNotTakeTheNamesOfOthers) {
  TrackBuilder builder("f", {});
  OwnedTracks tracks(builder);
  std::vector<std::int32_t> all = {tracks.track("a@1", "1"), tracks.track("a", "1"),
                                   tracks.track("a", "2")};
  EXPECT_EQ(tracks.track("a", "1"), all[1]);
  EXPECT_EQ(tracks.track("a@1", "1"), all[0]);
  Observation row;
  for (const std::int32_t track : all) {
    row.track = track;
    builder.add(row);
  }
  EXPECT_EQ(builder.finish().names, (std::vector<std::string>{"a@1", "a@1_", "a@2"}));
}
