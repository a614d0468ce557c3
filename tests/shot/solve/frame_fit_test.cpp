// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/frame_fit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <random>

#include "tests/shot/solve/small_shots.h"

using namespace cornerpin;
using namespace small_shots;

TEST(SolveShot, ReducesAFrameWithThreeTracksAndGoesOn) {
  Tracks tracks;
  for (int f : {0, 1}) seeAll(tracks, f);
  seeAll(tracks, 2, 3);
  seeAll(tracks, 3);
  const ShotResult result = solveShot(tracks, based(0));
  EXPECT_EQ(result.frames[2].verdict.status, Status::Reduced);
  EXPECT_EQ(result.frames[2].verdict.model, Model::Affine);
  EXPECT_EQ(reasonOf(result.frames[2].verdict), "3 of the 4 tracks needed");
  EXPECT_EQ(result.frames[2].tracks, 3);
  EXPECT_TRUE(result.frames[2].verdict.onTop);
  EXPECT_EQ(result.frames[2].h[2], result.frames[1].h[2]);
  EXPECT_LT(result.frames[2].rms, 1e-9);
  EXPECT_LT(errorAtCorners(result.frames[2]), 1.0);  // what the perspective changes in a frame
  EXPECT_EQ(result.frames[3].verdict.status, Status::Solved);
  EXPECT_EQ(result.frames[3].verdict.model, Model::Projective);
  EXPECT_LT(result.frames[3].rms, 1e-3);
}

// As the tracks die one by one the fit has less and less of the motion, but always more than the
// last transform that was fitted in full.
TEST(SolveShot, GoesDownTheLadderAsTracksDie) {
  Tracks tracks;
  const int left[] = {5, 5, 4, 3, 2, 1, 0};
  for (int f = 0; f < 7; ++f) seeAll(tracks, f, left[f]);
  see(tracks, 0, 7, {0, 0}, 0.0f);
  const ShotResult result = solveShot(tracks, based(0));
  const Model models[] = {Model::Projective, Model::Projective,  Model::Projective, Model::Affine,
                          Model::Similarity, Model::Translation, Model::Held,       Model::Held};
  for (std::size_t f = 1; f < 8; ++f) {
    const FrameResult& frame = result.frames[f];
    EXPECT_EQ(frame.verdict.model, models[f]) << f;
    EXPECT_EQ(frame.verdict.status, f < 3   ? Status::Solved
                                    : f < 6 ? Status::Reduced
                                            : Status::Held);
    std::printf("%d tracks: %-11s %.3f px off the truth at the worst corner\n", frame.tracks,
                nameOf(frame.verdict.model), errorAtCorners(frame));
    if (frame.verdict.status != Status::Reduced) continue;
    FrameResult lastInFull = frame;
    lastInFull.h = result.frames[2].h;
    EXPECT_LT(errorAtCorners(frame), 0.5 * errorAtCorners(lastInFull)) << f;
  }
  EXPECT_EQ(result.frames[7].h, result.frames[5].h);
}

TEST(SolveShot, ReducesNearlyCollinearTracksByTheirSpread) {
  Tracks tracks;
  seeAll(tracks, 0);
  for (int t = 5; t < 8; ++t) see(tracks, t, 0, {300 + 2.0 * t, 250 + 2.0 * t});
  seeAll(tracks, 1);
  for (int t = 5; t < 8; ++t) see(tracks, t, 1, map(motion(1), {300 + 2.0 * t, 250 + 2.0 * t}));
  for (int t = 5; t < 8; ++t) see(tracks, t, 2, map(motion(2), {300 + 2.0 * t, 250 + 2.0 * t}));
  const FrameResult frame = solveShot(tracks, based(0)).frames[2];
  EXPECT_EQ(frame.verdict.model, Model::Translation);
  EXPECT_EQ(reasonOf(frame.verdict),
            "3 of the 4 tracks needed, too close together or too near one line");
  EXPECT_LT(errorAtCorners(frame), 10.0);  // twice what one frame moves by
}

namespace {

// Nine tracks on a grid; from frame 3 on those in the middle alone go on, a patch of `size` of the
// surface. Everything has noise.
Tracks shrinkingShot(double size, unsigned seed) {
  std::mt19937 random(seed);
  std::normal_distribution<double> noise(0, 0.5);
  Tracks tracks;
  for (int f = 0; f < 10; ++f) {
    for (int t = 0; t < 18; ++t) {
      const double reach = t < 9 ? 200.0 : 200.0 * size;
      const Point p = {300 + reach * (t % 3 - 1), 260 + reach * (t / 3 % 3 - 1)};
      const Point q = map(motion(f), p);
      if (f < 3 || t >= 9) see(tracks, t, f, {q.x + noise(random), q.y + noise(random)});
    }
  }
  return tracks;
}

}  // namespace

// What a full fit makes of a small patch's noise at the surface's corners is more than what an
// affine one on top of the neighbour's misses of the motion.
TEST(SolveShot, IsNearerToTheTruthWithALowerModelWhereTracksAreBunched) {
  std::printf("worst corner, RMS over frames and 20 noisy shots\n");
  for (double size : {0.05, 0.1, 0.15, 0.2, 0.4}) {
    double squares[2] = {};
    bool reduced = false;
    for (unsigned seed = 0; seed < 20; ++seed) {
      for (bool check : {false, true}) {
        SolveOptions options = based(0);
        options.loss = check ? Loss::Tukey : Loss::None;
        const ShotResult result = solveShot(shrinkingShot(size, seed), options);
        for (std::size_t f = 3; f < 10; ++f) {
          squares[check] += std::pow(errorAtCorners(result.frames[f]), 2) / (7 * 20);
          reduced = result.frames[f].verdict.status == Status::Reduced;
        }
      }
    }
    std::printf("patch %.2f of the surface: in full %8.2f px, %s %8.2f px\n", size,
                std::sqrt(squares[0]), reduced ? "reduced" : "in full", std::sqrt(squares[1]));
    if (reduced) {
      EXPECT_LT(squares[1], squares[0]) << size;
    }
    EXPECT_EQ(reduced, size < 0.17) << size;
  }
}

// Beside it the others look like one place.
TEST(SolveShot, SolvesBesideATrackThatIsFlungFarAway) {
  Tracks tracks;
  for (int f : {0, 1}) {
    seeAll(tracks, f);
    for (int t = 5; t < 9; ++t) see(tracks, t, f, map(motion(f), {70.0 * t, 30.0 * (t % 4) + 150}));
    see(tracks, 9, f, f == 0 ? Point{200, 200} : Point{1e7, -1e7});
  }
  SolveOptions options = based(0);
  options.loss = Loss::Tukey;
  const FrameResult frame = solveShot(tracks, options).frames[1];
  EXPECT_EQ(frame.verdict.status, Status::Solved);
  EXPECT_EQ(frame.good, 9);
  EXPECT_LT(errorAtCorners(frame), 1e-3);
}

// The base frame's places set the solver's coordinates and say how far the surface reaches.
TEST(SolveShot, SolvesBesideATrackThatIsFarAwayInTheBaseFrame) {
  for (const double far : {2e3, 1e4, 1e6, 1e9}) {
    Tracks tracks;
    for (int f : {0, 1, 2}) {
      seeAll(tracks, f);
      for (int t = 5; t < 9; ++t) {
        see(tracks, t, f, map(motion(f), {70.0 * t, 30.0 * (t % 4) + 150}));
      }
      see(tracks, 9, f, f == 0 ? Point{far, -far} : map(motion(f), {200, 200}));
    }
    SolveOptions options = based(0);
    options.loss = Loss::Tukey;
    const ShotResult result = solveShot(tracks, options);
    for (int f : {1, 2}) {
      const FrameResult& frame = result.frames[static_cast<std::size_t>(f)];
      EXPECT_EQ(frame.verdict.status, Status::Solved) << far;
      EXPECT_EQ(frame.good, 9) << far;
      EXPECT_LT(errorAtCorners(frame), 1e-3) << far;
      EXPECT_LT(frame.sigma, 0.1) << far << ", an eighth of a pixel over tracks 1,000 wide";
    }
  }
}

// The others of eight tracks jump to anywhere.
TEST(SolveShot, WantsFiveTracksThatAgreeAsAnyFourDo) {
  for (unsigned seed = 1; seed <= 20; ++seed) {
    for (int good : {4, 5}) {
      std::mt19937 random(seed);
      const auto upTo = [&](double most) {
        return most * static_cast<double>(random()) / 4294967296.0;
      };
      Tracks tracks;
      seeAll(tracks, 0);
      for (int t = 5; t < 8; ++t) see(tracks, t, 0, {90.0 + 80 * t, 100.0 + 100 * (t % 3)});
      seeAll(tracks, 1, good);
      for (int t = good; t < 8; ++t) see(tracks, t, 1, {upTo(600), upTo(500)});
      SolveOptions options = based(0);
      options.loss = Loss::Tukey;
      const FrameResult frame = solveShot(tracks, options).frames[1];
      if (good == 4) {
        EXPECT_EQ(frame.verdict.status, Status::Reduced) << "seed " << seed;
        EXPECT_EQ(reasonOf(frame.verdict),
                  "only 4 of its 8 tracks agree on a transform, any four do");
      } else {
        EXPECT_EQ(frame.verdict.status, Status::Solved)
            << "seed " << seed << ": " << reasonOf(frame.verdict);
        EXPECT_LT(errorAtCorners(frame), 1e-3) << "seed " << seed;
      }
    }
  }
}

TEST(SolveShot, GivesManyTracksOnALineASimilarity) {
  Tracks tracks;
  for (int f : {0, 1}) {
    for (int t = 0; t < 9; ++t) {
      const Point p = {70.0 * t, f == 0 ? 90.0 * (t % 4) : 20.0 * t};
      see(tracks, t, f, p);
    }
  }
  SolveOptions options = based(0);
  options.loss = Loss::Tukey;
  const FrameResult frame = solveShot(tracks, options).frames[1];
  EXPECT_EQ(frame.verdict.status, Status::Reduced);
  EXPECT_EQ(frame.verdict.model, Model::Similarity);
  EXPECT_EQ(reasonOf(frame.verdict), "all its tracks but one, or all of them, lie on one line");
}

TEST(SolveShot, GivesTracksOnALineASimilarity) {
  Tracks tracks;
  seeAll(tracks, 0);
  for (int t = 0; t < 5; ++t) see(tracks, t, 1, {100.0 + 31 * t, 200.0 + 17 * t});
  const ShotResult result = solveShot(tracks, based(0));
  EXPECT_EQ(result.frames[1].verdict.status, Status::Reduced);
  EXPECT_EQ(result.frames[1].verdict.model, Model::Similarity);
  EXPECT_EQ(reasonOf(result.frames[1].verdict),
            "all its tracks but one, or all of them, lie on one line");
}

TEST(SolveShot, GivesTracksThatLieOnALineInTheBaseFrameASimilarity) {
  Tracks tracks;
  for (int t = 0; t < 5; ++t) see(tracks, t, 0, {100.0 + 31 * t, 200.0 + 17 * t});
  seeAll(tracks, 1);
  const ShotResult result = solveShot(tracks, based(0));
  EXPECT_EQ(result.frames[1].verdict.model, Model::Similarity);
  EXPECT_EQ(reasonOf(result.frames[1].verdict),
            "all its tracks but one, or all of them, lie on one line in the base frame");
}

TEST(SolveShot, GivesTracksInOnePlaceATranslation) {
  Tracks tracks;
  seeAll(tracks, 0);
  for (int t = 0; t < 5; ++t) see(tracks, t, 1, {100, 200});
  EXPECT_EQ(solveShot(tracks, based(0)).frames[1].verdict.model, Model::Translation);
}

TEST(SolveShot, HoldsAPositionBeyondSinglePrecision) {
  Tracks tracks;
  seeAll(tracks, 0);
  for (int t = 0; t < 5; ++t) see(tracks, t, 1, {t == 2 ? 1e300 : 10.0 * t, 3.0 * t * t});
  const ShotResult result = solveShot(tracks, based(0));
  EXPECT_EQ(result.frames[1].verdict.status, Status::Held);
  EXPECT_EQ(reasonOf(result.frames[1].verdict), "a position is too large for single precision");
}

// One corner crosses over to the far side of its neighbours: no camera sees that.
TEST(SolveShot, HoldsAFitThatPutsTracksOnBothSidesOfTheHorizon) {
  Tracks tracks;
  const std::vector<Point> base = {{0, 0}, {100, 0}, {100, 100}, {0, 100}};
  const std::vector<Point> here = {{0, 0}, {100, 0}, {30, 30}, {0, 100}};
  for (int t = 0; t < 4; ++t) see(tracks, t, 0, base[static_cast<std::size_t>(t)]);
  for (int t = 0; t < 4; ++t) see(tracks, t, 1, here[static_cast<std::size_t>(t)]);
  const ShotResult result = solveShot(tracks, based(0));
  EXPECT_EQ(result.frames[1].verdict.status, Status::Held);
  EXPECT_EQ(reasonOf(result.frames[1].verdict), "the fit puts tracks on both sides of the horizon");
  EXPECT_EQ(result.frames[1].h, kIdentity);
}

TEST(SolveShot, HoldsAFitThatThrows) {
  Tracks tracks;
  for (int f : {0, 1}) seeAll(tracks, f);
  for (Observation& o : tracks.observations) o.weight = 3e38f;  // its products overflow
  const ShotResult result = solveShot(tracks, based(0));
  EXPECT_EQ(result.frames[1].verdict.status, Status::Held);
  EXPECT_EQ(reasonOf(result.frames[1].verdict), "the fit failed: nan");
}

TEST(SolveShot, StartsAgainFromTheLinearSolutionBehindAHeldFrame) {
  // Turned upside down during the gap: too far for a start at the neighbour's transform.
  Tracks tracks;
  const Homography turn = {{{-1, 0.1, 900}, {-0.1, -1, 800}, {1e-3, -8e-4, 1}}};
  seeAll(tracks, 0);
  for (int t = 0; t < 5; ++t) see(tracks, t, 2, map(turn, kCorners[static_cast<std::size_t>(t)]));
  const FrameResult frame = solveShot(tracks, based(0)).frames[2];
  EXPECT_EQ(frame.verdict.status, Status::Solved);
  EXPECT_LT(frame.rms, 1e-3);
}

TEST(SolveShot, MultipliesResidualsByTheWeight) {
  // One track doubled with two readings 10 px apart: the optimum puts it at w^2 means.
  Tracks tracks;
  std::vector<Point> points = kCorners;
  points.push_back(kCorners.back());
  for (int t = 0; t < 6; ++t) see(tracks, t, 0, points[static_cast<std::size_t>(t)]);
  points[5].x += 10;
  for (int t = 0; t < 6; ++t) {
    see(tracks, t, 1, points[static_cast<std::size_t>(t)], t == 5 ? 0.5f : t == 4 ? 1.0f : 1000.0f);
  }
  // The four corners pin the transform, so the middle cannot move: what is left is its residuals.
  const FrameResult frame = solveShot(tracks, based(0)).frames[1];
  EXPECT_NEAR(frame.rms, std::sqrt(100.0 / 6), 1e-3);
}
