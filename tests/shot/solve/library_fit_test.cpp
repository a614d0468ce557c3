// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/library_fit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>

#include "cornerpin/cornerpin.h"
#include "shot/files/track_reader.h"
#include "shot/solve/surface_map.h"
#include "tests/shot/solve/small_shots.h"

using namespace cornerpin;
using namespace small_shots;

namespace {

// The whole shot at once, tracks times frames, as a caller of the library would write it.
MMatchmove denseScene(const Tracks& tracks, int base, const Similarity& conditioning) {
  MMatchmove scene;
  scene.tracks.resize(static_cast<int>(tracks.names.size()));
  for (int t = 0; t < scene.tracks.size(); ++t) {
    scene.tracks[t].positions =
        MGenMatrix<float>(tracks.frameCount(), 2, MGenMatrix<float>::ColumnMajor);
    scene.tracks[t].weights = MGenVector<float>(tracks.frameCount());
  }
  for (const Observation& o : tracks.observations) {
    const int f = o.frame - tracks.firstFrame();
    const Point p = conditioning.apply({o.x, o.y});
    scene.tracks[o.track].positions(f, 0) = static_cast<float>(p.x);
    scene.tracks[o.track].positions(f, 1) = static_cast<float>(p.y);
    scene.tracks[o.track].weights[f] = o.weight;
  }
  scene.baseFrame = base - tracks.firstFrame();
  return scene;
}

Similarity conditioningOf(const Tracks& tracks, int base) {
  Points points;
  for (const Observation& o : tracks.inFrame(base)) {
    if (o.weight > 0.0f) points.add({o.x, o.y});
  }
  return Similarity::fitting(points);
}

void expectTheBitsOfADenseSolve(const Tracks& tracks, int base, Units units) {
  Similarity conditioning;
  if (units == Units::Fit) conditioning = conditioningOf(tracks, base);
  MMatchmove scene = denseScene(tracks, base, conditioning);
  scene.solve();
  const ShotResult result = solveShot(tracks, based(base, units));
  for (int f = 0; f < tracks.frameCount(); ++f) {
    const FrameResult& frame = result.frames[static_cast<std::size_t>(f)];
    ASSERT_NE(frame.verdict.status, Status::Held)
        << "frame " << frame.frame << ": " << reasonOf(frame.verdict);
    Homography dense;
    for (int i = 0; i < 9; ++i) {
      dense[static_cast<std::size_t>(i / 3)][static_cast<std::size_t>(i % 3)] =
          static_cast<double>(scene.outputs[f](i / 3, i % 3));
    }
    if (frame.verdict.status == Status::Solved)
      dense = denormalised(dense, conditioning, conditioning);
    ASSERT_EQ(std::memcmp(&dense, &frame.h, sizeof dense), 0)
        << "base " << base << " frame " << frame.frame;
  }
}

class DenseSolve : public testing::TestWithParam<const char*> {};

}  // namespace

TEST_P(DenseSolve, HasTheSameBits) {
  const Tracks tracks = readTracks(std::string(CORNERPIN_DATA "/") + GetParam() + ".csv");
  const int first = tracks.firstFrame();
  const int last = tracks.lastFrame();
  for (int base : {first, (first + last) / 2, last}) {
    expectTheBitsOfADenseSolve(tracks, base, Units::Fit);
  }
}
INSTANTIATE_TEST_SUITE_P(RealShots, DenseSolve,
                         testing::Values("planks", "board", "facade", "box", "highway"),
                         [](const auto& info) { return std::string(info.param); });

// Up to the first frame that the screen's corners cannot fix.
TEST(DenseSolve, HasTheSameBitsOnFourTracks) {
  Tracks tracks = readTracks(CORNERPIN_DATA "/screen4.csv");
  const auto isLater = [](const Observation& o) { return o.frame > 86; };
  auto& rows = tracks.observations;
  rows.erase(std::remove_if(rows.begin(), rows.end(), isLater), rows.end());
  for (int base : {0, 8, 43, 86}) expectTheBitsOfADenseSolve(tracks, base, Units::Fit);
}

TEST(DenseSolve, HasTheSameBitsInRawUnits) {
  std::mt19937 random(20240607);
  std::uniform_real_distribution<double> noise(-0.01, 0.01);
  Tracks tracks;
  for (int f = 3; f < 20; ++f) {
    for (int t = 0; t < 5; ++t) {
      const Point p = kCorners[static_cast<std::size_t>(t)];
      const Point q = map(motion(f - 3), p);
      see(tracks, t, f, {(q.x - 300) / 300 + noise(random), (q.y - 250) / 300 + noise(random)},
          t == f % 5 ? 0.5f : 1.0f);
    }
  }
  expectTheBitsOfADenseSolve(tracks, 10, Units::Raw);
}

namespace {

const ShotUnits kFileAlone;  // the file's unit for everything

// The matches of the second of two frames in which all five tracks stand.
struct TwoFrames {
  Tracks tracks = movingShot(2);
  BaseFrame base{tracks, 0};
  Matches matches = SurfaceMap(base, tracks.names.size()).matchesIn(tracks, 1);
};

}  // namespace

TEST(LibraryFit, HasTheWeightedCostInTheFilesUnit) {
  const Similarity unit = {{300, 250}, 0.005};
  Tracks tracks = movingShot(2);
  for (std::size_t i = 5; i < 10; ++i) {
    tracks.observations[i].x += i == 7 ? 3.0 : -1.0;
    tracks.observations[i].weight = 0.5f * static_cast<float>(i);
  }
  const BaseFrame base(tracks, 0);
  const Matches matches = SurfaceMap(base, tracks.names.size()).matchesIn(tracks, 1);
  LibraryFit fit({unit, unit});
  ASSERT_TRUE(fit.load(matches));
  const LibraryResult result = fit.from(toLibrary(kIdentity));
  ASSERT_EQ(result.shortfall, Shortfall::None);
  double cost = 0.0;
  for (std::size_t i = 0; i < 5; ++i) {
    const Observation& o = tracks.observations[5 + i];
    const Point p = map(result.h, kCorners[i]);
    cost += static_cast<double>(o.weight * o.weight) *
            (std::pow(o.x - p.x, 2) + std::pow(o.y - p.y, 2));
  }
  EXPECT_GT(cost, 1.0);
  EXPECT_NEAR(result.cost, cost, 1e-9 * cost);
}

TEST(LibraryFit, ForgetsTheTracksOfTheFrameBefore) {
  TwoFrames two;
  Matches four;
  Matches bent;
  for (std::size_t i = 0; i < 5; ++i) {
    Match match = two.matches[i];
    if (i < 4) four.add(match);
    match.present.x += 7.0 * static_cast<double>(i);
    bent.add(match);
  }
  LibraryFit used(kFileAlone);
  ASSERT_TRUE(used.load(bent));
  used.from(toLibrary(kIdentity));
  ASSERT_TRUE(used.load(four));
  LibraryFit fresh(kFileAlone);
  ASSERT_TRUE(fresh.load(four));
  EXPECT_EQ(used.from(toLibrary(kIdentity)).h, fresh.from(toLibrary(kIdentity)).h);
}

TEST(LibraryFit, FindsAnExactTransformFromTheLinearSolution) {
  const TwoFrames two;
  const Similarity unit = {{300, 250}, 0.005};
  LibraryFit fit({unit, unit});
  ASSERT_TRUE(fit.load(two.matches));
  const LibraryResult result = fit.fromLinearFit();
  EXPECT_EQ(result.shortfall, Shortfall::None);
  EXPECT_LT(result.cost, 1e-6);
}

// The largest float is 3.4028235e38: what is nearer to the next one is infinite.
TEST(LibraryFit, TakesNoPositionBeyondSinglePrecision) {
  Tracks tracks;
  see(tracks, 0, 0, {3.5e38, 0});
  see(tracks, 1, 0, {0, 0});
  see(tracks, 0, 1, {0, 0});
  see(tracks, 1, 1, {0, 0});
  see(tracks, 1, 2, {0, -3.5e38});
  see(tracks, 1, 3, {3.4e38, -3.4e38});
  const BaseFrame base(tracks, 0);
  LibraryFit fit(kFileAlone);
  for (int frame : {1, 2, 3}) {
    const Matches matches = SurfaceMap(base, tracks.names.size()).matchesIn(tracks, frame);
    EXPECT_EQ(fit.load(matches), frame == 3) << frame;
  }
}
