// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/shot_solver.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <stdexcept>

#include "cornerpin/cornerpin.h"
#include "shot/files/track_csv.h"
#include "shot/solve/base_frame.h"

using namespace cornerpin;

namespace {

// A transform that moves with the frame.
Homography motion(int frame) {
  const double f = frame;
  return {{{1 + 0.004 * f, 0.01 * f, 3 * f},
           {-0.008 * f, 1 + 0.002 * f, -2 * f},
           {1e-6 * f, -2e-6 * f, 1}}};
}

const std::vector<Point> kCorners = {{100, 100}, {500, 120}, {480, 420}, {90, 400}, {300, 250}};

// Adds one observation of track t (at its corner) in a frame.
void see(Tracks& tracks, int t, int frame, Point p, float weight = 1.0f) {
  while (static_cast<int>(tracks.names.size()) <= t) {
    tracks.names.push_back("t" + std::to_string(tracks.names.size()));
  }
  Observation o;
  o.x = p.x;
  o.y = p.y;
  o.weight = weight;
  o.track = t;
  o.frame = frame;
  tracks.observations.push_back(o);
}

void seeAll(Tracks& tracks, int frame, int count = 5) {
  for (int t = 0; t < count; ++t) {
    see(tracks, t, frame, map(motion(frame), kCorners[static_cast<std::size_t>(t)]));
  }
}

Tracks movingShot(int frames) {
  Tracks tracks;
  for (int f = 0; f < frames; ++f) seeAll(tracks, f);
  return tracks;
}

SolveOptions based(int frame, Units units = Units::Fit) {
  SolveOptions options;
  options.base = frame;
  options.units = units;
  options.loss = Loss::None;
  options.reduce = true;
  return options;
}

double errorAtCorners(const FrameResult& frame) {
  double worst = 0.0;
  for (Point p : kCorners) {
    const Point a = map(frame.h, p);
    const Point b = map(motion(frame.frame), p);
    worst = std::max(worst, std::hypot(a.x - b.x, a.y - b.y));
  }
  return worst;
}

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

TEST(SolveShot, FindsTheMotionInBothDirections) {
  const ShotResult result = solveShot(movingShot(21), based(10));
  ASSERT_EQ(result.frames.size(), 21u);
  for (const FrameResult& frame : result.frames) {
    EXPECT_EQ(frame.verdict.status, frame.frame == 10 ? Status::Base : Status::Solved);
    EXPECT_EQ(frame.tracks, 5);
    EXPECT_LT(frame.rms, 1e-3);  // single precision of some 500 px
  }
  EXPECT_EQ(result.frames[10].h, kIdentity);
  EXPECT_EQ(result.frames[10].rms, 0.0);
}

TEST(SolveShot, ListsGapsBetweenFramesAsHeld) {
  Tracks tracks;
  seeAll(tracks, -2);
  seeAll(tracks, 1);
  const ShotResult result = solveShot(tracks, based(-2));
  ASSERT_EQ(result.frames.size(), 4u);
  EXPECT_EQ(result.frames[0].frame, -2);
  for (std::size_t i : {1u, 2u}) {
    EXPECT_EQ(result.frames[i].verdict.status, Status::Held);
    EXPECT_EQ(reasonOf(result.frames[i].verdict), "no tracks");
    EXPECT_EQ(result.frames[i].tracks, 0);
    EXPECT_TRUE(std::isnan(result.frames[i].rms));
    EXPECT_EQ(result.frames[i].h, kIdentity);
  }
  EXPECT_EQ(result.frames[3].verdict.status, Status::Solved);
}

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

TEST(SolveShot, HoldsTheNeighbourNearerToTheBaseInTheBackwardSweep) {
  Tracks tracks;
  seeAll(tracks, 0);
  see(tracks, 0, 1, {0, 0}, 0.0f);
  for (int f : {2, 3}) seeAll(tracks, f);
  const ShotResult result = solveShot(tracks, based(3));
  EXPECT_EQ(result.frames[1].verdict.status, Status::Held);
  EXPECT_EQ(result.frames[1].h, result.frames[2].h);
  EXPECT_EQ(result.frames[0].verdict.status, Status::Solved);
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

// Frame 6 is blurred; in the others one track of eight is 15 px off.
TEST(SolveShot, TellsABadTrackBehindAFrameThatIsBlurred) {
  std::mt19937 random(7);
  const auto noise = [&] { return static_cast<double>(random()) / 2147483648.0 - 1.0; };
  Tracks tracks;
  for (int f = 0; f < 8; ++f) {
    for (int t = 0; t < 8; ++t) {
      const int row = t / 4;
      const Point p = map(motion(f), {60.0 + 140 * (t % 4), 80.0 + 300 * row + 25 * (t % 3)});
      const double size = f == 0 ? 0.0 : f == 6 ? 30.0 : 0.5;
      see(tracks, t, f, {p.x + size * noise() + (f > 0 && t == 3 ? 15 : 0), p.y + size * noise()});
    }
  }
  SolveOptions options = based(0);
  options.loss = Loss::Tukey;
  const FrameResult frame = solveShot(tracks, options).frames[7];
  EXPECT_EQ(frame.good, 7);
  EXPECT_LT(errorAtCorners(frame), 3.0);
}

namespace {

// Twelve tracks with normal noise, half a pixel unless told otherwise, in places by the seed. Those
// that are bad are off by `fault` in the frames behind the base.
template <class Fault>
Tracks noisyShot(int frames, unsigned seed, Fault fault, double noise = 0.5) {
  std::mt19937 random(seed);
  const auto uniform = [&] { return (static_cast<double>(random()) + 0.5) / 4294967296.0; };
  Tracks tracks;
  std::vector<Point> base;
  for (int t = 0; t < 12; ++t) base.push_back({1000.0 * uniform(), 600.0 * uniform()});
  for (int f = 0; f < frames; ++f) {
    for (int t = 0; t < 12; ++t) {
      Point p = map(motion(f), base[static_cast<std::size_t>(t)]);
      const double length = noise * std::sqrt(-2.0 * std::log(uniform()));
      const double angle = 6.283185307179586 * uniform();
      const Point off = fault(t, f);
      if (f > 0)
        p = {p.x + length * std::cos(angle) + off.x, p.y + length * std::sin(angle) + off.y};
      see(tracks, t, f, p);
    }
  }
  return tracks;
}

// The median over 20 shots of the error at the corners, from frame `first` on.
template <class Fault>
double medianError(int first, int frames, Fault fault, double noise = 0.5) {
  SolveOptions options = based(0);
  options.loss = Loss::Tukey;
  std::vector<double> errors;
  for (unsigned seed = 1; seed <= 20; ++seed) {
    const ShotResult result = solveShot(noisyShot(frames, seed, fault, noise), options);
    for (int f = first; f < frames; ++f)
      errors.push_back(errorAtCorners(result.frames[static_cast<std::size_t>(f)]));
  }
  const auto middle = errors.begin() + static_cast<std::ptrdiff_t>(errors.size() / 2);
  std::nth_element(errors.begin(), middle, errors.end());
  return *middle;
}

}  // namespace

// A frame by itself may as well have a larger scale.
TEST(SolveShot, FollowsSevenOfTwelveTracksWhileTheOthersWanderOff) {
  const auto clean = [](int, int) -> Point { return {}; };
  const auto wander = [](int t, int f) -> Point {
    return t < 5 ? Point{0.3 * t * f, 0.3 * f} : Point{};
  };
  // Seven tracks instead of twelve, and some frames in which a track is off by what noise is.
  EXPECT_LT(medianError(1, 50, wander), 3.0 * medianError(1, 50, clean));
}

// The scales of later frames are those of the tracks that crept off as well.
TEST(SolveShot, FollowsSevenOfTwelveTracksWhileTheOthersCreepOff) {
  const auto clean = [](int, int) -> Point { return {}; };
  const auto creep = [](int t, int f) -> Point {
    return t < 5 ? Point{(t % 2 ? 0.05 : -0.05) * f, 0.025 * (t % 3 - 1) * f} : Point{};
  };
  EXPECT_LT(medianError(1, 60, creep, 0.05), 6.0 * medianError(1, 60, clean, 0.05));
}

TEST(SolveShot, ASweepKnowsNothingOfTheOther) {
  // Before the base frame as after it, but noisier, and with other tracks that wander off.
  const auto wanderAfter = [](int t, int f) -> Point {
    return t > 8 ? Point{0, 3.0 * f} : Point{};
  };
  const auto wanderBefore = [](int t, int f) -> Point {
    return t < 3 ? Point{0.7 * f, 0} : Point{};
  };
  const Tracks after = noisyShot(20, 1, wanderAfter, 0.05);
  Tracks before = noisyShot(20, 1, wanderBefore, 1.0);
  for (Observation& o : before.observations) o.frame = -o.frame;
  std::stable_sort(before.observations.begin(), before.observations.end(),
                   [](const Observation& a, const Observation& b) { return a.frame < b.frame; });
  Tracks both = before;
  for (const Observation& o : after.observations) {
    if (o.frame > 0) both.observations.push_back(o);
  }
  SolveOptions options = based(0);
  options.loss = Loss::Tukey;
  const std::vector<FrameResult> alone = solveShot(before, options).frames;
  const std::vector<FrameResult> whole = solveShot(both, options).frames;
  ASSERT_EQ(alone.size(), 20u);
  for (std::size_t f = 0; f < alone.size(); ++f) {
    EXPECT_EQ(std::memcmp(&alone[f].h, &whole[f].h, sizeof alone[f].h), 0) << alone[f].frame;
  }
}

TEST(SolveShot, KnowsTheTracksThatKeptToTheSurface) {
  SolveOptions options = based(0);
  options.loss = Loss::Tukey;
  int frames = 0, mistaken = 0;
  for (unsigned seed = 1; seed <= 20; ++seed) {
    const auto fault = [](int t, int) -> Point { return t == 0 ? Point{20, 0} : Point{}; };
    for (const FrameResult& frame : solveShot(noisyShot(40, seed, fault), options).frames) {
      if (frame.verdict.status == Status::Base) continue;
      ++frames;
      if (frame.good != 11) ++mistaken;
    }
  }
  EXPECT_EQ(frames, 780);
  EXPECT_LE(mistaken, frames / 50);
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

TEST(SolveShot, LeavesOutTracksAbsentFromTheBase) {
  Tracks tracks;
  for (int t = 0; t < 5; ++t) see(tracks, t, 0, kCorners[static_cast<std::size_t>(t)]);
  see(tracks, 5, 0, {1, 1}, 0.0f);
  for (int t = 0; t < 5; ++t) see(tracks, t, 1, kCorners[static_cast<std::size_t>(t)]);
  see(tracks, 5, 1, {7777, 7777});
  see(tracks, 6, 1, {8888, 8888});
  const ShotResult result = solveShot(tracks, based(0));
  EXPECT_EQ(result.baseTracks, 5);
  EXPECT_EQ(result.leftOut, 2);
  EXPECT_EQ(result.frames[1].tracks, 5);
  EXPECT_LT(result.frames[1].rms, 1e-4);
}

TEST(SolveShot, TreatsWeightZeroAsAbsent) {
  Tracks tracks = movingShot(2);
  see(tracks, 5, 0, {300, 300});
  std::swap(tracks.observations.back(), tracks.observations[5]);
  std::rotate(tracks.observations.begin() + 6, tracks.observations.end() - 1,
              tracks.observations.end());
  see(tracks, 5, 1, {9999, 9999}, 0.0f);
  const ShotResult result = solveShot(tracks, based(0));
  EXPECT_EQ(result.baseTracks, 6);
  EXPECT_EQ(result.frames[1].tracks, 5);
  EXPECT_LT(errorAtCorners(result.frames[1]), 1e-2);
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

TEST(SolveShot, RefusesABaseOutsideTheShotOrWithoutTracks) {
  Tracks tracks = movingShot(3);
  see(tracks, 0, 5, {1, 1}, 0.0f);
  EXPECT_THROW(solveShot(tracks, based(-1)), std::invalid_argument);
  EXPECT_THROW(solveShot(tracks, based(6)), std::invalid_argument);
  EXPECT_THROW(solveShot(tracks, based(4)), std::invalid_argument);
  EXPECT_THROW(solveShot(tracks, based(5)), std::invalid_argument);
}

TEST(SolveShot, ReportsEveryFrame) {
  std::vector<std::size_t> calls;
  solveShot(movingShot(5), based(2), [&](std::size_t done, std::size_t total) {
    EXPECT_EQ(total, 5u);
    calls.push_back(done);
  });
  EXPECT_EQ(calls, (std::vector<std::size_t>{1, 2, 3, 4, 5}));
}

TEST(ChooseBaseFrame, TakesTheFrameWhoseTracksAreSeenMost) {
  Tracks tracks;
  see(tracks, 0, 0, {});
  see(tracks, 0, 1, {});
  see(tracks, 1, 1, {});
  see(tracks, 1, 2, {}, 0.0f);  // not seen
  see(tracks, 2, 2, {});
  see(tracks, 2, 3, {});
  see(tracks, 2, 4, {});
  EXPECT_EQ(chooseBaseFrame(tracks), 1);  // 2 + 1 observations; frames 2, 3 and 4 have 3 as well
}

TEST(ChooseBaseFrame, TakesTheSmallestOfSeveral) { EXPECT_EQ(chooseBaseFrame(movingShot(4)), 0); }
