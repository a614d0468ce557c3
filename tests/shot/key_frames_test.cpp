// SPDX-License-Identifier: BSD-3-Clause
#include "tests/shot/key_frames.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/shot/known_shots.h"

using namespace cornerpin;

namespace {

// 24 tracks of which two die after every frame. x is the frame and y the track, so that matches
// tell where they come from.
Tracks dyingTracks(int frames) {
  Tracks tracks;
  for (int t = 0; t < 24; ++t) tracks.names.push_back("t" + std::to_string(t));
  for (int f = 0; f < frames; ++f) {
    for (int t = 2 * f; t < 24; ++t) {
      Observation o;
      o.x = f;
      o.y = t;
      o.track = t;
      o.frame = f;
      tracks.observations.push_back(o);
    }
  }
  return tracks;
}

using Pairs = std::vector<std::pair<int, int>>;

// The key frame and the frame of every fit.
Pairs fitsOf(const Tracks& tracks, int base, const made::KeyFrames& rule) {
  Pairs pairs;
  const made::PairFit fit = [&](const Matches& matches) {
    pairs.emplace_back(static_cast<int>(matches[0].base.x), static_cast<int>(matches[0].present.x));
    for (const std::size_t i : {std::size_t{0}, matches.size() - 1})
      EXPECT_EQ(matches[i].base.y, matches[i].present.y);
    return std::optional<Homography>(kIdentity);
  };
  chained(tracks, base, fit, rule);
  return pairs;
}

void expectTruth(const made::KnownShot& shot, int base, const made::KeyFrames& rule) {
  const std::vector<Homography> all = chained(shot.tracks, base, made::plainPairFit, rule);
  ASSERT_EQ(all.size(), shot.motion.size());
  // Roundings of 1000 px, made greater by each of at most 200 links.
  const double bound = 1000.0 * 200.0 * 1000.0 * std::numeric_limits<double>::epsilon();
  for (std::size_t f = 0; f < all.size(); ++f) {
    for (double error : cornerErrors(shot, all[f], base, static_cast<int>(f)))
      EXPECT_LE(error, bound) << f;
  }
}

}  // namespace

TEST(Chained, GivesTheTruthWithoutNoise) {
  made::Relay what;
  what.noise = 0.0;
  const made::KnownShot shot = relay(what, 1);
  for (const int base : {0, 100, 199}) {
    expectTruth(shot, base, {});
    expectTruth(shot, base, made::kFrameToFrame);
  }
}

TEST(Chained, GivesTheTruthAlongAWallWithoutNoise) {
  made::Pan what;
  what.noise = 0.0;
  expectTruth(pan(what, 1), 0, {});
}

// Of 24 tracks fewer than 8 are left in frame 9, and of the 8 of frame 8 fewer than 2 2/3 in 11.
TEST(Chained, ChangesTheKeyFrameWhenFewerThanItsShareAreLeft) {
  const Pairs expected = {{0, 1}, {0, 2}, {0, 3}, {0, 4},  {0, 5},  {0, 6},
                          {0, 7}, {0, 8}, {8, 9}, {8, 10}, {10, 11}};
  EXPECT_EQ(fitsOf(dyingTracks(12), 0, {1.0 / 3.0, 1}), expected);
}

TEST(Chained, ChangesTheKeyFrameWhenFewerThanTheFewestAreLeft) {
  const Pairs expected = {{0, 1}, {0, 2}, {0, 3}, {0, 4}, {0, 5}, {0, 6}, {6, 7}, {7, 8}};
  EXPECT_EQ(fitsOf(dyingTracks(9), 0, {0.0, 12}), expected);
}

TEST(Chained, FitsEveryFrameAgainstItsNeighbourFrameToFrameOnBothSidesOfTheBase) {
  const Pairs expected = {{2, 3}, {3, 4}, {2, 1}, {1, 0}};
  EXPECT_EQ(fitsOf(dyingTracks(5), 2, made::kFrameToFrame), expected);
}

TEST(Chained, HoldsTheNeighboursTransformWithoutAFit) {
  const Homography aside = {{{1, 0, 3}, {0, 1, 4}, {0, 0, 1}}};
  const made::PairFit fit = [&](const Matches& matches) {
    return matches[0].present.x == 2.0 ? std::nullopt : std::optional<Homography>(aside);
  };
  const std::vector<Homography> all = chained(dyingTracks(4), 0, fit, made::kFrameToFrame);
  EXPECT_EQ(all[0], kIdentity);
  EXPECT_EQ(all[1], aside);
  EXPECT_EQ(all[2], aside);
  EXPECT_EQ(all[3], product(aside, aside));  // against frame 1, the last one that was fitted
}

TEST(PlainPairFit, HasNoTransformForThreeMatchesNorForOnesOnALine) {
  Matches matches;
  for (double x : {0.0, 1.0, 2.0}) matches.add({{x, 3 - x * x}, {x, 3 - x * x}});
  EXPECT_FALSE(made::plainPairFit(matches));
  Matches line;
  for (double x : {0.0, 1.0, 2.0, 3.0}) line.add({{5, 5}, {x, x}});
  EXPECT_FALSE(made::plainPairFit(line));
}
