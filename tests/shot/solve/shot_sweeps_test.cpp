// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/shot_sweeps.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "tests/shot/solve/small_shots.h"

using namespace cornerpin;
using namespace small_shots;

namespace {

// A grid of places that tracks are born at: every fifth frame eight of them, each for 20 frames, so
// that 32 are seen at a time. Positions have normal noise.
struct Relay {
  Relay(int frames, double noise) {
    std::mt19937 random(5);
    std::normal_distribution<double> normal(0.0, noise > 0.0 ? noise : 1.0);
    for (int f = 0; f < frames; ++f) {
      for (int generation = f / 5 - 3; generation <= f / 5; ++generation) {
        for (int i = 0; i < 8; ++i) {
          const double dx = noise > 0.0 ? normal(random) : 0.0;
          const double dy = noise > 0.0 ? normal(random) : 0.0;
          show(generation, i, f, dx, dy);
        }
      }
    }
  }

  static Point placeOf(int generation, int i) {
    return {60.0 + 120.0 * (i % 4) + 7.0 * ((generation + 90) % 13),
            80.0 + 250.0 * (i / 4.0 - i % 4 / 4.0) + 11.0 * ((generation + 90) % 11)};
  }

  void show(int generation, int i, int frame, double dx, double dy) {
    const Point p = map(motion(frame), placeOf(generation, i));
    see(tracks, 8 * (generation + 3) + i, frame, {p.x + dx, p.y + dy});
  }

  Tracks tracks;
};

SolveOptions fromFrame(int base) {
  SolveOptions options;
  options.base = base;
  return options;
}

double worstError(const ShotResult& result) {
  double worst = 0.0;
  for (const FrameResult& frame : result.frames) worst = std::max(worst, errorAtCorners(frame));
  return worst;
}

}  // namespace

// The tracks of the base frame are gone after 20 frames.
TEST(ShotSweeps, CarriesAShotOnWhenTheBaseFramesTracksAreGone) {
  const Relay relay(60, 0.0);
  const ShotResult result = solveShot(relay.tracks, fromFrame(0));
  for (const FrameResult& frame : result.frames) {
    EXPECT_NE(frame.verdict.status, Status::Held) << frame.frame;
    EXPECT_NE(frame.verdict.status, Status::Reduced) << frame.frame;
  }
  EXPECT_LT(worstError(result), 1e-3);
  EXPECT_EQ(result.baseTracks, 32);
  EXPECT_EQ(result.handedOver, 8 * 11);
  EXPECT_EQ(result.leftOut, 0);
  EXPECT_EQ(result.frames[4].handedOver, 0);
  EXPECT_EQ(result.frames[5].handedOver, 8);
  EXPECT_EQ(result.frames[15].tracks, 32);
  EXPECT_EQ(result.frames[15].handedOver, 24);
  EXPECT_EQ(result.frames[59].tracks, 32);
  EXPECT_EQ(result.frames[59].handedOver, 32);
}

TEST(ShotSweeps, GoesBothWaysFromABaseInTheMiddle) {
  const Relay relay(60, 0.0);
  const ShotResult middle = solveShot(relay.tracks, fromFrame(30));
  for (std::size_t f = 0; f < 60; ++f) {
    EXPECT_EQ(middle.frames[f].verdict.status, f == 30 ? Status::Base : Status::Solved) << f;
    const Homography expected = product(motion(static_cast<int>(f)), inverse(motion(30)));
    for (Point p : kCorners) {
      EXPECT_LT(std::sqrt(squaredDistance(map(middle.frames[f].h, p), map(expected, p))), 1e-3)
          << f;
    }
  }
}

TEST(ShotSweeps, IsLeftOutOnDemandAndWithoutALoss) {
  const Relay relay(60, 0.0);
  SolveOptions baseOnly = fromFrame(0);
  baseOnly.handOver = false;
  SolveOptions plain = fromFrame(0);
  plain.loss = Loss::None;
  for (const SolveOptions& options : {baseOnly, plain}) {
    const ShotResult result = solveShot(relay.tracks, options);
    EXPECT_EQ(result.handedOver, 0);
    EXPECT_EQ(result.leftOut, 8 * 11);
    EXPECT_EQ(result.frames[59].verdict.status, Status::Held);
    EXPECT_EQ(result.frames[59].verdict.shortfall, Shortfall::NoTracks);
  }
}

// A track that is seen for less than three frames has no place.
TEST(ShotSweeps, ChangesNothingWhereNoTrackIsAdded) {
  Tracks tracks = movingShot(20);
  for (int f = 10; f < 12; ++f) see(tracks, 5, f, {f * 30.0, 200});
  std::stable_sort(tracks.observations.begin(), tracks.observations.end(),
                   [](const Observation& a, const Observation& b) { return a.frame < b.frame; });
  SolveOptions baseOnly = fromFrame(0);
  baseOnly.handOver = false;
  const ShotResult with = solveShot(tracks, fromFrame(0));
  const ShotResult without = solveShot(tracks, baseOnly);
  EXPECT_EQ(with.handedOver, 0);
  EXPECT_EQ(with.leftOut, 1);
  for (std::size_t f = 0; f < 20; ++f) EXPECT_EQ(with.frames[f].h, without.frames[f].h) << f;
}

TEST(ShotSweeps, ReportsEveryFrameOfBothPasses) {
  const Relay relay(60, 0.0);
  std::size_t calls = 0;
  std::size_t last = 0;
  solveShot(relay.tracks, fromFrame(7), [&](std::size_t done, std::size_t total) {
    EXPECT_EQ(done, ++calls);
    last = total;
  });
  EXPECT_EQ(calls, 119u);  // the base frame is fitted to nothing
  EXPECT_EQ(last, 119u);
}

// Eight late tracks that slide through their first 10 frames and then rest: only where they rest do
// they count.
TEST(ShotSweeps, PutsATrackThatSlidesWhereItRests) {
  Relay relay(60, 0.3);
  Tracks& tracks = relay.tracks;
  for (Observation& o : tracks.observations) {
    const int birth = 5 * (o.track / 8 - 3);
    if (birth > 0 && o.track % 8 < 2 && o.frame < birth + 8) o.x += 3.0 * (birth + 8 - o.frame);
  }
  const ShotResult result = solveShot(tracks, fromFrame(0));
  EXPECT_LT(worstError(result), 1.5);
  for (const FrameResult& frame : result.frames) {
    if (frame.frame < 20) continue;
    EXPECT_GE(frame.good, 22) << frame.frame;
    EXPECT_LT(frame.goodRms, 0.6) << frame.frame;
  }
}

namespace {

// 40 tracks of a base frame, and from frame 10 on 80 others, which creep off together from where
// they are first seen, at the speed given.
Tracks creeping(double speed) {
  Tracks tracks;
  std::mt19937 random(8);
  std::normal_distribution<double> normal(0.0, 0.1);
  for (int f = 0; f < 60; ++f) {
    for (int t = 0; t < (f < 10 ? 40 : 120); ++t) {
      const Point p = map(motion(f), {50.0 + 40 * (t * 7 % 11), 60.0 + 35 * (t * 5 % 13)});
      const double dx = normal(random) + (t < 40 ? 0.0 : speed * (f - 10));
      const double dy = normal(random);
      see(tracks, t, f, {p.x + dx, p.y + dy});
    }
  }
  return tracks;
}

}  // namespace

TEST(ShotSweeps, LetsTheBaseFramesTracksDecideWhereTheOthersContradictThem) {
  const Tracks tracks = creeping(0.02);
  SolveOptions baseOnly = fromFrame(0);
  baseOnly.handOver = false;
  const ShotResult with = solveShot(tracks, fromFrame(0));
  const ShotResult without = solveShot(tracks, baseOnly);
  EXPECT_EQ(with.handedOver, 0);
  EXPECT_EQ(with.leftOut, 80);
  for (std::size_t f = 0; f < 60; ++f) EXPECT_EQ(with.frames[f].h, without.frames[f].h) << f;
}

TEST(ShotSweeps, LetsAllTracksDecideWhereTheyAgree) {
  const ShotResult result = solveShot(creeping(0.0), fromFrame(0));
  EXPECT_EQ(result.handedOver, 80);
  EXPECT_EQ(result.frames[9].handedOver, 0);
  for (std::size_t f = 10; f < 60; ++f) EXPECT_EQ(result.frames[f].handedOver, 80) << f;
}

// A camera that goes along a wall, 25 pixels a frame: ten pictures' widths from where it began.
// What counts as a transform that keeps noise within bounds goes along with it.
TEST(ShotSweeps, GoesAsFarFromTheBaseAsTracksLead) {
  Tracks tracks;
  for (int f = 0; f < 200; ++f) {
    for (int column = (f + 1) / 2; 50 * column <= 25 * f + 500; ++column) {
      for (int row = 0; row < 5; ++row) {
        const double x = 50.0 * column - 25.0 * f;
        see(tracks, 5 * column + row, f, {x, 40.0 + 80.0 * row + 7.0 * (column % 3)});
      }
    }
  }
  const ShotResult result = solveShot(tracks, fromFrame(0));
  for (std::size_t f = 1; f < 200; ++f) {
    EXPECT_EQ(result.frames[f].verdict.status, Status::Solved) << f;
  }
  EXPECT_GT(result.frames[199].handedOver, 40);
}
