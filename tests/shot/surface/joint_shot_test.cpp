// SPDX-License-Identifier: BSD-3-Clause
#include "shot/surface/joint_shot.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/shot/surface/relay_shot.h"

using namespace cornerpin;

namespace {

std::vector<Place> truePlaces(const relay::Shot& shot) {
  std::vector<Place> places;
  for (Point p : shot.places) places.push_back({p, {}});
  return places;
}

relay::Shot made() {
  relay::Plan plan;
  plan.frames = 6;
  plan.life = 6;
  plan.alive = 12;
  return relay::shot(plan);
}

std::vector<double> noiseIn(const relay::Shot& shot) {
  const std::vector<Place> places = truePlaces(shot);
  return jointShot(shot.frames, places, shot.observations()).noise;
}

}  // namespace

TEST(JointShot, HasTheFramesWhoseTracksFixTheirTransform) {
  const relay::Shot shot = made();
  EXPECT_EQ(noiseIn(shot), noiseOf(shot.frames));
}

TEST(JointShot, LeavesOutAFrameWithThreeTracks) {
  relay::Shot shot = made();
  shot.seen[2].resize(4);
  EXPECT_GT(noiseIn(shot)[2], 0.0);
  shot.seen[2].resize(3);
  EXPECT_EQ(noiseIn(shot)[2], 0.0);
  EXPECT_GT(noiseIn(shot)[3], 0.0);
}

TEST(JointShot, LeavesOutAFrameWithAllTracksOnALine) {
  relay::Shot shot = made();
  for (Match& m : shot.seen[2]) {
    Point& place = shot.places[static_cast<std::size_t>(m.track)];
    place.y = 0.5 * place.x + 10.0;
    m.present = map(shot.frames[2].h, place);
  }
  EXPECT_EQ(noiseIn(shot)[2], 0.0);
}

TEST(JointShot, KeepsTheFixedFrameHoweverFewItsTracks) {
  relay::Shot shot = made();
  shot.seen[0].resize(1);
  EXPECT_GT(noiseIn(shot)[0], 0.0);
}

// Tukey's: 49 / 3 (1 - (1 - r^2 / 49)^3) with r in noises.
TEST(JointLoss, BendsAtSevenNoises) {
  const BentSquare inside = jointLoss({0.3, 0.4}, 0.5);
  EXPECT_NEAR(inside.loss, 49.0 / 3.0 * (1.0 - std::pow(48.0 / 49.0, 3)), 1e-14);
  EXPECT_NEAR(inside.weight, std::pow(48.0 / 49.0, 2), 1e-14);
  const BentSquare outside = jointLoss({3.0, 4.0}, 0.5);
  EXPECT_NEAR(outside.loss, 49.0 / 3.0, 1e-14);
  EXPECT_EQ(outside.weight, 0.0);
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_NEAR(jointLoss({infinity, infinity}, 0.5).loss, 49.0 / 3.0, 1e-14);
}
