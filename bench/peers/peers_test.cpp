// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>

#include "bench/peers/measure.h"
#include "bench/support/machine.h"

namespace {

using bench::Competitor;
using bench::Figure;
using bench::Frame;
using bench::Parameters;
using bench::Shot;

std::vector<Parameters> fittedBy(const Competitor& competitor, const Shot& shot,
                                 const std::vector<Frame>& frames) {
  const bench::Run run = competitor.prepare(shot, frames);
  run.solve();
  return run.results();
}

const Competitor& named(const std::vector<Competitor>& all, const std::string& name) {
  for (const Competitor& c : all) {
    if (c.name == name) return c;
  }
  throw std::runtime_error("no competitor " + name);
}

// Gauss-Newton to the end, in double precision, by normal equations and Gaussian elimination.
Parameters optimumOf(const Frame& frame) {
  Parameters p = frame.start;
  const auto values = 2 * static_cast<std::size_t>(frame.count());
  std::vector<double> r(values), rows(8 * values);
  for (int pass = 0; pass < 20; ++pass) {
    bench::evaluate(frame, p.data(), r.data(), rows.data(), 8, 1);
    double a[8][9] = {};
    for (std::size_t k = 0; k < values; ++k) {
      for (std::size_t i = 0; i < 8; ++i) {
        for (std::size_t j = 0; j < 8; ++j) a[i][j] += rows[8 * k + i] * rows[8 * k + j];
        a[i][8] -= rows[8 * k + i] * r[k];
      }
    }
    for (int c = 0; c < 8; ++c) {
      for (int i = 0; i < 8; ++i) {
        if (i == c) continue;
        const double factor = a[i][c] / a[c][c];
        for (int j = c; j < 9; ++j) a[i][j] -= factor * a[c][j];
      }
    }
    for (std::size_t i = 0; i < 8; ++i) p[i] += a[i][8] / a[i][i];
  }
  return p;
}

std::vector<Parameters> optimaOf(const std::vector<Frame>& frames) {
  std::vector<Parameters> optima;
  optima.reserve(frames.size());
  for (const Frame& frame : frames) optima.push_back(optimumOf(frame));
  return optima;
}

}  // namespace

TEST(Competitors, AllReachTheOptimumOfEverySyntheticShot) {
  for (const int tracks : {8, 32, 100, 300}) {
    const Shot shot = bench::syntheticShot(tracks, 20);
    const std::vector<Frame> frames = bench::framesOf(shot);
    ASSERT_EQ(frames.size(), 19u);
    const double optimum = bench::rms(frames, optimaOf(frames));
    for (const Competitor& c : bench::competitors()) {
      const double reached = bench::rms(frames, fittedBy(c, shot, frames));
      EXPECT_LT(reached, 1.001 * optimum) << c.name << ", " << tracks << " tracks";
      EXPECT_GE(reached, (1 - 1e-9) * optimum) << c.name << ", " << tracks << " tracks";
    }
  }
}

TEST(Competitors, AllButThoseWithoutWeightsFollowTheWeights) {
  Shot shot = bench::syntheticShot(40, 10);
  for (std::size_t i = 0; i < shot.scene.tracks.size(); ++i) {
    reference::Track& track = shot.scene.tracks[i];
    for (float& w : track.weights) w = i % 3 == 0 ? 0.05f : 1.0f;
    for (int f = 1; f < 10 && i % 3 == 0; ++f) track.positions(f, 0) += 0.05f;
  }
  const std::vector<Frame> frames = bench::framesOf(shot);
  const double optimum = bench::rms(frames, optimaOf(frames));
  for (const Competitor& c : bench::competitors()) {
    const double reached = bench::rms(frames, fittedBy(c, shot, frames));
    if (c.usesWeights) {
      EXPECT_LT(reached, 1.001 * optimum) << c.name;
    } else {
      EXPECT_GT(reached, 1.001 * optimum) << c.name;
    }
  }
}

TEST(Competitors, LibraryEqualsThePlainImplementation) {
  const Shot shot = bench::syntheticShot(32, 30);
  const std::vector<Frame> frames = bench::framesOf(shot);
  const std::vector<Competitor> all = bench::competitors();
  EXPECT_EQ(fittedBy(named(all, "library"), shot, frames),
            fittedBy(named(all, "plain"), shot, frames));
}

TEST(Competitors, DoNothingTwice) {
  const Shot shot = bench::syntheticShot(16, 10);
  const std::vector<Frame> frames = bench::framesOf(shot);
  for (const Competitor& c : bench::competitors()) {
    const bench::Run run = c.prepare(shot, frames);
    run.solve();
    const std::vector<Parameters> first = run.results();
    run.solve();
    EXPECT_EQ(run.results(), first) << c.name;
  }
}

TEST(Measure, ReportsEveryCompetitorInOrder) {
  const std::vector<Competitor> all = bench::competitors();
  const std::vector<Figure> figures = bench::measure(bench::syntheticShot(8, 5), all, 3);
  ASSERT_EQ(figures.size(), all.size());
  for (std::size_t c = 0; c < all.size(); ++c) {
    EXPECT_EQ(figures[c].name, all[c].name);
    EXPECT_GT(figures[c].microseconds.lower, 0);
    EXPECT_GT(figures[c].rms, 0);
  }
}

TEST(Evaluate, AgreesWithCentralDifferences) {
  const Frame frame = bench::framesOf(bench::syntheticShot(5, 3)).back();
  double r[10], jacobian[80];
  bench::evaluate(frame, frame.start.data(), r, jacobian, 1, 10);
  const double h = 1e-6;
  for (std::size_t e = 0; e < 8; ++e) {
    Parameters below = frame.start;
    Parameters above = frame.start;
    below[e] -= h;
    above[e] += h;
    for (int i = 0; i < 5; ++i) {
      double low[2], high[2];
      bench::residual(frame, i, below.data(), low);
      bench::residual(frame, i, above.data(), high);
      for (int c = 0; c < 2; ++c) {
        const std::size_t at = 10 * e + static_cast<std::size_t>(2 * i + c);
        EXPECT_NEAR(jacobian[at], (high[c] - low[c]) / (2 * h), 1e-8) << i << " by " << e;
      }
    }
  }
}

TEST(Rms, IsTheRootOfTheMeanSquareOfWeightedResiduals) {
  Frame frame;
  frame.x = {1, 0};
  frame.y = {0, 2};
  frame.u = {4, 0};
  frame.v = {0, 2};
  frame.w = {2, 1};
  // Under the identity only the first u is off, by 3, times its weight 2.
  EXPECT_DOUBLE_EQ(bench::rms({frame}, {{1, 0, 0, 0, 1, 0, 0, 0}}), 3.0);
  EXPECT_EQ(bench::rms({}, {}), 0.0);
}

TEST(Quartiles, AreInterpolatedBetweenSortedSamples) {
  const bench::Quartiles q = bench::quartiles({4, 1, 3, 2});
  EXPECT_DOUBLE_EQ(q.lower, 1.75);
  EXPECT_DOUBLE_EQ(q.median, 2.5);
  EXPECT_DOUBLE_EQ(q.upper, 3.25);
}

TEST(Quartiles, OfOneSampleAreThatSample) {
  const bench::Quartiles q = bench::quartiles({5});
  EXPECT_EQ(q.lower, 5);
  EXPECT_EQ(q.median, 5);
  EXPECT_EQ(q.upper, 5);
}

TEST(Quartiles, RefuseNothing) { EXPECT_THROW(bench::quartiles({}), std::invalid_argument); }

TEST(ReadShot, TakesTheBaseFramesTracksToMinusOneToOne) {
  const std::string stem = testing::TempDir() + "bench_shot";
  std::ofstream(stem + ".json") << R"({"base_frame": 1, "frame_count": 2})";
  std::ofstream(stem + ".csv") << "track,frame,x,y,weight\n"
                                  "a,0,100,50,0.5\na,1,100,50,1\nb,1,300,150,0.25\n";
  const Shot shot = bench::readShot(testing::TempDir(), "bench_shot");
  ASSERT_EQ(shot.scene.tracks.size(), 2u);
  EXPECT_EQ(shot.scene.baseFrame, 1);
  EXPECT_EQ(shot.scene.tracks[0].positions.elements, (reference::Floats{-1, -0.5f, -1, -0.5f}));
  EXPECT_EQ(shot.scene.tracks[1].positions.elements, (reference::Floats{0, 0, 1, 0.5f}));
  EXPECT_EQ(shot.scene.tracks[0].weights, (reference::Floats{0.5f, 1}));
  EXPECT_EQ(shot.scene.tracks[1].weights, (reference::Floats{0, 0.25f}));
}

TEST(ReadShot, NamesTheFileThatIsMissingAndTheLineThatIsNotARow) {
  const std::string stem = testing::TempDir() + "bench_broken";
  std::ofstream(stem + ".json") << R"({"base_frame": 0, "frame_count": 2})";
  std::ofstream(stem + ".csv") << "track,frame,x,y,weight\na,0,100\n";
  const auto messageFor = [](const std::string& name) -> std::string {
    try {
      bench::readShot(testing::TempDir(), name);
    } catch (const std::runtime_error& e) {
      return e.what();
    }
    return "";
  };
  EXPECT_NE(messageFor("bench_broken").find("bench_broken.csv:2:"), std::string::npos);
  EXPECT_NE(messageFor("bench_missing").find("bench_missing.json"), std::string::npos);
}

TEST(FramesOf, StartEachFrameFromItsNeighbour) {
  Shot shot = bench::syntheticShot(12, 5);
  shot.scene.baseFrame = 2;
  MMatchmove solved;
  bench::fill(solved, shot);
  solved.solve();
  const std::vector<Frame> frames = bench::framesOf(shot);
  ASSERT_EQ(frames.size(), 4u);
  const int neighbours[] = {1, 2, 2, 3};
  for (std::size_t f = 0; f < 4; ++f) {
    for (int e = 0; e < 8; ++e) {
      EXPECT_EQ(frames[f].start[static_cast<std::size_t>(e)],
                static_cast<double>(solved.outputs[neighbours[f]].data[e]));
    }
  }
}

// Peers bring other LAPACKs along; none of them may take over from the library's.
TEST(Machine, UsesTheLapackThatTheLibraryIsLinkedTo) {
  const bench::Machine machine = bench::thisMachine();
  EXPECT_TRUE(std::filesystem::equivalent(machine.lapack, CORNERPIN_BENCH_LAPACK))
      << machine.lapack << " instead of " << CORNERPIN_BENCH_LAPACK;
  EXPECT_TRUE(std::filesystem::equivalent(machine.blas, CORNERPIN_BENCH_BLAS))
      << machine.blas << " instead of " << CORNERPIN_BENCH_BLAS;
}
