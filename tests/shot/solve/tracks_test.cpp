// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/tracks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>
#include <vector>

#include "tests/shot/random.h"
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

namespace {

bool areSame(const Observation& a, const Observation& b) {
  return std::tie(a.x, a.y, a.weight, a.track, a.frame, a.line) ==
         std::tie(b.x, b.y, b.weight, b.track, b.frame, b.line);
}

// Some of 20 tracks in each of 50 frames from -20 on; frames 3 to 7 have none. By frame and track.
Tracks manyTracks(made::Random& random) {
  Tracks tracks;
  for (int f = -20; f < 30; ++f) {
    for (int t = 0; t < 20; ++t) {
      if ((f < 3 || f > 7) && random.chance(0.7)) see(tracks, t, f, {1.0 * f, 1.0 * t});
    }
  }
  return tracks;
}

void expectArranged(Tracks mixed, const Tracks& expected) {
  EXPECT_TRUE(mixed.arrange());
  ASSERT_EQ(mixed.observations.size(), expected.observations.size());
  EXPECT_TRUE(std::equal(mixed.observations.begin(), mixed.observations.end(),
                         expected.observations.begin(), areSame));
  for (int f = expected.firstFrame() - 2; f <= expected.lastFrame() + 2; ++f) {
    const Tracks::Range range = expected.inFrame(f);
    const Tracks::Range same = mixed.inFrame(f);
    ASSERT_EQ(same.last - same.first, range.last - range.first) << f;
    EXPECT_TRUE(std::equal(same.begin(), same.end(), range.begin(), areSame)) << f;
  }
}

}  // namespace

TEST(Tracks, AreArrangedWhateverTheirOrder) {
  made::Random random(3);
  for (int trial = 0; trial < 20; ++trial) {
    const Tracks expected = manyTracks(random);
    expectArranged(expected, expected);
    Tracks mixed = expected;
    auto& rows = mixed.observations;
    std::reverse(rows.begin(), rows.end());
    expectArranged(mixed, expected);
    std::sort(rows.begin(), rows.end(), [](const Observation& a, const Observation& b) {
      return std::tie(a.track, a.frame) < std::tie(b.track, b.frame);
    });
    expectArranged(mixed, expected);
    for (std::size_t i = rows.size() - 1; i > 0; --i) {
      std::swap(rows[i], rows[static_cast<std::size_t>(random.real(0.0, static_cast<double>(i)))]);
    }
    expectArranged(mixed, expected);
  }
}

TEST(Tracks, AreArrangedInAFrameByTrackAlone) {
  Tracks tracks = shotWithAGap();
  std::swap(tracks.observations[0], tracks.observations[1]);
  EXPECT_TRUE(tracks.arrange());
  EXPECT_EQ(seenIn(tracks, -3), (std::vector<int>{0, 2}));
}

TEST(Tracks, TwiceInAFrameComeByLineAndAreToldOf) {
  Tracks tracks;
  for (const unsigned line : {9u, 4u, 6u}) {
    see(tracks, 1, 2, {1.0 * line, 0});
    tracks.observations.back().line = line;
  }
  see(tracks, 0, 2, {0, 0});
  see(tracks, 0, 1, {0, 0});
  EXPECT_FALSE(tracks.arrange());
  std::vector<unsigned> lines;
  for (const Observation& o : tracks.inFrame(2)) lines.push_back(o.line);
  EXPECT_EQ(lines, (std::vector<unsigned>{0, 4, 6, 9}));
}

TEST(Tracks, NeedNotBeArrangedAgainToFindWhatIsAdded) {
  Tracks tracks = shotWithAGap();
  ASSERT_TRUE(tracks.arrange());
  see(tracks, 2, 0, {4, 0});
  see(tracks, 0, 5, {5, 0});
  EXPECT_EQ(seenIn(tracks, 0), (std::vector<int>{1, 2}));
  EXPECT_EQ(seenIn(tracks, 5), (std::vector<int>{0}));
}

TEST(Tracks, WithoutObservationsAreArrangedAndInNoFrame) {
  Tracks tracks;
  EXPECT_TRUE(tracks.arrange());
  EXPECT_TRUE(seenIn(tracks, 0).empty());
}
