// SPDX-License-Identifier: BSD-3-Clause
#include "shot/surface/joint_fit.h"

#include <gtest/gtest.h>

#include <cmath>

#include "shot/fit/homography_fit.h"
#include "shot/surface/start_places.h"
#include "shot/surface/track_lives.h"
#include "tests/shot/surface/dense_joint_fit.h"
#include "tests/shot/surface/relay_shot.h"

using namespace cornerpin;

namespace {

struct Fit {
  std::vector<JointFrame> frames;
  std::vector<Place> places;
};

// Transforms that are off by up to `error` pixels, and the places that follow.
Fit startOf(const relay::Shot& shot, double error = 0.5) {
  Fit fit;
  fit.frames = relay::started(shot.frames, error, 7);
  fit.places = startPlaces(fit.frames, shot.observations(), shot.places.size());
  return fit;
}

// Several calls, as each ends when its steps are far below the noise.
Fit fitted(const relay::Shot& shot, double error = 0.5, int calls = 40) {
  Fit fit = startOf(shot, error);
  for (int i = 0; i < calls; ++i) fitJointly(fit.frames, fit.places, shot.observations());
  return fit;
}

// Where a dense solver ends from there: within 1e-6 of a pixel, or of the standard deviation where
// that is larger. The costs of steps below do not differ.
void expectTheDenseOptimum(const relay::Shot& shot, const Fit& fit) {
  relay::DenseJointFit dense(shot, fit.frames, fit.places, noiseOf(fit.frames));
  dense.minimise();
  for (std::size_t f = 0; f < fit.frames.size(); ++f) {
    if (fit.frames[f].part != JointFrame::Part::Free) continue;
    double variance = 0.0;
    for (std::size_t i = 0; i < 4; ++i) variance += dense.cornerCovariance(f, i).trace();
    EXPECT_LT(relay::cornerDistance(fit.frames[f].h, dense.transform(f)),
              1e-6 * (1.0 + std::sqrt(variance)))
        << f;
  }
  for (std::size_t t = 0; t < fit.places.size(); ++t) {
    if (!isKnown(fit.places[t])) continue;
    EXPECT_LT(std::sqrt(squaredDistance(fit.places[t].point, dense.place(t))),
              1e-6 * (1.0 + std::sqrt(dense.placeCovariance(t).trace())))
        << t;
  }
}

// Of all sightings of known places, with a noise of 40.
double costOf(const Fit& fit, const relay::Shot& shot) {
  double cost = 0.0;
  for (std::size_t f = 0; f < fit.frames.size(); ++f) {
    for (const Match& m : shot.seen[f]) {
      const Place& place = fit.places[static_cast<std::size_t>(m.track)];
      if (!isKnown(place)) continue;
      const Homography& h = fit.frames[f].h;
      const double z2 = squaredDistance(map(h, place.point), m.present) / 1600.0;
      const double rest = denominator(h, place.point) > 0.0 ? std::max(0.0, 1.0 - z2 / 49.0) : 0.0;
      cost += m.weight * m.weight * (1.0 - rest * rest * rest);
    }
  }
  return cost;
}

double placeError(const Fit& fit, const relay::Shot& shot, std::size_t track) {
  return std::sqrt(squaredDistance(fit.places[track].point, shot.places[track]));
}

std::size_t knownIn(const Fit& fit) {
  std::size_t known = 0;
  for (const Place& place : fit.places) known += isKnown(place) ? 1 : 0;
  return known;
}

void expectTheSame(const Fit& a, const Fit& b) {
  for (std::size_t f = 0; f < a.frames.size(); ++f) EXPECT_EQ(a.frames[f].h, b.frames[f].h) << f;
}

// One whose loss hardly bends: tracks count in full that are far off.
relay::Shot looseShot(std::size_t alive, std::uint32_t seed, double noise) {
  relay::Plan plan;
  plan.alive = alive;
  plan.seed = seed;
  plan.noise = noise;
  relay::Shot shot = relay::shot(plan);
  for (JointFrame& frame : shot.frames) frame.sigma = 40.0;
  return shot;
}

}  // namespace

TEST(FitJointly, EndsWhereADenseSolverEnds) {
  for (std::size_t base : {0u, 5u, 11u}) {
    for (std::uint32_t seed = 1; seed <= 3; ++seed) {
      relay::Plan plan;
      plan.base = base;
      plan.seed = seed;
      plan.alive = 10;
      const relay::Shot shot = relay::shot(plan);
      SCOPED_TRACE(testing::Message() << "base " << base << " seed " << seed);
      const Fit fit = fitted(shot);
      EXPECT_GT(knownIn(fit), fit.places.size() / 2);
      expectTheDenseOptimum(shot, fit);
    }
  }
}

// At 250 pixels a frame the surface is far longer than a picture.
TEST(FitJointly, EndsThereInAPanUnderPerspective) {
  relay::Plan plan;
  plan.frames = 16;
  plan.base = 4;
  plan.alive = 16;
  plan.pan = 250.0;
  plan.tilt = 1e-4;
  const relay::Shot shot = relay::shot(plan);
  expectTheDenseOptimum(shot, fitted(shot));
}

// More frames than one block of the elimination.
TEST(FitJointly, EndsThereAfterManyFrames) {
  relay::Plan plan;
  plan.frames = 22;
  plan.base = 9;
  plan.life = 6;
  plan.alive = 18;
  const relay::Shot shot = relay::shot(plan);
  expectTheDenseOptimum(shot, fitted(shot));
}

TEST(FitJointly, EndsThereWithGapsInTracks) {
  relay::Plan plan;
  plan.base = 5;
  plan.alive = 16;
  plan.life = 8;
  relay::Shot shot = relay::shot(plan);
  for (int t = 0; t < static_cast<int>(shot.places.size()); ++t) {
    shot.remove(static_cast<std::size_t>(3 + t % 4), t);
  }
  expectTheDenseOptimum(shot, fitted(shot));
}

TEST(FitJointly, UsesTracksSeenBeforeAndAfterTheFixedFrameButNotInIt) {
  relay::Plan plan;
  plan.base = 5;
  plan.alive = 16;
  plan.life = 9;
  relay::Shot shot = relay::shot(plan);
  auto& base = shot.seen[5];
  base.erase(base.begin(), base.begin() + 6);
  const int crossing = base[0].track - 1;
  ASSERT_NE(shot.find(4, crossing), nullptr);
  ASSERT_NE(shot.find(6, crossing), nullptr);
  const Fit fit = fitted(shot);
  EXPECT_TRUE(isKnown(fit.places[static_cast<std::size_t>(crossing)]));
  expectTheDenseOptimum(shot, fit);
}

TEST(FitJointly, LeavesTheFixedFrameAndFramesWithoutATransform) {
  relay::Plan plan;
  plan.base = 5;
  plan.alive = 12;
  relay::Shot shot = relay::shot(plan);
  shot.frames[8].part = JointFrame::Part::None;
  const Fit start = startOf(shot);
  const Fit fit = fitted(shot);
  EXPECT_EQ(fit.frames[5].h, kIdentity);
  EXPECT_EQ(fit.frames[8].h, start.frames[8].h);
  EXPECT_NE(fit.frames[7].h, start.frames[7].h);
  expectTheDenseOptimum(shot, fit);
}

TEST(FitJointly, BringsNoiseFreeDataBackExactly) {
  relay::Plan plan;
  plan.base = 3;
  plan.alive = 20;
  plan.noise = 0.0;
  relay::Shot shot = relay::shot(plan);
  for (JointFrame& frame : shot.frames) frame.sigma = 0.3;
  const Fit fit = fitted(shot, 0.3, 3);
  for (std::size_t t = 0; t < fit.places.size(); ++t) {
    if (!isKnown(fit.places[t])) continue;
    EXPECT_LT(placeError(fit, shot, t), 1e-6) << t;
  }
  EXPECT_LT(relay::largestCornerDistance(fit.frames, shot.frames), 1e-6);
}

// An observation that goes on 60 noises away counts for nothing, and one that slides does not
// take its place along.
TEST(FitJointly, TakesNoNoticeOfASlideOrAJump) {
  relay::Plan plan;
  plan.frames = 20;
  plan.base = 0;
  plan.life = 14;
  plan.alive = 20;
  relay::Shot clean = relay::shot(plan);
  relay::Shot shot = clean;
  for (int t : {22, 27, 30}) {
    int since = 0;
    for (std::size_t f = 12; f < 20; ++f) {
      if (Match* m = shot.find(f, t)) m->present.x += 30.0 + 4.0 * since++;
      clean.remove(f, t);
    }
    ASSERT_GT(since, 3);
  }
  const Fit fit = fitted(shot);
  const Fit without = fitted(clean);
  for (std::size_t t : {22u, 27u, 30u}) {
    ASSERT_TRUE(isKnown(fit.places[t]));
    EXPECT_LT(std::sqrt(squaredDistance(fit.places[t].point, without.places[t].point)), 1e-5) << t;
  }
  EXPECT_LT(relay::largestCornerDistance(fit.frames, without.frames), 1e-4);
}

TEST(FitJointly, TakesNoNoticeOfAWeightOfZeroNorOfAnUnknownPlace) {
  relay::Plan plan;
  plan.alive = 14;
  relay::Shot shot = relay::shot(plan);
  relay::Shot less = shot;
  Match* m = shot.find(6, 20);
  ASSERT_NE(m, nullptr);
  m->weight = 0.0;
  m->present = {9e4, 7e4};
  less.remove(6, 20);
  for (auto& seen : less.seen) {
    seen.erase(
        std::remove_if(seen.begin(), seen.end(), [](const Match& o) { return o.track == 24; }),
        seen.end());
  }
  Fit fit = startOf(shot);
  Fit lessFit = startOf(less);
  fit.places[24] = {};
  fitJointly(fit.frames, fit.places, shot.observations());
  fitJointly(lessFit.frames, lessFit.places, less.observations());
  expectTheSame(fit, lessFit);
  EXPECT_FALSE(isKnown(fit.places[24]));
}

TEST(FitJointly, LeavesAFrameWithoutEnoughTracksAsItIs) {
  relay::Plan plan;
  plan.alive = 14;
  relay::Shot shot = relay::shot(plan);
  shot.seen[6].resize(3);
  Fit fit = startOf(shot);
  const Fit start = fit;
  fitJointly(fit.frames, fit.places, shot.observations());
  EXPECT_EQ(fit.frames[6].h, start.frames[6].h);
  Fit none = start;
  none.frames[6].part = JointFrame::Part::None;
  none.frames[6].sigma = 0.0;
  shot.seen[6].clear();
  fitJointly(none.frames, none.places, shot.observations());
  EXPECT_LT(relay::largestCornerDistance(fit.frames, none.frames), 1e-9);
}

// 260 tracks in all frames: the first 200 fix the transforms, the others' places follow.
TEST(FitJointly, TakesTwoHundredTracksAndLetsTheOthersFollow) {
  relay::Plan plan;
  plan.frames = 5;
  plan.alive = 260;
  plan.base = 2;
  const relay::Shot shot = relay::balanced(plan);
  relay::Shot first = shot;
  for (auto& seen : first.seen) seen.resize(kEnoughSeen);
  Fit fit = startOf(shot, 0.2);
  for (std::size_t t = kEnoughSeen; t < 260; ++t) fit.places[t].point.x += 0.5;
  Fit few = fit;
  fitJointly(fit.frames, fit.places, shot.observations());
  fitJointly(few.frames, few.places, first.observations());
  expectTheSame(fit, few);
  double squares = 0.0;
  for (std::size_t t = kEnoughSeen; t < 260; ++t) squares += std::pow(placeError(fit, shot, t), 2);
  // Five sightings each: 0.25 is what their own noise leaves.
  EXPECT_LT(std::sqrt(squares / 120.0), 0.3);
}

// Where all frames show all tracks, what a place takes from the other frames says nothing of a
// transform, apart from their curvature and weights.
TEST(FitJointly, OfABalancedShotIsThatOfEachFrameToTheFixedOne) {
  relay::Plan plan;
  plan.alive = 20;
  plan.frames = 10;
  plan.noise = 0.02;
  relay::Shot shot = relay::empty(plan);
  for (JointFrame& frame : shot.frames) {
    frame.h = kIdentity;
    frame.h[0][2] = 7.0 * static_cast<double>(&frame - shot.frames.data());
  }
  errors::Random random(5);
  plan.life = plan.frames;
  for (std::size_t t = 0; t < plan.alive; ++t) relay::addTrack(shot, 0, plan, random);
  for (std::size_t f = 0; f < plan.frames; ++f) {
    shot.frames[f].sigma = 1.0;  // far above the noise: the loss does not bend
    for (Match& m : shot.seen[f]) m.weight = 1.0;
  }
  const Fit fit = fitted(shot, 0.0);
  for (std::size_t f = 1; f < plan.frames; ++f) {
    Matches matches;
    for (std::size_t i = 0; i < plan.alive; ++i) {
      matches.add({shot.seen[0][i].present, shot.seen[f][i].present});
    }
    const Homography alone = fitHomography(matches, shot.frames[f].h).h;
    EXPECT_GT(relay::cornerDistance(alone, shot.frames[f].h), 5e-3) << f;
    EXPECT_LT(relay::cornerDistance(fit.frames[f].h, alone), 1e-4) << f;
  }
}

// The first six frames share no track with the others, one of which is fixed. Among each other they
// are where they would be if one of them were fixed, and all of them stay near where they were.
TEST(FitJointly, FitsFramesThatNothingTiesToTheFixedOneAmongThemselves) {
  relay::Plan plan;
  plan.base = 9;
  plan.alive = 16;
  relay::Shot shot = relay::shot(plan);
  for (int t = 0; t < static_cast<int>(shot.places.size()); ++t) {
    const bool early = shot.find(4, t) != nullptr || shot.find(0, t) != nullptr;
    for (std::size_t f = early ? 6 : 0; f < (early ? 12u : 6u); ++f) shot.remove(f, t);
  }
  Fit fit = startOf(shot);
  const Fit start = fit;
  Fit early = fit;
  early.frames.resize(6);
  early.frames[3].part = JointFrame::Part::Fixed;
  for (int i = 0; i < 40; ++i) {
    fitJointly(fit.frames, fit.places, shot.observations());
    fitJointly(early.frames, early.places, shot.observations());
  }
  for (std::size_t f = 0; f < 6; ++f) {
    const Homography tied = relay::between(early.frames[3].h, early.frames[f].h);
    const Homography loose = relay::between(fit.frames[3].h, fit.frames[f].h);
    EXPECT_LT(relay::cornerDistance(loose, tied), 1e-4) << f;
    EXPECT_LT(relay::cornerDistance(fit.frames[f].h, start.frames[f].h), 3.0) << f;
    EXPECT_GT(relay::cornerDistance(fit.frames[f].h, start.frames[f].h), 1e-3) << f;
  }
}

// Far from the optimum under strong perspective a whole step may lead too far.
TEST(FitJointly, ShortensAStepThatLeadsTooFar) {
  for (std::uint32_t seed = 1; seed <= 30; ++seed) {
    const relay::Shot shot = looseShot(10, seed, 0.0);
    Fit fit;
    fit.frames = relay::started(shot.frames, 125.0, seed);
    fit.places = startPlaces(fit.frames, shot.observations(), shot.places.size());
    const double before = costOf(fit, shot);
    fitJointly(fit.frames, fit.places, shot.observations());
    EXPECT_LT(costOf(fit, shot), 0.9 * before) << seed;
  }
}

// A step reads each frame five times at most; before and after them it is read six times.
TEST(FitJointly, EndsAfterOneStepWhereThereIsNothingToGain) {
  relay::Plan plan;
  plan.alive = 16;
  const relay::Shot shot = relay::shot(plan);
  Fit fit = fitted(shot, 0.5, 2);
  std::size_t reads = 0;
  fitJointly(fit.frames, fit.places, [&](std::size_t f) {
    ++reads;
    return lists::matches(shot.seen[f]);
  });
  EXPECT_LE(reads, 11 * plan.frames);
}

// What is left to gain after the last step is a few millionths at most; before it, more than one.
TEST(FitJointly, EndsWhereFurtherStepsAreNotWorthIt) {
  for (std::uint32_t seed = 1; seed <= 10; ++seed) {
    const relay::Shot shot = looseShot(16, seed, 20.0);
    Fit fit = startOf(shot, 30.0);
    std::vector<double> costs;
    fitJointly(fit.frames, fit.places, shot.observations(),
               [&] { costs.push_back(costOf(fit, shot)); });
    ASSERT_GE(costs.size(), 2u) << seed;
    ASSERT_LT(costs.size(), 10u) << seed;
    for (int i = 0; i < 10; ++i) fitJointly(fit.frames, fit.places, shot.observations());
    const double least = costOf(fit, shot);
    EXPECT_LT(costs.back() - least, 5e-6 * least) << seed;
    EXPECT_GT(costs[costs.size() - 2] - least, 1e-6 * least) << seed;
  }
}

TEST(FitJointly, LeavesAnEmptyShotAndOneWithoutAFixedFrame) {
  Fit fit;
  fitJointly(fit.frames, fit.places, [](std::size_t) { return Matches{}; });
  relay::Plan plan;
  plan.alive = 14;
  relay::Shot shot = relay::shot(plan);
  shot.frames[0].part = JointFrame::Part::Free;
  fit = fitted(shot);
  for (const JointFrame& frame : fit.frames) EXPECT_TRUE(isFinite(frame.h));
}
