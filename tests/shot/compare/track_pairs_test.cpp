// SPDX-License-Identifier: BSD-3-Clause
#include "shot/compare/track_pairs.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "tests/shot/compare/disturbed_tracks.h"

using namespace cornerpin;
using made::changed;
using made::wanderers;
using made::without;

namespace {

Tracks named(Tracks tracks, std::vector<std::string> names) {
  tracks.names = std::move(names);
  return tracks;
}

bool contains(const std::vector<TrackMatch>& matches, const TrackMatch& match) {
  return std::find(matches.begin(), matches.end(), match) != matches.end();
}

bool contains(const std::vector<int>& shifts, int shift) {
  return std::find(shifts.begin(), shifts.end(), shift) != shifts.end();
}

// Three tracks that stand at 300, 100 and 200.
Tracks stands(std::vector<std::string> names) {
  constexpr double kPlaces[] = {300.0, 100.0, 200.0};
  return named(changed(wanderers(3, 5, 1),
                       [&](Observation& o) {
                         o.x = kPlaces[o.track];
                         o.y = 10.0;
                       }),
               std::move(names));
}

}  // namespace

TEST(TrackPairs, MatchesByName) {
  EXPECT_EQ(matchByName(stands({"a", "b", "d"}), stands({"b", "c", "d"})),
            (TrackMatch{kNoTrack, 0, 2}));
}

TEST(TrackPairs, MatchesTheRestInOrderAndFromLeftToRight) {
  const std::vector<TrackMatch> matches =
      otherMatches(stands({"a", "b", "d"}), changed(stands({"d", "x", "y"}), [](Observation& o) {
                     o.x += o.track == 0 ? 0.0 : 50.0 * o.track;  // 300, 150, 300
                   }));
  EXPECT_TRUE(contains(matches, {1, 2, 0}));  // a and b are x and y
  EXPECT_TRUE(contains(matches, {2, 1, 0}));  // b, on the left, is x
  for (const TrackMatch& match : matches) EXPECT_NE(match, (TrackMatch{kNoTrack, kNoTrack, 0}));
}

TEST(TrackPairs, MatchesAllFromLeftToRight) {
  const Tracks first = stands({"a", "b", "c"});
  const Tracks second = changed(first, [](Observation& o) { o.x = o.track == 1 ? 999.0 : o.x; });
  EXPECT_TRUE(contains(otherMatches(first, second), {1, 2, 0}));  // now 200, 300, 999 are c, a, b
}

TEST(TrackPairs, MatchesFourInAnyOrder) {
  EXPECT_EQ(otherMatches(wanderers(4, 5, 1), wanderers(4, 5, 1)).size(), 23U);
  EXPECT_LE(otherMatches(wanderers(5, 5, 1), wanderers(5, 5, 1)).size(), 1U);
}

TEST(TrackPairs, MatchesByPlaceBehindAChange) {
  const Tracks first = wanderers(200, 5, 3);
  const Tracks second = changed(first, [](Observation& o) {
    o.x = 2.0 * o.x + 1.0;
    o.y = 1080.0 - o.y;
    o.track = (o.track + 7) % 200;
  });
  const TrackMatch match = matchByPlace(first, second, {2.0, 1.0}, {-1.0, 1080.0}, 0.5);
  for (std::size_t i = 0; i < match.size(); ++i)
    EXPECT_EQ(match[i], (static_cast<std::int32_t>(i) + 7) % 200);
  const TrackMatch none = matchByPlace(first, second, {1.0, 1e6}, {}, 0.5);
  EXPECT_EQ(std::count(none.begin(), none.end(), kNoTrack), 200);
}

TEST(TrackPairs, KnowsLikelyShifts) {
  const Tracks first = wanderers(5, 80, 3);
  const Tracks part =
      without(first, [](const Observation& o) { return o.frame < 20 || o.frame > 50; });
  const Tracks second = changed(part, [](Observation& o) {
    o.x += 33.0;
    o.frame += 500;
  });
  const TrackMatch match = matchByName(first, second);
  const std::vector<int> shifts = likelyShifts(first, second, match, 1e-6);
  EXPECT_TRUE(contains(shifts, 500));
  EXPECT_TRUE(contains(shifts, 519));  // 520 - 1
  EXPECT_TRUE(contains(shifts, 470));  // 550 - 80
  EXPECT_TRUE(contains(shifts, 1) && contains(shifts, -1));
  EXPECT_FALSE(contains(shifts, 0));
}

TEST(TrackPairs, PairsWhatBothHave) {
  const Tracks first = wanderers(3, 6, 3);
  const Tracks second =
      changed(without(first, [](const Observation& o) { return o.track == 1 && o.frame == 4; }),
              [](Observation& o) { o.frame += 2; });
  const auto pairs = pairsOf(first, second, matchByName(first, second), 2);
  ASSERT_EQ(pairs.size(), 17U);
  for (const ObservationPair& pair : pairs) {
    EXPECT_EQ(pair.first->track, pair.second->track);
    EXPECT_EQ(pair.first->frame + 2, pair.second->frame);
    EXPECT_EQ(pair.first->x, pair.second->x);
  }
  EXPECT_EQ(pairsOf(first, second, matchByName(first, second), 0).size(), 11U);  // frames 3 to 6
  EXPECT_EQ(pairsOf(first, second, {1, kNoTrack, kNoTrack}, 2).size(), 5U);
  EXPECT_TRUE(pairsOf(first, second, matchByName(first, second), 2147483647).empty());
}

// Every eighth row of four tracks in every frame would be of one track alone.
TEST(TrackPairs, TakesSomeOfAllTracksAndFrames) {
  const Tracks tracks = wanderers(4, 4000, 3);
  const auto all = pairsOf(tracks, tracks, {0, 1, 2, 3}, 0);
  const auto some = someOf(all, 2000);
  EXPECT_NEAR(static_cast<double>(some.size()), 2000.0, 200.0);
  std::map<int, int> byTrack;
  std::map<int, int> byTime;
  for (const ObservationPair& pair : some) {
    ++byTrack[pair.first->track];
    ++byTime[pair.first->frame / 500];
  }
  for (int t = 0; t < 4; ++t) EXPECT_NEAR(byTrack[t], 500, 100) << t;
  for (int t = 0; t < 8; ++t) EXPECT_NEAR(byTime[t], 250, 75) << t;
  EXPECT_EQ(someOf(all, 16000).size(), 16000U);
}
