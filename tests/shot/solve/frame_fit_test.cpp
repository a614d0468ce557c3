// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/frame_fit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <random>

#include "shot/solve/surface_map.h"
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
    EXPECT_TRUE(reduced || size > 0.3) << size;
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

// Five are too few to tell that it is the bad one.
TEST(SolveShot, SolvesSixTracksOfWhichOneIsFlungFarAway) {
  for (int count : {5, 6}) {
    Tracks tracks;
    for (int f : {0, 1}) {
      seeAll(tracks, f, count - 1);
      see(tracks, 5, f, f == 0 ? Point{200, 200} : Point{1e9, -1e9});
    }
    SolveOptions options = based(0);
    options.loss = Loss::Tukey;
    const FrameResult frame = solveShot(tracks, options).frames[1];
    EXPECT_EQ(frame.verdict.shortfall, count == 5 ? Shortfall::OnOneLine : Shortfall::None);
  }
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

TEST(SolveShot, ReducesManyTracksThatHaveCollapsedIntoALine) {
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

// Every place is a number; where the transform would carry the origin, three times as far off as
// the tracks, is none.
TEST(SolveShot, HoldsATransformThatIsNotFinite) {
  for (Loss loss : {Loss::None, Loss::Tukey}) {
    Tracks tracks;
    for (int f : {0, 1}) {
      for (int t = 0; t < 9; ++t) {
        const Point p = {(t % 3) * 2e307, t * 5e306};
        see(tracks, t, f, f == 0 ? Point{1e308 + p.x, p.y} : Point{3 * p.x, 3 * p.y});
      }
    }
    SolveOptions options = based(0);
    options.loss = loss;
    const ShotResult result = solveShot(tracks, options);
    EXPECT_EQ(result.frames[1].verdict.status, Status::Held) << nameOf(loss);
    EXPECT_EQ(reasonOf(result.frames[1].verdict), "the fit is not finite") << nameOf(loss);
    EXPECT_EQ(result.frames[1].h, kIdentity) << nameOf(loss);
  }
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

namespace {

double upTo(double most, std::mt19937& random) {
  return most * static_cast<double>(random()) / 4294967296.0;
}

// The second of two frames of a shot whose first tracks, in these places, move with the surface
// while the others, in those, jump to anywhere.
FrameResult fittedBesideJumps(const std::vector<Point>& good, const std::vector<Point>& bad,
                              unsigned seed) {
  std::mt19937 random(seed);
  Tracks tracks;
  int count = 0;
  for (Point p : good) see(tracks, count++, 0, p);
  for (Point p : bad) see(tracks, count++, 0, p);
  count = 0;
  for (Point p : good) see(tracks, count++, 1, map(motion(1), p));
  for (std::size_t i = 0; i < bad.size(); ++i) {
    const double x = upTo(600, random);
    see(tracks, count++, 1, {x, upTo(500, random)});
  }
  SolveOptions options = based(0);
  options.loss = Loss::Tukey;
  options.influences = true;
  return solveShot(tracks, options).frames[1];
}

const std::vector<Point> kFarApart = {{100, 400}, {500, 60}, {110, 300}, {490, 90}, {300, 480}};

}  // namespace

// All tracks end up in a heap, out of which nothing tells the one from the other.
TEST(SolveShot, HoldsTracksThatNoTransformFits) {
  std::mt19937 random(3);
  Tracks tracks;
  for (int t = 0; t < 8; ++t) see(tracks, t, 0, {70.0 * t, 90.0 * (t * 3 % 5)});
  for (int t = 0; t < 8; ++t) see(tracks, t, 1, {100 + upTo(0.1, random), 200 + upTo(0.1, random)});
  SolveOptions options = based(0);
  options.loss = Loss::Tukey;
  const FrameResult frame = solveShot(tracks, options).frames[1];
  EXPECT_EQ(frame.verdict.status, Status::Held);
  EXPECT_EQ(frame.verdict.shortfall, Shortfall::NoAgreement);
  EXPECT_TRUE(std::isnan(frame.sigma));
}

// Beside those on the line a transform may meet some that jumped, and does where they agree by
// chance.
TEST(SolveShot, FitsALowerModelToTheGoodTracksOfALine) {
  std::vector<Point> line;
  for (int i = 0; i < 12; ++i) line.push_back({40.0 * i, 27.0 * i + 10});
  int frames = 0;
  for (unsigned seed = 1; seed <= 20; ++seed) {
    const FrameResult frame = fittedBesideJumps(line, kFarApart, seed);
    if (frame.verdict.shortfall != Shortfall::GoodOnOneLine) continue;
    ++frames;
    EXPECT_EQ(frame.verdict.status, Status::Reduced) << "seed " << seed;
    EXPECT_EQ(frame.verdict.fitted, frame.verdict.good) << "seed " << seed;
    EXPECT_GE(frame.good, 12) << "seed " << seed;
  }
  EXPECT_GT(frames, 10);
}

TEST(SolveShot, FitsALowerModelToTheGoodTracksOfAPatch) {
  std::vector<Point> patch;
  for (double y : {230, 250, 270}) {
    for (double x : {280, 300, 320}) patch.push_back({x, y});
  }
  const FrameResult frame = fittedBesideJumps(patch, kFarApart, 3);
  EXPECT_EQ(frame.verdict.status, Status::Reduced);
  EXPECT_EQ(frame.verdict.shortfall, Shortfall::LowerIsNearer);
  EXPECT_EQ(frame.verdict.fitted, 9u);
  EXPECT_LT(errorAtCorners(frame), 1.0);
  EXPECT_EQ(frame.good, 9);
  for (std::size_t i = 0; i < 14; ++i) {
    EXPECT_EQ(frame.influences[i].weight, i < 9 ? 1.0 : 0.0) << i;
    EXPECT_EQ(frame.influences[i].residual < 0.1, i < 9) << i;
  }
}

TEST(SolveShot, ReducesBunchedTracksOnlyWhereALossAsksForTheirSpread) {
  const Tracks tracks = shrinkingShot(0.1, 1);
  SolveOptions options = based(0);
  EXPECT_EQ(solveShot(tracks, options).frames[3].verdict.status, Status::Solved);
  for (Loss loss : {Loss::Huber, Loss::Cauchy, Loss::Tukey}) {
    options.loss = loss;
    const Verdict verdict = solveShot(tracks, options).frames[3].verdict;
    EXPECT_EQ(verdict.status, Status::Reduced) << nameOf(loss);
    EXPECT_EQ(verdict.shortfall, Shortfall::LowerIsNearer) << nameOf(loss);
  }
}

TEST(SolveShot, HoldsWhatItIsNotToReduce) {
  Tracks tracks;
  for (int f : {0, 1}) seeAll(tracks, f);
  seeAll(tracks, 2, 3);
  SolveOptions options = based(0);
  options.reduce = false;
  const ShotResult result = solveShot(tracks, options);
  EXPECT_EQ(result.frames[2].verdict.status, Status::Held);
  EXPECT_EQ(result.frames[2].verdict.model, Model::Held);
  EXPECT_EQ(result.frames[2].verdict.shortfall, Shortfall::TooFewTracks);
  EXPECT_EQ(result.frames[2].h, result.frames[1].h);
  EXPECT_GT(result.frames[2].rms, 1.0);
}

TEST(SolveShot, FitsFourAndFiveTracksWithALossByPlainSquares) {
  for (int count : {4, 5}) {
    Tracks tracks;
    for (int f : {0, 1}) seeAll(tracks, f, count);
    SolveOptions options = based(0);
    options.loss = Loss::Tukey;
    const FrameResult frame = solveShot(tracks, options).frames[1];
    EXPECT_EQ(frame.verdict.status, Status::Solved);
    EXPECT_EQ(frame.verdict.origin.grounds, Grounds::TooFew);
    EXPECT_EQ(frame.good, count);
    EXPECT_EQ(frame.loss, Loss::None);
    EXPECT_LT(frame.rms, 1e-9);
  }
}

// One crosses to the far side of the others. Among five nothing tells that it is the bad one.
TEST(SolveShot, FitsSixTracksWithALossWhereTheLibraryFails) {
  const std::vector<Point> places = {{0, 0}, {100, 0}, {100, 100}, {0, 100}, {50, 20}, {20, 60}};
  for (int count : {5, 6}) {
    Tracks tracks;
    for (int t = 0; t < count; ++t) see(tracks, t, 0, places[static_cast<std::size_t>(t)]);
    for (int t = 0; t < count; ++t) {
      see(tracks, t, 1, t == 2 ? Point{-50, -50} : places[static_cast<std::size_t>(t)]);
    }
    SolveOptions options = based(0);
    EXPECT_EQ(solveShot(tracks, options).frames[1].verdict.shortfall, Shortfall::AcrossHorizon);
    options.loss = Loss::Tukey;
    const FrameResult frame = solveShot(tracks, options).frames[1];
    EXPECT_EQ(frame.verdict.status, count == 5 ? Status::Held : Status::Solved);
    EXPECT_EQ(frame.verdict.shortfall, count == 5 ? Shortfall::AcrossHorizon : Shortfall::None);
    EXPECT_EQ(frame.good, count == 5 ? 0 : 5);
  }
}

namespace {

// A fitter with frame 0 as its base, and its sweep.
struct Fitting {
  explicit Fitting(const Tracks& shot, Loss loss = Loss::None)
      : tracks(shot), base(tracks, 0), fitter(units, optionsOf(loss)) {}

  static SolveOptions optionsOf(Loss loss) {
    SolveOptions options;
    options.loss = loss;
    return options;
  }

  FrameFit fit(int frame) { return fitter.fit(map.matchesIn(tracks, frame), sweep); }

  Tracks tracks;
  BaseFrame base;
  ShotUnits units = {Similarity::fitting(base.places()), Similarity::fitting(base.places())};
  SurfaceMap map{base, tracks.names.size()};
  FrameFitter fitter;
  Sweep sweep{toLibrary(kIdentity), kIdentity, false, SweepMemory(tracks.names.size()),
              squareAround(base.places())};
};

Homography asFile(const Fitting& fitting, const LibraryTransform& m) {
  Homography h;
  for (std::size_t i = 0; i < 9; ++i) {
    h[i / 3][i % 3] = static_cast<double>(m(static_cast<int>(i / 3), static_cast<int>(i % 3)));
  }
  return fitting.units.fromLibrary(h);
}

}  // namespace

TEST(FrameFitter, GoesOnFromASolvedFramesTransform) {
  Fitting fitting(movingShot(2));
  const FrameFit fit = fitting.fit(1);
  EXPECT_EQ(fit.verdict.status, Status::Solved);
  EXPECT_EQ(fit.verdict.model, Model::Projective);
  EXPECT_EQ(fit.verdict.tracks, 5u);
  EXPECT_EQ(fitting.sweep.neighbour, fit.h);
  EXPECT_EQ(asFile(fitting, fitting.sweep.start), fit.h);
  EXPECT_FALSE(fitting.sweep.chainBroken);
}

// The full transform meets four tracks whatever they are, and five nearly so: in a corner of the
// surface that is no reason to throw the other corners about.
TEST(FrameFitter, GivesFourOrFiveTracksInACornerALowerModel) {
  const Point patch[] = {{200, 150}, {230, 155}, {205, 185}, {240, 190}, {220, 165}, {212, 171}};
  for (int count : {4, 5, 6}) {
    Tracks tracks;
    seeAll(tracks, 0);
    for (int t = 0; t < count; ++t) see(tracks, 5 + t, 0, patch[t]);
    for (int t = 0; t < count; ++t) see(tracks, 5 + t, 1, map(motion(1), patch[t]));
    Fitting fitting(tracks, Loss::Tukey);
    const FrameFit fit = fitting.fit(1);
    EXPECT_GT(fit.gain, kLargestGain);
    EXPECT_EQ(fit.verdict.status, count < 6 ? Status::Reduced : Status::Solved) << count;
    EXPECT_EQ(fit.verdict.shortfall, count < 6 ? Shortfall::BunchedInBase : Shortfall::None);
    SolveOptions options = based(0);
    options.loss = Loss::Tukey;
    options.reduce = false;
    EXPECT_EQ(solveShot(tracks, options).frames[1].verdict.status, Status::Solved) << count;
  }
}

TEST(FrameFitter, LetsTheLibraryStartWhereTheLastSolvedFrameWasButForTheNeighbour) {
  Tracks tracks = movingShot(2);
  seeAll(tracks, 2, 3);
  Fitting fitting(tracks);
  const FrameFit solved = fitting.fit(1);
  const FrameFit reduced = fitting.fit(2);
  EXPECT_EQ(reduced.verdict.status, Status::Reduced);
  EXPECT_NE(reduced.h, solved.h);
  EXPECT_EQ(fitting.sweep.neighbour, reduced.h);
  EXPECT_EQ(asFile(fitting, fitting.sweep.start), solved.h);
  EXPECT_TRUE(fitting.sweep.chainBroken);
}

TEST(FrameFitter, KeepsTheNeighbourOfAFrameWithoutTracks) {
  Fitting fitting(movingShot(2));
  const FrameFit solved = fitting.fit(1);
  const FrameFit held = fitting.fit(7);
  EXPECT_EQ(held.verdict.status, Status::Held);
  EXPECT_EQ(held.verdict.shortfall, Shortfall::NoTracks);
  EXPECT_EQ(held.h, solved.h);
  EXPECT_EQ(fitting.sweep.neighbour, solved.h);
}

// Behind a break both starts are tried in every frame, and either is the better one at times.
TEST(FrameFitter, TakesTheCheaperOfTwoStartsOnceTheChainIsBroken) {
  std::mt19937 random(11);
  Tracks tracks = movingShot(60);
  for (Observation& o : tracks.observations) {
    if (o.frame > 0) o.x += upTo(4, random);
  }
  Fitting fitting(tracks);
  LibraryFit library(fitting.units);
  fitting.sweep.chainBroken = true;
  int linear = 0;
  int neighbour = 0;
  for (int frame = 1; frame < 60; ++frame) {
    const Matches matches = fitting.map.matchesIn(tracks, frame);
    ASSERT_TRUE(library.load(matches));
    const LibraryResult from = library.from(fitting.sweep.start);
    const LibraryResult other = library.fromLinearFit();
    (other.cost < from.cost ? linear : neighbour) += other.h != from.h;
    EXPECT_EQ(fitting.fit(frame).h, other.cost < from.cost ? other.h : from.h) << frame;
  }
  EXPECT_GT(linear, 5);
  EXPECT_GT(neighbour, 5);
}

// Five tracks are not searched, and behind a search that says how noisy tracks are no clean frame
// is.
TEST(FrameFitter, RemembersTheSigmaOfASearchAlone) {
  Tracks tracks;
  for (int f = 0; f < 3; ++f) {
    for (int t = 0; t < 9; ++t) see(tracks, t, f, map(motion(f), {100.0 * (t % 3), 35.0 * t}));
  }
  Fitting many(tracks, Loss::Tukey);
  const FrameFit searched = many.fit(1);
  EXPECT_EQ(searched.robust.origin.grounds, Grounds::Searched);
  EXPECT_EQ(many.sweep.memory.priorFor({}).recentSigma, searched.robust.sigma);
  EXPECT_EQ(many.sweep.memory.priorFor({}).freedom, searched.robust.freedom);
  many.sweep.memory.rememberErrors(7.0, 16);
  many.sweep.memory.rememberErrors(5.0, 16);
  const FrameFit clean = many.fit(2);
  EXPECT_EQ(clean.robust.origin.grounds, Grounds::NoBadTrack);
  EXPECT_EQ(clean.robust.origin.stage, Stage::Neighbour) << "without the library";
  EXPECT_EQ(many.sweep.memory.priorFor({}).recentSigma, 5.0);
  Fitting few(movingShot(2), Loss::Tukey);
  EXPECT_EQ(few.fit(1).robust.origin.grounds, Grounds::TooFew);
  EXPECT_EQ(few.sweep.memory.priorFor({}).recentSigma, 0.0);
}
