// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "shot/solve/shot_solver.h"
#include "tests/shot/solve/small_shots.h"

using namespace cornerpin;
using namespace small_shots;

namespace {

// What a track is in a frame, by its runs; they have to cover the shot in order, each once.
TrackUse useIn(const ShotResult& result, std::size_t track, int frame) {
  const std::vector<TrackRun>& runs = result.tracks[track].runs;
  EXPECT_EQ(runs.front().first, result.frames.front().frame);
  EXPECT_EQ(runs.back().last, result.frames.back().frame);
  for (std::size_t i = 1; i < runs.size(); ++i) EXPECT_EQ(runs[i].first, runs[i - 1].last + 1);
  for (const TrackRun& run : runs) {
    if (run.first <= frame && frame <= run.last) return run.use;
  }
  ADD_FAILURE() << "no run has frame " << frame;
  return TrackUse::Absent;
}

// Twelve tracks on a lattice over `frames` frames, with normal noise of 0.3.
Tracks latticeShot(int frames) {
  std::mt19937_64 random(7);
  std::normal_distribution<double> normal(0, 0.3);
  Tracks tracks;
  for (int f = 0; f < frames; ++f) {
    for (int t = 0; t < 12; ++t) {
      const int column = t % 4;
      const int row = t / 4;
      const Point p = map(motion(f), {100.0 + 130.0 * column, 80.0 + 150.0 * row});
      const double dx = normal(random);
      const double dy = normal(random);
      see(tracks, t, f, {p.x + dx, p.y + dy});
    }
  }
  return tracks;
}

Observation& observationOf(Tracks& tracks, int track, int frame) {
  return *std::find_if(tracks.observations.begin(), tracks.observations.end(),
                       [&](const Observation& o) { return o.track == track && o.frame == frame; });
}

}  // namespace

TEST(ShotTracks, AreGoodIgnoredOrAbsent) {
  Tracks tracks = latticeShot(9);
  for (int f : {6, 7}) observationOf(tracks, 5, f).x += 40.0;  // slides off
  observationOf(tracks, 2, 3).weight = 0.0f;
  observationOf(tracks, 2, 4).weight = 0.0f;
  SolveOptions options;
  options.base = 4;
  options.handOver = false;
  const ShotResult result = solveShot(tracks, options);
  for (int f = 0; f < 9; ++f) {
    EXPECT_EQ(useIn(result, 0, f), TrackUse::Good) << f;
    EXPECT_EQ(useIn(result, 5, f), f == 6 || f == 7 ? TrackUse::Ignored : TrackUse::Good) << f;
    EXPECT_EQ(useIn(result, 2, f), f == 3 || f == 4 ? TrackUse::Absent : TrackUse::Ignored) << f;
  }
  EXPECT_EQ(result.tracks[0].runs.size(), 1u);
  EXPECT_EQ(result.tracks[5].runs.size(), 3u);
}

TEST(ShotTracks, AreGoodInAsManyFramesAsTheFramesCount) {
  Tracks tracks = latticeShot(9);
  for (int f = 0; f < 9; ++f) {
    if (f != 4) observationOf(tracks, f, f).y -= 25.0;
  }
  SolveOptions options;
  options.base = 4;
  const ShotResult result = solveShot(tracks, options);
  for (const FrameResult& frame : result.frames) {
    if (frame.frame == 4) continue;
    ASSERT_EQ(frame.verdict.status, Status::Solved);
    int good = 0;
    for (std::size_t t = 0; t < 12; ++t) good += useIn(result, t, frame.frame) == TrackUse::Good;
    EXPECT_EQ(good, frame.good) << frame.frame;
    EXPECT_EQ(good, 11) << frame.frame;
  }
}

TEST(ShotTracks, AreAllGoodWithLossNoneAndIgnoredInHeldFrames) {
  Tracks tracks;
  for (int f : {0, 1}) seeAll(tracks, f);
  seeAll(tracks, 2, 3);
  SolveOptions options = based(0);
  options.reduce = false;
  observationOf(tracks, 4, 1).x += 90.0;
  const ShotResult result = solveShot(tracks, options);
  ASSERT_EQ(result.frames[2].verdict.status, Status::Held);
  for (std::size_t t = 0; t < 5; ++t) {
    EXPECT_EQ(useIn(result, t, 0), TrackUse::Good);
    EXPECT_EQ(useIn(result, t, 1), TrackUse::Good);
    EXPECT_EQ(useIn(result, t, 2), t < 3 ? TrackUse::Ignored : TrackUse::Absent);
  }
  options.reduce = true;
  const ShotResult reduced = solveShot(tracks, options);
  ASSERT_EQ(reduced.frames[2].verdict.status, Status::Reduced);
  EXPECT_EQ(useIn(reduced, 2, 2), TrackUse::Good);
  EXPECT_EQ(useIn(reduced, 3, 2), TrackUse::Absent);
}

// The last frame shows five tracks within 3 px: too few to tell bad ones.
TEST(ShotTracks, AreAllGoodWhereNothingTellsBadOnes) {
  Tracks tracks = latticeShot(3);
  for (int f = 0; f < 4; ++f) {
    for (int t = 12; t < 17; ++t) {
      see(tracks, t, f, map(motion(f), {300.0 + t % 3, 200.0 + t % 4}));
    }
  }
  std::stable_sort(tracks.observations.begin(), tracks.observations.end(),
                   [](const Observation& a, const Observation& b) { return a.frame < b.frame; });
  SolveOptions options;
  options.base = 0;
  const ShotResult result = solveShot(tracks, options);
  ASSERT_EQ(result.frames[3].verdict.status, Status::Reduced);
  ASSERT_EQ(result.frames[3].tracks, 5);
  for (std::size_t t = 12; t < 17; ++t) EXPECT_EQ(useIn(result, t, 3), TrackUse::Good) << t;
}

TEST(ShotTracks, LieWhereTheBaseFrameSeesThem) {
  Tracks tracks = latticeShot(6);
  observationOf(tracks, 3, 2).weight = 0.0f;
  SolveOptions options;
  options.base = 2;
  options.handOver = false;
  const ShotResult result = solveShot(tracks, options);
  std::vector<double> noises;
  for (const FrameResult& frame : result.frames) {
    if (frame.frame != 2) noises.push_back(frame.figures.noise);
  }
  std::sort(noises.begin(), noises.end());
  ASSERT_EQ(result.tracks.size(), 12u);
  EXPECT_EQ(result.tracks[7].name, "t7");
  EXPECT_EQ(result.tracks[7].place.x, observationOf(tracks, 7, 2).x);
  EXPECT_EQ(result.tracks[7].place.y, observationOf(tracks, 7, 2).y);
  EXPECT_NEAR(result.tracks[7].covariance.xx, noises[2] * noises[2], 1e-15);
  EXPECT_EQ(result.tracks[7].covariance.yy, result.tracks[7].covariance.xx);
  EXPECT_EQ(result.tracks[7].covariance.xy, 0.0);
  EXPECT_TRUE(std::isnan(result.tracks[3].place.x));
  EXPECT_TRUE(std::isnan(result.tracks[3].covariance.xx));
}

// Track 3 is absent from the base frame, and the five others tell where it is: within a few times
// 0.3 / sqrt(5) = 0.13.
TEST(ShotTracks, AreHandedOverToWithAPlaceAndItsCovariance) {
  Tracks tracks = latticeShot(6);
  observationOf(tracks, 3, 2).weight = 0.0f;
  SolveOptions options;
  options.base = 2;
  const ShotResult result = solveShot(tracks, options);
  EXPECT_EQ(result.handedOver, 1);
  const TrackResult& track = result.tracks[3];
  const Point truth = map(motion(2), {100.0 + 130.0 * 3, 80.0});
  EXPECT_LT(std::sqrt(squaredDistance(track.place, truth)), 1.0);
  EXPECT_GT(track.covariance.xx, std::pow(0.08, 2));
  EXPECT_LT(track.covariance.xx, std::pow(0.6, 2));
  for (int f = 0; f < 6; ++f) {
    EXPECT_EQ(useIn(result, 3, f), f == 2 ? TrackUse::Absent : TrackUse::Good) << f;
  }
}

TEST(ShotTracks, HaveNoCovarianceWithoutNoise) {
  Tracks tracks;
  for (int f : {0, 1}) seeAll(tracks, f, 4);
  const ShotResult result = solveShot(tracks, based(0));
  EXPECT_EQ(result.tracks[0].place.x, 100.0);
  EXPECT_TRUE(std::isnan(result.tracks[0].covariance.xx));
  EXPECT_TRUE(std::isnan(result.tracks[0].covariance.xy));
}

TEST(ShotTracks, LeaveTheirTextsWithTheFrames) {
  Tracks tracks = latticeShot(3);
  const ShotResult result = solveShot(tracks, {});
  EXPECT_EQ(result.referenceFrame, result.baseFrame);
  for (const FrameResult& frame : result.frames) {
    EXPECT_EQ(whyOf(frame).empty(), frame.verdict.status == Status::Base);
  }
  seeAll(tracks, 3, 2);
  EXPECT_EQ(reasonOf(solveShot(tracks, {}).frames[3]), "2 of the 4 tracks needed");
}
