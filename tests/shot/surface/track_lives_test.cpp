// SPDX-License-Identifier: BSD-3-Clause
#include "shot/surface/track_lives.h"

#include <gtest/gtest.h>

#include "tests/shot/lists.h"

using namespace cornerpin;

namespace {

constexpr int kNone = TrackLives::kNoSlot;

// The tracks that each frame shows.
TrackLives livesIn(const std::vector<std::vector<int>>& seen, std::vector<double> noise = {},
                   std::vector<Place> places = {}) {
  int tracks = 0;
  for (const auto& frame : seen) {
    for (int t : frame) tracks = t >= tracks ? t + 1 : tracks;
  }
  places.resize(static_cast<std::size_t>(tracks), Place{{0, 0}, {}});
  if (noise.empty()) noise.assign(seen.size(), 1.0);
  return livesOf(noise, places, [&](std::size_t f) {
    Matches matches;
    for (int t : seen[f]) matches.add({{}, {}, 1.0, t});
    return matches;
  });
}

std::vector<int> range(int first, int last) {
  std::vector<int> list;
  for (int t = first; t < last; ++t) list.push_back(t);
  return list;
}

}  // namespace

TEST(LivesOf, GivesATrackASlotFromItsFirstSightingToItsLast) {
  const TrackLives lives = livesIn({{0, 1}, {0}, {1, 2}, {2, 3}});
  EXPECT_EQ(lives.slots, (std::vector<int>{0, 1, 0, 1}));
  EXPECT_EQ(lives.ending, (std::vector<std::vector<int>>{{}, {0}, {1}, {2, 3}}));
  EXPECT_EQ(lives.extents, (std::vector<std::size_t>{2, 2, 2, 2}));
  EXPECT_EQ(lives.meanLength, 2.0);  // of 2, 3, 2 and 1
}

TEST(LivesOf, ReachesUpToTheHighestSlotInUse) {
  const TrackLives lives = livesIn({{0}, {0, 1, 2}, {2}, {}, {3}});
  EXPECT_EQ(lives.slots, (std::vector<int>{0, 1, 2, 0}));
  EXPECT_EQ(lives.extents, (std::vector<std::size_t>{1, 3, 3, 0, 1}));
}

TEST(LivesOf, LeavesOutUnknownPlacesAndFramesThatTakeNoPart) {
  const TrackLives lives =
      livesIn({{0, 1}, {0, 1, 2}, {0, 1}}, {1.0, 1.0, 0.0}, {{{1, 2}, {}}, {}, {{3, 4}, {}}});
  EXPECT_EQ(lives.slots, (std::vector<int>{0, kNone, 1}));
  EXPECT_EQ(lives.ending, (std::vector<std::vector<int>>{{}, {0, 2}, {}}));
}

TEST(LivesOf, OfAnEmptyShotIsEmpty) {
  EXPECT_TRUE(livesIn({}).slots.empty());
  EXPECT_EQ(livesIn({{}, {}}).extents, (std::vector<std::size_t>{0, 0}));
}

// Tracks 0 to 9 in the first frame, 10 to 209 in both.
TEST(LivesOf, TakesThoseThatAreSeenLongestFirst) {
  const TrackLives lives = livesIn({range(0, 210), range(10, 210)});
  for (int t = 0; t < 210; ++t) {
    EXPECT_EQ(lives.slots[static_cast<std::size_t>(t)] == kNone, t < 10) << t;
  }
  EXPECT_EQ(lives.extents, (std::vector<std::size_t>{200, 200}));
}

TEST(LivesOf, TakesTheLowerIndexOfEquals) {
  const TrackLives lives = livesIn({range(0, 210)});
  for (int t = 0; t < 210; ++t) {
    EXPECT_EQ(lives.slots[static_cast<std::size_t>(t)] == kNone, t >= 200) << t;
  }
}

// The fourth frame shows nothing of the 600 that are alive there; the last one shows none of them.
TEST(LivesOf, TakesATrackWhereverThereIsRoomInItsLife) {
  const auto a = range(0, 200), b = range(200, 400), c = range(400, 600);
  const TrackLives lives = livesIn({a, b, c, {600}, a, b, c, {601}});
  for (std::size_t t = 0; t < 602; ++t) EXPECT_EQ(lives.slots[t] == kNone, t == 600) << t;
  EXPECT_EQ(lives.extents[3], 600u);
}

// The first frame has enough with 0 to 199; the second one shows 50 of these and all of its own.
TEST(LivesOf, FillsEveryFrame) {
  std::vector<int> second = range(150, 200);
  for (int t : range(210, 400)) second.push_back(t);
  const TrackLives lives = livesIn({range(0, 210), second});
  for (int t = 0; t < 400; ++t) {
    // 150 to 199 are seen twice, and so come first in both frames.
    const bool out = (t >= 200 && t < 210) || t >= 360;
    EXPECT_EQ(lives.slots[static_cast<std::size_t>(t)] == kNone, out) << t;
  }
}

// Every frame shows 400, of which ten go and ten others come: 200 stay enough without a track that
// is about to go.
TEST(LivesOf, KeepsNoMoreAliveThanAFrameNeedsWhereTracksComeAndGo) {
  std::vector<std::vector<int>> seen;
  for (int f = 0; f < 100; ++f) seen.push_back(range(10 * f, 10 * f + 400));
  const TrackLives lives = livesIn(seen);
  for (std::size_t f = 0; f < 100; ++f) EXPECT_LE(lives.extents[f], 210u) << f;
}
