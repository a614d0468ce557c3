// SPDX-License-Identifier: BSD-3-Clause
#include "shot/advice/remedy.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>

#include "shot/solve/selection.h"
#include "shot/solve/shot_solver.h"
#include "shot/time/retouch.h"
#include "tests/shot/solve/small_shots.h"

using namespace cornerpin;
using small_shots::see;

namespace {

constexpr int kFrames = 60;
constexpr int kFar = 20;  // the track near the top right corner
constexpr Stretch kBad = {8, 13};

bool isBad(int frame) { return kBad.first <= frame && frame <= kBad.last; }

const NamedQuad kSign = {"sign", {{{0, 0}, {800, 0}, {800, 600}, {0, 600}}}};

SolveOptions fromTheFirst() {
  SolveOptions options;
  options.base = 0;
  options.quads = {kSign};
  return options;
}

// Of a camera that shakes: what frames before and behind do says little.
Homography shaken(int frame) {
  const double f = frame == 0 ? 0.0 : 10.0 * std::sin(2.3 * frame);
  return {{{1 + 0.004 * f, 0.01 * f, 3 * f},
           {-0.008 * f, 1 + 0.002 * f, -2 * f},
           {1e-6 * f, -2e-6 * f, 1}}};
}

// Tracks all over the sign, off by up to half a pixel. In the bad frames those alone are seen of
// which `bunched` holds, and the one near the top right is off.
using Motion = Homography (*)(int frame);
Tracks shotWith(double off, const std::function<bool(int)>& bunched,
                Motion motion = small_shots::motion) {
  std::mt19937 random(7);
  Tracks tracks;
  for (int f = 0; f < kFrames; ++f) {
    for (int t = 0; t < 40; ++t) {
      const double dx = static_cast<double>(random()) / 4294967296.0 - 0.5;
      const double dy = static_cast<double>(random()) / 4294967296.0 - 0.5;
      const int row = t / 5;
      const Point place = t < kFar ? Point{20.0 * (t % 5), 600.0 - 25.0 * row}
                                   : Point{40.0 * (t * 7 % 20), 30.0 * (t * 11 % 20)};
      if (isBad(f) && !bunched(t)) continue;
      const Point at = map(motion(f), t == kFar ? Point{780, 20} : place);
      see(tracks, t, f, {at.x + dx + (isBad(f) && t == kFar ? off : 0.0), at.y + dy});
    }
  }
  tracks.arrange();
  return tracks;
}

// How far the sign's corners are from where they ought to be, at most.
double trueError(const ShotResult& result, Stretch frames) {
  double largest = 0.0;
  for (int f = frames.first; f <= frames.last; ++f) {
    for (Point corner : kSign.corners) {
      const Point there = map(result.frames[static_cast<std::size_t>(f)].h, corner);
      const Point right = map(small_shots::motion(f), corner);
      largest = std::max(largest, std::hypot(there.x - right.x, there.y - right.y));
    }
  }
  return largest;
}

double largestErrorIn(const ShotResult& result, Stretch frames) {
  double largest = 0.0;
  for (int f = frames.first; f <= frames.last; ++f) {
    largest = std::max(largest, result.frames[static_cast<std::size_t>(f)].expectedError);
  }
  return largest;
}

}  // namespace

TEST(Remedy, IsNotLookedForWhereAllIsGood) {
  const Tracks tracks = shotWith(0.0, [](int) { return true; });
  const ShotResult result = solveShot(tracks, fromTheFirst());
  EXPECT_TRUE(remediesFor(tracks, fromTheFirst(), result).empty());
}

TEST(Remedy, IsToDropATrackThatIsOffWhereTheOthersCannotTell) {
  Tracks tracks = shotWith(25.0, [](int t) { return t <= kFar; });
  const ShotResult result = solveShot(tracks, fromTheFirst());
  EXPECT_GT(trueError(result, kBad), 20.0);
  const std::vector<Remedy> remedies = remediesFor(tracks, fromTheFirst(), result);
  ASSERT_EQ(remedies.size(), 1u);
  EXPECT_EQ(remedies[0].kind, RemedyKind::DropTrack);
  EXPECT_EQ(remedies[0].track, kFar);
  EXPECT_EQ(remedies[0].stretch.frames.first, kBad.first);
  EXPECT_EQ(remedies[0].stretch.frames.last, kBad.last);
  select(tracks, {}, {{kFar, {kBad.first, kBad.last}}});
  const ShotResult without = solveShot(tracks, fromTheFirst());
  EXPECT_EQ(remedies[0].after, largestErrorIn(without, kBad));
  EXPECT_LT(trueError(without, kBad), 8.0);
}

// What is said of tracks that are not there is what a shot says that has them.
TEST(Remedy, IsToTrackMoreNearACornerThatNothingHolds) {
  const Tracks tracks = shotWith(
      0.0, [](int t) { return t < kFar && t % 5 < 4; }, shaken);
  const ShotResult result = solveShot(tracks, fromTheFirst());
  const std::vector<Remedy> remedies = remediesFor(tracks, fromTheFirst(), result);
  ASSERT_EQ(remedies.size(), 1u);
  EXPECT_EQ(remedies[0].kind, RemedyKind::AddTracks);
  EXPECT_EQ(kSign.corners[remedies[0].stretch.corner].x, 800.0);
  EXPECT_EQ(kSign.corners[remedies[0].stretch.corner].y, 0.0);
  EXPECT_LT(remedies[0].after, 0.5 * largestErrorIn(result, kBad));
  const Tracks more = shotWith(
      0.0, [](int t) { return (t < kFar && t % 5 < 4) || t == kFar; }, shaken);
  const double having = largestErrorIn(solveShot(more, fromTheFirst()), kBad);
  EXPECT_GT(remedies[0].after, 0.3 * having);
  EXPECT_LT(remedies[0].after, 2.0 * having);
}

TEST(Remedy, IsToFillInFramesThatAreHeld) {
  const Tracks tracks = shotWith(0.0, [](int) { return false; });
  SolveOptions options = fromTheFirst();
  options.reduce = false;
  const ShotResult result = solveShot(tracks, options);
  const std::vector<Remedy> remedies = remediesFor(tracks, options, result);
  ASSERT_EQ(remedies.size(), 1u);
  EXPECT_EQ(remedies[0].kind, RemedyKind::Fill);
  ShotResult filled = result;
  retouch(filled, {std::nullopt, true, {}});
  EXPECT_EQ(remedies[0].after, largestErrorIn(filled, kBad));
  for (const Remedy& remedy : remediesFor(tracks, options, filled)) {
    EXPECT_NE(remedy.kind, RemedyKind::Fill);
  }
}

TEST(Remedy, IsNotLookedForInHugeShots) {
  const Tracks tracks = shotWith(25.0, [](int t) { return t <= kFar; });
  const ShotResult result = solveShot(tracks, fromTheFirst());
  Tracks huge = tracks;
  huge.observations.resize(kMostTried + 1, tracks.observations.back());
  EXPECT_TRUE(remediesFor(huge, fromTheFirst(), result).empty());
}

// Six frames with two more tracks each are more than are tried.
TEST(Remedy, IsNotToTrackMoreWhereThatMakesAShotHuge) {
  const Tracks tracks = shotWith(
      0.0, [](int t) { return t < kFar && t % 5 < 4; }, shaken);
  ShotResult result = solveShot(tracks, fromTheFirst());
  for (FrameResult& frame : result.frames) frame.strongest = -1;
  ASSERT_EQ(remediesFor(tracks, fromTheFirst(), result).size(), 1u);
  Tracks large = tracks;
  large.observations.resize(kMostTried, tracks.observations.back());
  EXPECT_TRUE(remediesFor(large, fromTheFirst(), result).empty());
}

TEST(Remedy, IsToldWithWhatToType) {
  ShotResult result;
  result.baseFrame = 54;
  result.quads = {kSign};
  DoubtfulStretch stretch;
  stretch.frames = {0, 11};
  stretch.corner = 1;
  result.frames.resize(1);
  result.maxError = 2.0;
  result.frames[0].expectedError = 20.0;
  Tracks tracks;
  tracks.names = {"t133", "p,1", "it's"};
  const auto told = [&](RemedyKind kind, int track, double after) {
    return describe({kind, stretch, track, after, 9}, result, tracks);
  };
  EXPECT_EQ(told(RemedyKind::DropTrack, 0, 3.0), "without t133 there it is 3 px: --drop t133:0-11");
  EXPECT_EQ(told(RemedyKind::DropTrack, 1, 3.0),
            "without p,1 there it is 3 px: --drop '\"p,1\":0-11'");
  EXPECT_EQ(told(RemedyKind::DropTrack, 2, 3.0),
            "without it's there it is 3 px: --drop 'it'\\''s:0-11'");
  EXPECT_EQ(told(RemedyKind::Fill, -1, 2.5),
            "interpolated between the frames around it is 2.5 px: --fill");
  EXPECT_EQ(told(RemedyKind::AddTracks, -1, 7.214),
            "with two more tracks near the top right corner, there and in frame 54, it is 7.21 px");
}

TEST(Remedy, IsToldByTheDoubtfulFramesWhereNoErrorIsTooLarge) {
  ShotResult result;
  result.maxError = 2.0;
  result.frames.resize(1);
  result.frames[0].expectedError = 2.0;
  DoubtfulStretch stretch;
  stretch.frames = {7, 7};
  Tracks tracks;
  tracks.names = {"a"};
  const auto told = [&](std::size_t doubtful) {
    return describe({RemedyKind::DropTrack, stretch, 0, 1.0, doubtful}, result, tracks);
  };
  EXPECT_EQ(told(0), "without a there no frame is doubtful: --drop a:7");
  EXPECT_EQ(told(1), "without a there only 1 frame is doubtful: --drop a:7");
  EXPECT_EQ(told(2), "without a there only 2 frames are doubtful: --drop a:7");
}

TEST(Advice, IsWhatHelps) {
  const Tracks tracks = shotWith(25.0, [](int t) { return t <= kFar; });
  ShotResult result = solveShot(tracks, fromTheFirst());
  result.advice = {{{1, 2}, "of an earlier time"}};
  std::vector<Phase> phases;
  advise(tracks, fromTheFirst(), result,
         [&](Phase phase, std::size_t, std::size_t) { phases.push_back(phase); });
  ASSERT_EQ(result.advice.size(), 1u);
  EXPECT_EQ(result.advice[0].frames.first, kBad.first);
  EXPECT_NE(result.advice[0].text.find("--drop t20:8-13"), std::string::npos);
  EXPECT_EQ(phases, std::vector<Phase>(4, Phase::Advice));
}
