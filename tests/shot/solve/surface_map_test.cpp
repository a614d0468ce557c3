// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/surface_map.h"

#include <gtest/gtest.h>

#include <cmath>
#include <optional>
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

namespace {

constexpr double kSigma = 0.5;
const Point kPlace = {300, 200};

// Four tracks of the base frame, and track 4 that a test shows to the map frame by frame.
struct Learning {
  Learning() {
    for (int t = 0; t < 4; ++t) see(tracks, t, 0, kCorners[static_cast<std::size_t>(t)]);
    tracks.names.push_back("late");
  }

  // The frame's transform is motion(frame); `off` is the late track's error there, in pixels.
  void show(int frame, Point off, bool good = true, float weight = 1.0f) {
    const Homography h = motion(frame);
    for (int t = 0; t < 4; ++t) {
      see(tracks, t, frame, map(h, kCorners[static_cast<std::size_t>(t)]));
    }
    const Point p = map(h, kPlace);
    see(tracks, 4, frame, {p.x + off.x, p.y + off.y}, weight);
    const Matches matches = learning.map().matchesIn(tracks, frame);
    std::vector<bool> flags(matches.size(), true);
    if (flags.size() == 5) flags[4] = good;
    learning.learn(tracks.inFrame(frame), matches, flags, h, kSigma);
  }

  bool knows() const { return learning.map().knows(4); }
  Point place() const { return learning.map().placeOf(4); }

  Tracks tracks;
  LearningMap learning{base(), 5};

 private:
  BaseFrame base() {
    Tracks first;
    for (int t = 0; t < 4; ++t) see(first, t, 0, kCorners[static_cast<std::size_t>(t)]);
    return {first, 0};
  }
};

}  // namespace

TEST(LearningMap, KnowsATrackFromItsFifthSighting) {
  Learning shot;
  for (int f = 1; f <= 4; ++f) {
    shot.show(f, {0, 0});
    EXPECT_FALSE(shot.knows()) << f;
  }
  shot.show(5, {0, 0});
  ASSERT_TRUE(shot.knows());
  EXPECT_NEAR(shot.place().x, kPlace.x, 1e-6);
  EXPECT_NEAR(shot.place().y, kPlace.y, 1e-6);
}

TEST(LearningMap, LeavesTheBaseFramesTracksWhereTheyAre) {
  Learning shot;
  for (int f = 1; f <= 9; ++f) shot.show(f, {0, 0});
  for (int t = 0; t < 4; ++t) {
    const Point p = kCorners[static_cast<std::size_t>(t)];
    EXPECT_EQ(shot.learning.map().placeOf(t).x, p.x);
    EXPECT_EQ(shot.learning.map().placeOf(t).y, p.y);
  }
}

// Five places two pixels apart scatter by 2 * (16 + 4) / 0.25 = 160 squared noises of a track, half
// a pixel apart by 10; 26.1 is what they may. The four tracks of the base frame leave less than one
// such noise to the transform in their midst.
TEST(LearningMap, DoesNotKnowATrackThatSlidesUntilItRests) {
  Learning slow;
  for (int f = 1; f <= 5; ++f) slow.show(f, {0.5 * f, 0});
  EXPECT_TRUE(slow.knows());
  Learning fast;
  for (int f = 1; f <= 9; ++f) fast.show(f, {2.0 * f, 0});
  EXPECT_FALSE(fast.knows());
  for (int f = 10; f <= 13; ++f) fast.show(f, {20, 0});
  ASSERT_TRUE(fast.knows());
  const Point away =
      map(inverse(motion(13)), {map(motion(13), kPlace).x + 20, map(motion(13), kPlace).y});
  EXPECT_NEAR(fast.place().x, away.x, 1.0);
}

TEST(LearningMap, AveragesWhileTheTrackIsGoodAndNoLonger) {
  Learning shot;
  for (int f = 1; f <= 5; ++f) shot.show(f, {0, 0});
  shot.show(6, {0.6, 0}, true);
  const Point moved = shot.place();
  EXPECT_NEAR(moved.x - kPlace.x, 0.1, 0.03);  // a sixth of it, the transforms are near 1
  shot.show(7, {30, 0}, false);
  EXPECT_EQ(shot.place().x, moved.x);
  EXPECT_EQ(shot.place().y, moved.y);
}

TEST(LearningMap, TakesNoNoticeOfAWeightOfZero) {
  Learning shot;
  for (int f = 1; f <= 9; ++f) shot.show(f, {0, 0}, true, 0.0f);
  EXPECT_FALSE(shot.knows());
}

// A frame that magnifies twice tells a place twice as well: its sighting counts four times.
TEST(LearningMap, WeighsASightingByItsNoiseOnTheSurface) {
  const Homography twice = {{{2, 0, 0}, {0, 2, 0}, {0, 0, 1}}};
  Tracks tracks;
  for (int t = 0; t < 4; ++t) see(tracks, t, 0, kCorners[static_cast<std::size_t>(t)]);
  LearningMap learning(BaseFrame(tracks, 0), 5);
  for (int f = 1; f <= 5; ++f) {
    for (int t = 0; t < 4; ++t) see(tracks, t, f, kCorners[static_cast<std::size_t>(t)]);
    see(tracks, 4, f, f == 5 ? Point{200.8, 100} : Point{100, 50});
    const Matches matches = learning.map().matchesIn(tracks, f);
    learning.learn(tracks.inFrame(f), matches, std::vector<bool>(4, true),
                   f == 5 ? twice : kIdentity, kSigma);
  }
  ASSERT_TRUE(learning.map().knows(4));
  // (4 * 100 + 4 * 100.4) / 8; what the noise of the transform makes of it hardly changes there.
  EXPECT_NEAR(learning.map().placeOf(4).x, 100.2, 1e-3);
  EXPECT_NEAR(learning.map().placeOf(4).y, 50.0, 1e-3);
}

namespace {

// Four tracks of the base frame, 1 to 4, and track 0, which comes late, in frames that stand still.
struct Standing {
  Standing() {
    for (int t = 1; t < 5; ++t) see(tracks, t, 0, kCorners[static_cast<std::size_t>(t)]);
    learning.emplace(BaseFrame(tracks, 0), 5);
  }

  // With the first match, whichever track that is, good or not.
  void show(int frame, Point late, const Homography& h = kIdentity, bool firstGood = true) {
    see(tracks, 0, frame, late);
    for (int t = 1; t < 5; ++t) {
      see(tracks, t, frame, map(h, kCorners[static_cast<std::size_t>(t)]));
    }
    const Matches matches = learning->map().matchesIn(tracks, frame);
    std::vector<bool> good(matches.size(), true);
    good[0] = firstGood;
    learning->learn(tracks.inFrame(frame), matches, good, h, kSigma);
  }

  bool knows() const { return learning->map().knows(0); }

  Tracks tracks;
  std::optional<LearningMap> learning;
};

}  // namespace

// What the horizon parts from the tracks is nowhere.
TEST(LearningMap, LearnsNothingBehindTheHorizon) {
  const Homography steep = {{{1, 0, 0}, {0, 1, 0}, {-1e-3, 0, 1}}};
  Tracks tracks;
  for (int t = 0; t < 4; ++t) see(tracks, t, 0, kCorners[static_cast<std::size_t>(t)]);
  LearningMap learning(BaseFrame(tracks, 0), 5);
  for (int f = 1; f <= 9; ++f) {
    for (int t = 0; t < 4; ++t) {
      see(tracks, t, f, map(steep, kCorners[static_cast<std::size_t>(t)]));
    }
    see(tracks, 4, f, map(steep, {2000, 100}));
    const Matches matches = learning.map().matchesIn(tracks, f);
    learning.learn(tracks.inFrame(f), matches, std::vector<bool>(4, true), steep, kSigma);
  }
  EXPECT_FALSE(learning.map().knows(4));
}

TEST(LearningMap, LearnsANewTrackWhateverTheOthersDo) {
  Standing shot;
  for (int f = 1; f <= 5; ++f) shot.show(f, {300, 200}, kIdentity, false);
  EXPECT_TRUE(shot.knows());
}

// The first five are at 100, the others at 102. From the eighth on they scatter by more than five
// sightings of a new track may: 4 * 5 * 3 / 8 / 0.25 = 30.
TEST(LearningMap, AveragesOnWhereTheGoodSightingsOfAKnownTrackScatter) {
  Standing shot;
  for (int f = 1; f <= 5; ++f) shot.show(f, {100, 50});
  for (int f = 6; f <= 10; ++f) shot.show(f, {102, 50});
  // The later ones weigh more: the track is in the fit, which is nearer to it then.
  EXPECT_GT(shot.learning->map().placeOf(0).x, 101.0);
  EXPECT_LT(shot.learning->map().placeOf(0).x, 101.95);
}

// The frame shows the surface's horizon on the line x + y / 2 = 1024.
TEST(LearningMap, TakesNoNoticeOfASightingOnTheHorizon) {
  const Homography steep = {{{1, 0, 0}, {0, 1, 0}, {1.0 / 1024, 1.0 / 2048, 1}}};
  Standing shot;
  shot.show(1, {512, 1024}, steep);
  for (int f = 2; f <= 5; ++f) shot.show(f, {100, 50});
  EXPECT_FALSE(shot.knows());
  shot.show(6, {100, 50});
  EXPECT_TRUE(shot.knows());
}

// Frames of four tracks tell a place beyond them badly: the same scatter that speaks of a slide in
// their midst is what their noise makes of it there.
TEST(LearningMap, ExpectsMoreScatterWhereTheTransformsAreNoisy) {
  for (const bool outside : {false, true}) {
    Tracks tracks;
    for (int t = 0; t < 4; ++t) see(tracks, t, 0, kCorners[static_cast<std::size_t>(t)]);
    LearningMap learning(BaseFrame(tracks, 0), 5);
    const Point place = outside ? Point{1500, 1200} : Point{300, 250};
    for (int f = 1; f <= 5; ++f) {
      for (int t = 0; t < 4; ++t) see(tracks, t, f, kCorners[static_cast<std::size_t>(t)]);
      see(tracks, 4, f, {place.x + 2.0 * f, place.y});
      const Matches matches = learning.map().matchesIn(tracks, f);
      learning.learn(tracks.inFrame(f), matches, std::vector<bool>(4, true), kIdentity, kSigma);
    }
    EXPECT_EQ(learning.map().knows(4), outside);
  }
}
