// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/hand_over.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "shot/plane/similarity.h"
#include "tests/shot/solve/small_shots.h"

using namespace cornerpin;
using namespace small_shots;

TEST(ObservationsOf, CountsFramesFromTheFirstAndLeavesOutWeightZero) {
  Tracks tracks;
  see(tracks, 0, 5, {1, 2}, 0.5f);
  see(tracks, 1, 5, {3, 4}, 0.0f);
  see(tracks, 1, 7, {5, 6});
  const ObservationsOf observations = observationsOf(tracks);
  ASSERT_EQ(observations(0).tracks(), (std::vector<int>{0}));
  EXPECT_EQ(observations(0).present()[0].y, 2.0);
  EXPECT_EQ(observations(0).weights()[0], 0.5);
  EXPECT_TRUE(observations(1).empty());
  EXPECT_EQ(observations(2).tracks(), (std::vector<int>{1}));
}

// A grid of n x n places over the square from 0 to `size`.
namespace {

Points grid(int n, double size) {
  Points points;
  for (int row = 0; row < n; ++row) {
    for (int column = 0; column < n; ++column) {
      points.add({size * column / (n - 1), size * row / (n - 1)});
    }
  }
  return points;
}

BaseFrame baseOf(const Points& places) {
  Tracks tracks;
  int t = 0;
  for (Point p : places) see(tracks, t++, 0, p);
  return {tracks, 0};
}

}  // namespace

// The gain's square goes with one over the tracks: g(seen)^2 <= g(base)^2 + g(all)^2 when no more
// than half are lost.
TEST(BaseSuffices, WhileHalfOfItsTracksAreSeen) {
  const Points all = grid(6, 100);
  const Quad surface = squareAround(all);
  const BaseFrame base = baseOf(all);
  const auto seen = [&](std::size_t step, std::size_t from) {
    Points some;
    for (std::size_t i = from; i < all.size(); i += step) some.add(all[i]);
    return some;
  };
  Points most = seen(2, 0);
  for (Point p : seen(4, 1)) most.add(p);
  EXPECT_TRUE(baseSuffices(base, all, most, surface));
  EXPECT_FALSE(baseSuffices(base, all, seen(3, 0), surface));
  EXPECT_TRUE(baseSuffices(base, seen(3, 0), seen(3, 0), surface));  // nobody else to help
}

TEST(BaseSuffices, NotWhereItsTracksBunchInACorner) {
  const Points all = grid(6, 100);
  EXPECT_FALSE(baseSuffices(baseOf(all), all, grid(5, 40), squareAround(all)));
}

namespace {

Points times(int n) {
  Points points;
  for (int i = 0; i < n; ++i) {
    for (Point p : grid(3, 100)) points.add(p);
  }
  return points;
}

}  // namespace

// Of tracks that are there n times the gain's square is an n-th: 1/7 <= 1/20 + 1/10 < 1/6.
TEST(BaseSuffices, AddsTheVarianceFromTheBaseFrameToThatFromTheFrame) {
  const BaseFrame base = baseOf(times(20));
  const Quad surface = squareAround(times(1));
  EXPECT_TRUE(baseSuffices(base, times(10), times(7), surface));
  EXPECT_FALSE(baseSuffices(base, times(10), times(6), surface));
}

// (1/24 + 1/24) 0.99^2 > 1/24 + 1/25, but (1/25 + 1/25) 0.99^2 < 1/25 + 1/26.
TEST(OthersHelp, FromAHundredthOfTheErrorOn) {
  const Quad surface = squareAround(times(1));
  EXPECT_TRUE(othersHelp(times(25), times(24), surface));
  EXPECT_FALSE(othersHelp(times(26), times(25), surface));
}

TEST(OthersHelp, WhereTheBaseFramesTracksFixNothing) {
  const Points three = {{0, 0}, {100, 0}, {0, 100}};
  EXPECT_TRUE(othersHelp(grid(3, 100), three, squareAround(times(1))));
  EXPECT_TRUE(othersHelp(three, three, squareAround(times(1))));
}

namespace {

// 36 tracks of the base frame in a grid, of which a frame may show some, and 36 others whose places
// are known too.
struct Handing {
  Matches matches(std::size_t baseTracks, Point baseError) {
    Matches result;
    for (std::size_t i = 0; i < 36; ++i) {
      const Point p = places[i];
      const Point q = map(h, p);
      if (i % 4 < baseTracks) {
        const double k = static_cast<double>(i % 5) - 2.0;
        result.add({p, {q.x + k * baseError.x, q.y + k * baseError.y}, 1.0, static_cast<int>(i)});
      }
    }
    for (std::size_t i = 0; i < 36; ++i) {
      const Point p = {places[i].x + 3, places[i].y + 2};
      result.add({p, map(h, p), 1.0, static_cast<int>(36 + i)});
    }
    return result;
  }

  FrameFit fit(Matches& frame) { return fitHandedOver(fitter, base, frame, sweep); }

  Homography h = motion(3);
  Points places = grid(6, 400);
  BaseFrame base = baseOf(places);
  ShotUnits units = {Similarity::fitting(places), Similarity::fitting(places)};
  FrameFitter fitter{units, SolveOptions()};
  Quad surface = squareAround(places);
  Sweep sweep{toLibrary(kIdentity), kIdentity, false, SweepMemory(72), surface};
};

// The tracks up to the last one are anywhere in the frame.
Matches strewn(const Matches& frame, int last) {
  Matches result;
  std::mt19937 random(3);
  for (std::size_t i = 0; i < frame.size(); ++i) {
    Match match = frame[i];
    if (match.track <= last) {
      const double x = static_cast<double>(random() % 400);
      const double y = static_cast<double>(random() % 400);
      match.present = {x, y};
    }
    result.add(match);
  }
  return result;
}

}  // namespace

TEST(FitHandedOver, TakesTheBaseFramesTracksAloneWhereTheySuffice) {
  Handing shot;
  Matches frame = shot.matches(4, {0, 0});
  EXPECT_EQ(shot.fit(frame).verdict.status, Status::Solved);
  EXPECT_EQ(frame.size(), 36u);
  EXPECT_EQ(frame.tracks().back(), 35);
  EXPECT_EQ(shot.sweep.surface[2].x, shot.surface[2].x);
}

TEST(FitHandedOver, TakesAllWhereFewOfTheBaseFramesAreLeft) {
  Handing shot;
  Matches frame = shot.matches(1, {0, 0});
  const FrameFit fit = shot.fit(frame);
  EXPECT_EQ(fit.verdict.status, Status::Solved);
  EXPECT_EQ(frame.size(), 45u);
  EXPECT_EQ(fit.robust.goodCount, 45u);
}

// The surface then is the square around the tracks: 0 .. 403 by 0 .. 402.
TEST(FitHandedOver, MovesTheSurfaceOnWithTheTracks) {
  Handing shot;
  Matches frame = shot.matches(1, {0, 0});
  frame.add({{5000, 300}, {100, 100}, 1.0, 71});  // a bad one
  shot.fit(frame);
  double high = 0.0;
  for (Point p : shot.sweep.surface) high = std::max(high, p.x);
  EXPECT_DOUBLE_EQ(high, 403.0);
}

// Its tracks are strewn about: no transform fits five of them.
TEST(FitHandedOver, TakesAllWhereTheBaseFramesTracksLeadToNothing) {
  Handing shot;
  Matches frame = strewn(shot.matches(4, {0, 0}), 35);
  const FrameFit fit = shot.fit(frame);
  EXPECT_EQ(fit.verdict.status, Status::Solved);
  EXPECT_EQ(frame.size(), 72u);
  EXPECT_GE(fit.robust.goodCount, 36u);
  EXPECT_FALSE(shot.sweep.chainBroken);
}

namespace {

void expectSame(const Quad& a, const Quad& b) {
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(a[i].x, b[i].x);
    EXPECT_EQ(a[i].y, b[i].y);
  }
}

}  // namespace

// A place near the horizon may be anywhere.
TEST(FitByAll, MovesTheSurfaceOnToTheGoodTracksButForFarOffOnes) {
  Handing shot;
  Matches frame = shot.matches(0, {0, 0});
  const Quad expected = squareAround(frame.base());
  frame.add({{-9000, 5000}, map(shot.h, {-9000, 5000}), 1.0, 72});
  frame.add({{100, 100}, {700, 900}, 1.0, 73});
  shot.sweep.memory = SweepMemory(74);
  EXPECT_EQ(fitByAll(shot.fitter, shot.base, frame, shot.sweep).robust.goodCount, 37u);
  expectSame(shot.sweep.surface, expected);
}

TEST(FitByAll, LeavesTheSurfaceWhereItIsWithTheBaseFramesTracksAlone) {
  Handing shot;
  std::vector<bool> chosen(72, false);
  std::fill_n(chosen.begin(), 30, true);
  const Matches frame = shot.matches(4, {0, 0}).subset(chosen);
  EXPECT_EQ(fitByAll(shot.fitter, shot.base, frame, shot.sweep).verdict.status, Status::Solved);
  expectSame(shot.sweep.surface, shot.surface);
}

// Tracks in a corner do not tell how far the surface reaches, nor where the next frame starts.
TEST(FitByAll, LeavesTheSurfaceWhereTheTransformIsWeak) {
  Handing shot;
  Matches close;
  int track = 36;
  for (Point p : grid(5, 20)) close.add({p, map(shot.h, p), 1.0, track++});
  const FrameFit fit = fitByAll(shot.fitter, shot.base, close, shot.sweep);
  EXPECT_EQ(fit.verdict.status, Status::Solved);
  EXPECT_GT(fit.gain, kLargestGain);
  EXPECT_FALSE(fit.isFirm());
  expectSame(shot.sweep.surface, shot.surface);
  EXPECT_NE(shot.sweep.neighbour, fit.h);
  EXPECT_TRUE(shot.sweep.chainBroken);
}

TEST(FitHandedOver, LeavesTheSurfaceWhereNoTransformIsFound) {
  Handing shot;
  const Matches strays = strewn(shot.matches(1, {0, 0}), 71);
  Matches frame;
  for (std::size_t i = 0; i < strays.size(); ++i) {
    Match match = strays[i];
    match.present.y = 100.0;
    frame.add(match);
  }
  EXPECT_NE(shot.fit(frame).verdict.status, Status::Solved);
  for (std::size_t c = 0; c < 4; ++c) {
    EXPECT_EQ(shot.sweep.surface[c].x, shot.surface[c].x);
    EXPECT_EQ(shot.sweep.surface[c].y, shot.surface[c].y);
  }
}

// The base frame's tracks fix no more than a translation well, as all that keep to their places are
// within a few pixels; with all others the frame is held, as one of these is beyond single
// precision.
TEST(FitHandedOver, HoldsTheNeighbourAndNotWhatTheBaseFramesTracksLedTo) {
  Handing shot;
  Matches close;
  int track = 0;
  for (const Points& places : {grid(4, 400), grid(5, 4)}) {
    for (Point p : places) close.add({p, map(shot.h, p), 1.0, track++});
  }
  Matches frame = strewn(close, 15);  // those far apart
  shot.base = baseOf(close.base());
  Sweep alone = shot.sweep;
  ASSERT_FALSE(shot.fitter.fit(frame, alone).isFirm());
  ASSERT_NE(alone.neighbour, kIdentity);
  frame.add({{200, 200}, {1e300, 0}, 1.0, 71});
  const FrameFit fit = shot.fit(frame);
  EXPECT_EQ(fit.verdict.status, Status::Held);
  EXPECT_EQ(frame.size(), 42u);
  EXPECT_EQ(fit.h, kIdentity);
  EXPECT_EQ(shot.sweep.neighbour, kIdentity);
}
