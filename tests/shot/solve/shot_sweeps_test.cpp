// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/shot_sweeps.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <random>

#include "shot/files/track_reader.h"
#include "shot/fit/residuals.h"
#include "shot/solve/shot_solver.h"
#include "shot/trust/final_weights.h"
#include "shot/trust/frame_figures.h"
#include "shot/trust/lasting_errors.h"
#include "tests/shot/known_shots.h"
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

// The base frame's tracks are there until frame 11, in frame 6 only the four at the corners. 16
// more come from frame `first` on.
double errorBehindFour(int first, unsigned seed) {
  std::mt19937 random(seed);
  std::normal_distribution<double> normal(0.0, 0.5);
  Tracks tracks;
  for (int f = 0; f < 14; ++f) {
    for (int t = 0; t < 32; ++t) {
      const double dx = normal(random);
      const double dy = normal(random);
      const int column = t % 4, row = t / 4 % 4;
      const bool atCorner = column % 3 == 0 && row % 3 == 0;
      if (t < 16 ? f > 11 || (f == 6 && !atCorner) : f < first) continue;
      const double aside = t < 16 ? 0.0 : 30.0;
      const Point p = map(motion(f), {100.0 + 120.0 * column + aside, 100.0 + 90.0 * row + aside});
      see(tracks, t, f, {p.x + dx, p.y + dy});
    }
  }
  const SolveOptions options = fromFrame(0);
  const std::function<void()> report = [] {};
  ShotSweeps sweeps(tracks, options, 0, report);
  sweeps.sweepFirst();
  return errorAtCorners(sweeps.frames()[13]);
}

}  // namespace

// To have seen the others there once more can only help.
TEST(ShotSweeps, LearnsNoMoreFromFourTracksThanTheyTell) {
  double with = 0.0;
  double without = 0.0;
  for (unsigned seed = 1; seed <= 60; ++seed) {
    with += std::pow(errorBehindFour(6, seed), 2);
    without += std::pow(errorBehindFour(7, seed), 2);
  }
  EXPECT_LT(with, 1.05 * without);
  EXPECT_GT(with, 0.8 * without);
}

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
    EXPECT_EQ(describe(*result.unused), "88 absent in the base frame");
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
  std::size_t calls = 0;
  const auto progress = [&](Phase phase, std::size_t done, std::size_t) {
    if (phase == Phase::Solving && done > 0) ++calls;
  };
  const ShotResult with = solveShot(tracks, fromFrame(0), progress);
  const ShotResult without = solveShot(tracks, baseOnly);
  EXPECT_EQ(calls, 19u);  // no second pass
  EXPECT_EQ(with.handedOver, 0);
  EXPECT_EQ(with.leftOut, 1);
  for (std::size_t f = 0; f < 20; ++f) EXPECT_EQ(with.frames[f].h, without.frames[f].h) << f;
}

TEST(ShotSweeps, ReportsEveryFrameOfBothPasses) {
  const Relay relay(60, 0.0);
  std::size_t calls = 0;
  std::size_t last = 0;
  solveShot(relay.tracks, fromFrame(7), [&](Phase phase, std::size_t done, std::size_t total) {
    if (phase != Phase::Solving) return;
    EXPECT_EQ(done, calls++);
    last = total;
  });
  EXPECT_EQ(calls, 1u + 118u);  // the base frame is fitted to nothing
  EXPECT_EQ(last, 118u);
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

// 40 tracks of a base frame, and from frame 10 on others, which creep off together from where they
// are first seen, in pixels a frame.
struct Creeping {
  double speed = 0.0;
  int others = 80;
  int frames = 60;
  int baseUntil = 60;    // the frame behind the last one that shows the base frame's tracks
  int othersUntil = 60;  // and the others

  bool shows(int track, int frame) const {
    return track < 40 ? frame < baseUntil : frame >= 10 && frame < othersUntil;
  }

  Tracks tracks() const {
    Tracks tracks;
    std::mt19937 random(8);
    std::normal_distribution<double> normal(0.0, 0.1);
    for (int f = 0; f < frames; ++f) {
      for (int t = 0; t < 40 + others; ++t) {
        if (!shows(t, f)) continue;
        const Point p = map(motion(f), {50.0 + 40 * (t * 7 % 11), 60.0 + 35 * (t * 5 % 13)});
        const double dx = normal(random) + (t < 40 ? 0.0 : speed * (f - 10));
        const double dy = normal(random);
        see(tracks, t, f, {p.x + dx, p.y + dy});
      }
    }
    return tracks;
  }
};

void expectBaseFramesTracksDecide(const Tracks& tracks) {
  SolveOptions baseOnly = fromFrame(0);
  baseOnly.handOver = false;
  const ShotResult with = solveShot(tracks, fromFrame(0));
  const ShotResult without = solveShot(tracks, baseOnly);
  EXPECT_EQ(with.handedOver, 0);
  EXPECT_EQ(with.leftOut, static_cast<int>(tracks.names.size()) - 40);
  EXPECT_EQ(describe(*with.unused), std::to_string(with.leftOut) + " not needed");
  for (std::size_t f = 0; f < with.frames.size(); ++f) {
    EXPECT_EQ(with.frames[f].h, without.frames[f].h) << f;
  }
}

}  // namespace

TEST(ShotSweeps, LetsTheBaseFramesTracksDecideWhereTheOthersContradictThem) {
  Creeping shot;
  shot.speed = 0.02;
  expectBaseFramesTracksDecide(shot.tracks());
}

// Two frames of three show nothing but the base frame's tracks.
TEST(ShotSweeps, AsksOnlyFramesThatShowOthersWhetherTheyContradict) {
  Creeping shot;
  shot.speed = 0.02;
  shot.frames = shot.baseUntil = 160;
  expectBaseFramesTracksDecide(shot.tracks());
}

// Behind frame 60 there are no more than four of the base frame's tracks, all on one line, and a
// track that three solved frames have shown: enough to know its place in the end, not to learn it.
TEST(ShotSweeps, AsksOnlySolvedFramesWhetherTheOthersContradict) {
  Creeping shot;
  shot.speed = 0.02;
  Tracks tracks = shot.tracks();
  const Point place = {300, 250};
  const int late = 120;
  for (int f : {57, 58, 59}) see(tracks, late, f, map(motion(f), place));
  std::stable_sort(tracks.observations.begin(), tracks.observations.end(),
                   [](const Observation& a, const Observation& b) { return a.frame < b.frame; });
  std::mt19937 random(9);
  std::normal_distribution<double> normal(0.0, 0.1);
  for (int f = 60; f < 180; ++f) {
    for (int t : {0, 11, 22, 33}) {
      const Point p = map(motion(f), {50.0, 60.0 + 35 * (t * 5 % 13)});
      const double dx = normal(random);
      const double dy = normal(random);
      see(tracks, t, f, {p.x + dx, p.y + dy});
    }
    see(tracks, late, f, map(motion(f), place));
  }
  ASSERT_EQ(solveShot(tracks, fromFrame(0)).frames[100].verdict.status, Status::Reduced);
  expectBaseFramesTracksDecide(tracks);
}

// One more track among 40 does not make a frame a hundredth more certain.
TEST(ShotSweeps, AsksNoTracksThatHelpNoFrame) {
  Creeping shot;
  shot.others = 1;
  const Tracks tracks = shot.tracks();
  expectBaseFramesTracksDecide(tracks);
  std::size_t steps = 0;
  solveShot(tracks, fromFrame(0), [&](Phase phase, std::size_t done, std::size_t) {
    if (phase == Phase::HandingOver) steps += done;
  });
  EXPECT_EQ(steps, 0u);
}

namespace {

// 40 tracks of a base frame, of which so many are anywhere in all other frames, and from frame 10
// on others in the middle of the surface. Returns how many of these took part.
int handedOverBeside(int strays, int others) {
  Tracks tracks;
  std::mt19937 random(8);
  std::normal_distribution<double> normal(0.0, 0.1);
  for (int f = 0; f < 40; ++f) {
    for (int t = 0; t < (f < 10 ? 40 : 40 + others); ++t) {
      const Point place = t < 40 ? Point{50.0 + 40 * (t * 7 % 11), 60.0 + 35 * (t * 5 % 13)}
                                 : Point{200.0 + 30 * (t % 4), 220.0 + 25 * (t % 5)};
      const Point p = map(motion(f), place);
      const double error = f > 0 && t < strays ? 500.0 : 1.0;
      const double dx = error * normal(random);
      const double dy = error * normal(random);
      see(tracks, t, f, {p.x + dx, p.y + dy});
    }
  }
  return solveShot(tracks, fromFrame(0)).handedOver;
}

}  // namespace

// Six more tracks in the middle help 24 of the base frame's, but not 40.
TEST(ShotSweeps, AsksWhetherOthersHelpTheGoodTracks) {
  EXPECT_EQ(handedOverBeside(0, 6), 0);
  EXPECT_EQ(handedOverBeside(16, 6), 6);
}

// Behind frame 60 there are four of the base frame's tracks, on a line, and three in the middle of
// the surface that three solved frames have shown: too few to learn them, and no help to those.
TEST(ShotSweeps, AsksOthersWhereTheBaseFramesTracksDoNotSolveAFrame) {
  Creeping shot;
  shot.others = 0;
  Tracks tracks = shot.tracks();
  for (int f = 57; f < 80; ++f) {
    for (int t = 0; f >= 60 && t < 40; t += 11) {
      see(tracks, t, f, map(motion(f), {50.0, 60.0 + 35 * (t * 5 % 13)}));
    }
    for (int t = 40; t < 43; ++t) {
      see(tracks, t, f, map(motion(f), {180.0 + 70 * (t - 40), 270.0 + 30 * (t % 2)}));
    }
  }
  std::stable_sort(tracks.observations.begin(), tracks.observations.end(),
                   [](const Observation& a, const Observation& b) { return a.frame < b.frame; });
  const ShotResult result = solveShot(tracks, fromFrame(0));
  for (std::size_t f = 60; f < 80; ++f) EXPECT_EQ(result.frames[f].handedOver, 3) << f;
}

TEST(ShotSweeps, GoesByOthersThatContradictWhereNoneElseAreLeft) {
  Creeping shot;
  shot.speed = 0.06;
  shot.baseUntil = 40;
  SolveOptions baseOnly = fromFrame(0);
  baseOnly.handOver = false;
  const ShotResult with = solveShot(shot.tracks(), fromFrame(0));
  const ShotResult without = solveShot(shot.tracks(), baseOnly);
  EXPECT_EQ(with.handedOver, 80);
  EXPECT_EQ(with.leftOut, 0);
  for (std::size_t f = 0; f < 40; ++f) EXPECT_EQ(with.frames[f].h, without.frames[f].h) << f;
  for (std::size_t f = 40; f < 60; ++f) {
    EXPECT_EQ(with.frames[f].verdict.status, Status::Solved) << f;
    EXPECT_EQ(with.frames[f].handedOver, 80) << f;
  }
}

// With four times as many others a frame's errors go down to a fifth, and the surface moves by
// four fifths of them: two fifths of what the base frame's tracks may be off, whose variance is as
// much again from the base frame.
TEST(ShotSweeps, LetsAllTracksDecideWhereTheyAgree) {
  for (int others : {80, 160}) {
    Creeping shot;
    shot.others = others;
    const ShotResult result = solveShot(shot.tracks(), fromFrame(0));
    EXPECT_EQ(result.handedOver, others);
    EXPECT_EQ(result.frames[9].handedOver, 0);
    for (std::size_t f = 10; f < 60; ++f) EXPECT_EQ(result.frames[f].handedOver, others) << f;
  }
}

// Most frames lie behind the last of the base frame's tracks, where all that is known has wandered.
TEST(ShotSweeps, AsksOnlyFramesThatTheBaseFrameDecidesWhetherTheOthersContradict) {
  const ShotResult result = solveShot(Relay(200, 0.3).tracks, fromFrame(0));
  EXPECT_EQ(result.frames[4].handedOver, 0);
  EXPECT_EQ(result.frames[5].handedOver, 8);
}

TEST(ShotSweeps, MakesOnePassWhereTheBaseFrameSeesAllTracks) {
  std::size_t calls = 0;
  solveShot(movingShot(5), fromFrame(2), [&](Phase phase, std::size_t, std::size_t total) {
    if (phase != Phase::Solving) return;
    EXPECT_EQ(total, 4u);
    ++calls;
  });
  EXPECT_EQ(calls, 1u + 4u);
}

// The frames that show it have no other tracks, and are held.
TEST(ShotSweeps, GivesNoPlaceToATrackThatOnlyHeldFramesShow) {
  Tracks tracks = movingShot(6);
  for (int f = 6; f < 12; ++f) see(tracks, 5, f, {200, 200});
  const ShotResult result = solveShot(tracks, fromFrame(0));
  ASSERT_EQ(result.frames[11].verdict.status, Status::Held);
  EXPECT_EQ(result.handedOver, 0);
  EXPECT_EQ(result.leftOut, 1);
  EXPECT_EQ(result.unused->front().name, "t5");
  EXPECT_EQ(result.unused->front().why, Unused::NoPlace);
  EXPECT_TRUE(std::isnan(result.tracks[5].place.x));
}

namespace {

// A shot that has been solved.
struct Solved {
  Solved(const Tracks& shot, const SolveOptions& how) : tracks(shot), options(how) {
    sweeps.sweepFirst();
    sweeps.handOver();
  }
  FittedFrame fittedAs(const FrameResult& frame) const {
    return sweeps.fittedAs(frame, sweeps.usedIn(frame));
  }

  Tracks tracks;
  SolveOptions options;
  std::function<void()> report = [] {};
  ShotSweeps sweeps{tracks, options, *options.base, report};
};

}  // namespace

// Tracks of the base frame are as noisy there as in any other frame; the places of others are not.
TEST(ShotSweeps, TellsWhatAFrameWasFittedTo) {
  Creeping creeping;
  creeping.speed = 0.06;
  creeping.baseUntil = 40;
  const Solved shot(creeping.tracks(), fromFrame(0));
  for (const FrameResult& frame : shot.sweeps.frames()) {
    const Matches used = shot.sweeps.usedIn(frame);
    const bool late = frame.frame >= 40;
    ASSERT_EQ(used.size(), late ? 80u : 40u) << frame.frame;
    EXPECT_EQ(used.tracks().front(), late ? 40 : 0);
    EXPECT_EQ(shot.fittedAs(frame).placeNoise, late ? 0.0 : 1.0);
  }
}

TEST(ShotSweeps, LeansOnNoFrameWhoseTracksAgreeAsByChance) {
  Creeping creeping;
  const Solved shot(creeping.tracks(), fromFrame(0));
  FrameResult frame = shot.sweeps.frames()[1];
  EXPECT_TRUE(shot.sweeps.isFirm(frame));
  frame.verdict.origin.chance = -5.0;
  EXPECT_FALSE(shot.sweeps.isFirm(frame));
}

TEST(ShotSweeps, KeepsTheNeighbourOnTheSideOfTheBase) {
  Tracks tracks = movingShot(9);
  for (Observation& o : tracks.observations) {
    if ((o.frame == 2 || o.frame == 6) && o.track > 2) o.weight = 0.0f;
  }
  const Solved shot(tracks, fromFrame(4));
  for (std::size_t f : {2u, 6u}) {
    const FrameResult& frame = shot.sweeps.frames()[f];
    ASSERT_TRUE(frame.verdict.onTop) << f;
    EXPECT_EQ(shot.fittedAs(frame).kept, shot.sweeps.frames()[f == 2 ? 3 : 5].h) << f;
  }
  EXPECT_EQ(shot.fittedAs(shot.sweeps.frames()[3]).kept, kIdentity);
}

TEST(ShotSweeps, PutsTheTracksWhereTheJointFitHasThem) {
  const Solved shot(Relay(60, 0.3).tracks, fromFrame(30));
  ASSERT_EQ(shot.sweeps.places().size(), shot.tracks.names.size());
  for (std::size_t t = 0; t < shot.tracks.names.size(); ++t) {
    const int track = static_cast<int>(t);
    if (shot.sweeps.base().sees(track)) continue;
    EXPECT_EQ(shot.sweeps.surfaceMap().placeOf(track).x, shot.sweeps.places()[t].point.x) << t;
    EXPECT_EQ(shot.sweeps.surfaceMap().placeOf(track).y, shot.sweeps.places()[t].point.y) << t;
  }
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

// The covariances of the joint fit, enlarged by the errors that last in the tracks that other
// frames have told, and what the frame by itself has beyond equal noise.
TEST(ShotSweeps, TellsTheCornersOfHandedOverFramesByTheWholeShot) {
  Solved shot(Relay(40, 0.3).tracks, fromFrame(0));
  const ShotResult result = solveShot(shot.tracks, shot.options);
  const std::vector<Quad> quads = {result.quads[0].corners};
  std::vector<FrameErrors> errors(1);  // the base frame's
  std::vector<NoiseEstimate> noises;
  LastingErrors lasting(shot.tracks.names.size());
  for (std::size_t f = 1; f < 40; ++f) {
    const FrameResult& frame = shot.sweeps.frames()[f];
    const Matches used = shot.sweeps.usedIn(frame);
    const FittedFrame fitted = shot.sweeps.fittedAs(frame, used);
    FittedFrame last = fitted;
    last.weights = lossWeights(used, frame.h, result.baseCentre, frame.loss, frame.width);
    last.stiffness = lossStiffness(used, frame.h, frame.loss, frame.width);
    errors.push_back(errorsOf(FrameFits(used, fitted, last), quads, result.baseCentre));
    noises.push_back({errors[f].noise * errors[f].noise, errors[f].freedom});
    for (std::size_t i = 0; i < used.size(); ++i) {
      const Match m = used[i];
      if (!(fitted.weights[i] > 0.0) || shot.sweeps.base().sees(m.track)) continue;
      lasting.add(m.track, frame.frame, residual(m, frame.h));
    }
  }
  Points corners;
  for (Point corner : quads[0]) corners.add(corner);
  const auto joint = shot.sweeps.jointCovariancesOf(corners);
  EXPECT_GT(lasting.varianceRatio(), 1.0);
  for (std::size_t f : {20u, 39u}) {
    ASSERT_GT(result.frames[f].handedOver, 0);
    FrameFigures expected = figuresOf(errors[f], shotNoise(noises));
    takeJoint(joint[f], lasting.varianceRatio(), errors[f], expected);
    for (std::size_t c = 0; c < 4; ++c) {
      EXPECT_EQ(result.frames[f].figures.quads[0][c].xx, expected.quads[0][c].xx) << f;
      EXPECT_EQ(result.frames[f].figures.quads[0][c].yy, expected.quads[0][c].yy) << f;
      EXPECT_GT(expected.quads[0][c].trace(), joint[f][c].trace());
    }
  }
  const double place = shot.sweeps.places().back().covariance.trace();
  EXPECT_NEAR(result.tracks.back().covariance.trace() / place, lasting.varianceRatio(), 1e-12);
}

// Half of the board's tracks creep, so that many fits of a frame are nearly as likely; with new
// names every 40 frames, what is made of one tells where tracks are in others.
TEST(ShotSweeps, ComeToTheSameFromEverySeed) {
  made::KnownShot board;
  board.tracks = readTracks(CORNERPIN_DATA "/board.csv");
  board.places.resize(board.tracks.names.size());
  const Tracks tracks = made::renamed(board, 40, 10).tracks;
  const std::function<void()> report = [] {};
  const auto sweptWith = [&](std::uint64_t seed) {
    SolveOptions options;
    options.seed = seed;
    ShotSweeps sweeps(tracks, options, 60, report);
    sweeps.sweepFirst();
    return sweeps.frames();
  };
  const std::vector<FrameResult> first = sweptWith(1);
  for (std::uint64_t seed = 2; seed <= 8; ++seed) {
    const std::vector<FrameResult> other = sweptWith(seed);
    for (std::size_t f = 0; f < first.size(); ++f) {
      for (Point corner : kCorners) {
        const Point p = map(first[f].h, corner);
        const Point q = map(other[f].h, corner);
        EXPECT_LT(std::hypot(p.x - q.x, p.y - q.y), 1e-3) << seed << " " << first[f].frame;
      }
    }
  }
}
