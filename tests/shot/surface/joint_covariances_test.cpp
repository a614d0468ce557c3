// SPDX-License-Identifier: BSD-3-Clause
#include "shot/surface/joint_covariances.h"

#include <gtest/gtest.h>

#include <cmath>

#include "shot/surface/joint_fit.h"
#include "shot/surface/start_places.h"
#include "tests/shot/surface/dense_joint_fit.h"
#include "tests/shot/surface/relay_shot.h"

using namespace cornerpin;

namespace {

void expectNear(const Symmetric2& a, const Symmetric2& b) {
  const double tolerance = 1e-6 * b.trace();
  EXPECT_NEAR(a.xx, b.xx, tolerance);
  EXPECT_NEAR(a.xy, b.xy, tolerance);
  EXPECT_NEAR(a.yy, b.yy, tolerance);
}

Points pointsOf(const Quad& quad) { return {quad[0], quad[1], quad[2], quad[3]}; }

struct Fit {
  explicit Fit(const relay::Shot& shot, double error = 0.5) {
    frames = relay::started(shot.frames, error, 7);
    places = startPlaces(frames, shot.observations(), shot.places.size());
    for (int i = 0; i < 40; ++i) fitJointly(frames, places, shot.observations());
  }

  std::vector<JointFrame> frames;
  std::vector<Place> places;
};

// With sum of w^4 = sum of w^2 in each frame, weights tell the noise.
relay::Shot withWeightsOfNoise(relay::Shot shot) {
  for (auto& seen : shot.seen) {
    double squares = 0.0;
    double fourths = 0.0;
    for (const Match& m : seen) {
      squares += std::pow(m.weight, 2);
      fourths += std::pow(m.weight, 4);
    }
    for (Match& m : seen) m.weight *= std::sqrt(squares / fourths);
  }
  return shot;
}

// The inverse of the dense normal matrix where the fit ends.
void expectTheDenseCovariances(const relay::Shot& weighted) {
  const relay::Shot shot = withWeightsOfNoise(weighted);
  Fit fit(shot);
  relay::DenseJointFit dense(shot, fit.frames, fit.places, noiseOf(fit.frames));
  dense.minimise();
  for (std::size_t f = 0; f < fit.frames.size(); ++f) {
    SCOPED_TRACE(testing::Message() << "frame " << f);
    const auto images =
        jointCovariances(fit.frames, fit.places, shot.observations(), pointsOf(dense.corners(f)));
    for (std::size_t i = 0; i < 4; ++i) expectNear(images[f][i], dense.cornerCovariance(f, i));
  }
  for (std::size_t t = 0; t < fit.places.size(); ++t) {
    SCOPED_TRACE(testing::Message() << "track " << t);
    if (!isKnown(fit.places[t])) {
      EXPECT_TRUE(std::isnan(fit.places[t].covariance.xx));
    } else {
      expectNear(fit.places[t].covariance, dense.placeCovariance(t));
    }
  }
}

}  // namespace

TEST(JointCovariances, AreTheInverseOfTheDenseNormalMatrix) {
  for (std::size_t base : {0u, 6u, 11u}) {
    relay::Plan plan;
    plan.base = base;
    plan.alive = 12;
    SCOPED_TRACE(testing::Message() << "base " << base);
    expectTheDenseCovariances(relay::shot(plan));
  }
}

TEST(JointCovariances, AreSoWhereTracksHaveGapsAndStrays) {
  relay::Plan plan;
  plan.base = 4;
  plan.alive = 14;
  plan.life = 7;
  relay::Shot shot = relay::shot(plan);
  for (int t = 10; t < 20; ++t) shot.remove(5, t);
  for (int t = 12; t < 15; ++t) {
    if (Match* m = shot.find(6, t)) m->present.x += 1.5;
  }
  expectTheDenseCovariances(shot);
}

TEST(JointCovariances, AreZeroInTheFixedFrame) {
  relay::Plan plan;
  plan.base = 3;
  const relay::Shot shot = relay::shot(plan);
  Fit fit(shot);
  const auto images = jointCovariances(fit.frames, fit.places, shot.observations(), {{10, 20}});
  EXPECT_EQ(images[3][0].trace(), 0.0);
  EXPECT_GT(images[2][0].trace(), 0.0);
}

TEST(JointCovariances, AreNoNumbersWhereThereIsNothingToSay) {
  relay::Plan plan;
  plan.alive = 12;
  relay::Shot shot = relay::shot(plan);
  shot.frames[4].part = JointFrame::Part::None;
  // A track that is seen nowhere but in a frame that too few tracks fix.
  shot.seen[7].resize(2);
  shot.seen[7].push_back({{}, {500, 300}, 1.0, static_cast<int>(shot.places.size())});
  shot.places.push_back({500, 300});
  Fit fit(shot);
  fit.places.back() = {{500, 300}, {1.0, 0.0, 1.0}};
  fit.frames[2].h[2][0] = -1e-4;
  const auto images =
      jointCovariances(fit.frames, fit.places, shot.observations(), {{0, 0}, {2e4, 0}});
  EXPECT_TRUE(std::isnan(images[4][0].xx));
  EXPECT_TRUE(std::isnan(images[7][0].yy));
  EXPECT_TRUE(std::isnan(images[2][1].xx));
  EXPECT_FALSE(std::isnan(images[3][0].xx));
  EXPECT_TRUE(std::isnan(fit.places.back().covariance.xx));
}

// With four times the sigmas, to first order, everything is sixteen times as uncertain.
TEST(JointCovariances, GoWithTheSquareOfTheNoise) {
  relay::Plan plan;
  plan.alive = 12;
  plan.noise = 1e-3;
  const relay::Shot shot = relay::shot(plan);
  Fit fit(shot, 0.0);
  for (JointFrame& frame : fit.frames) frame.sigma = 1.0;
  std::vector<Place> places = fit.places;
  const auto one = jointCovariances(fit.frames, places, shot.observations(), {{10, 20}});
  for (JointFrame& frame : fit.frames) frame.sigma = 4.0;
  const auto four = jointCovariances(fit.frames, fit.places, shot.observations(), {{10, 20}});
  EXPECT_NEAR(four[6][0].xx / one[6][0].xx, 16.0, 1e-3);
  EXPECT_NEAR(fit.places[20].covariance.yy / places[20].covariance.yy, 16.0, 1e-3);
}

// 300 tracks in all of three frames: 100 are left out. Their places are a little less certain than
// they would be if the transforms were exact, as are those of the others.
TEST(JointCovariances, OfTracksLeftOutHaveTheirOwnNoiseAndThatOfTheTransforms) {
  relay::Plan plan;
  plan.frames = 3;
  plan.alive = 300;
  const relay::Shot shot = relay::balanced(plan);
  Fit fit(shot);
  std::vector<Place> exact = fit.places;
  refinePlaces(fit.frames, noiseOf(fit.frames), shot.observations(), std::vector<bool>(300, true),
               exact);
  jointCovariances(fit.frames, fit.places, shot.observations(), {});
  for (std::size_t t = 0; t < fit.places.size(); ++t) {
    const double ratio = fit.places[t].covariance.trace() / exact[t].covariance.trace();
    EXPECT_GT(ratio, 1.001) << t;
    EXPECT_LT(ratio, 1.4) << t;
  }
}

// The noise is the same whatever the weights, and so is what comes of it where each frame's are
// equal.
TEST(JointCovariances, DoNotGoWithTheSizeOfWeights) {
  relay::Plan plan;
  plan.alive = 12;
  relay::Shot shot = relay::shot(plan);
  for (auto& seen : shot.seen) {
    for (Match& m : seen) m.weight = 1.0;
  }
  Fit fit(shot);
  std::vector<Place> places = fit.places;
  const auto ones = jointCovariances(fit.frames, places, shot.observations(), {{10, 20}});
  for (std::size_t f = 0; f < shot.seen.size(); ++f) {
    for (Match& m : shot.seen[f]) m.weight = f % 2 == 0 ? 0.1 : 1e20;
  }
  const auto others = jointCovariances(fit.frames, fit.places, shot.observations(), {{10, 20}});
  for (std::size_t f = 0; f < ones.size(); ++f) expectNear(others[f][0], ones[f][0]);
  for (std::size_t t = 0; t < places.size(); ++t) {
    if (isKnown(places[t])) expectNear(fit.places[t].covariance, places[t].covariance);
  }
}

TEST(JointCovariances, AreThoseWithoutTracksThatHardlyCount) {
  relay::Plan plan;
  plan.alive = 24;
  relay::Shot shot = relay::shot(plan);
  Fit fit(shot);
  for (auto& seen : shot.seen) {
    for (Match& m : seen) m.weight = m.track % 2 == 0 ? 2.0 : 1e-4;
  }
  std::vector<Place> places = fit.places;
  const auto faint = jointCovariances(fit.frames, places, shot.observations(), {{10, 20}});
  for (auto& seen : shot.seen) {
    for (Match& m : seen) m.weight = m.track % 2 == 0 ? 1.0 : 0.0;
  }
  const auto gone = jointCovariances(fit.frames, fit.places, shot.observations(), {{10, 20}});
  for (std::size_t f = 0; f < gone.size(); ++f) expectNear(faint[f][0], gone[f][0]);
}
