// SPDX-License-Identifier: BSD-3-Clause
#include "shot/surface/front.h"

#include <gtest/gtest.h>

#include <Eigen/Dense>

#include "tests/shot/surface/relay_shot.h"

using namespace cornerpin;

namespace {

// The frames of a shot in which all tracks are in all frames, each in the slot of its number.
struct Made {
  Made() {
    relay::Plan plan;
    plan.frames = 4;
    plan.alive = 6;
    shot = relay::balanced(plan);
    for (Point p : shot.places) places.push_back({{p.x + 0.3, p.y - 0.2}, {}});
    observations = shot.observations();
  }

  JointShot joint() const { return jointShot(shot.frames, places, observations); }

  relay::Shot shot;
  std::vector<Place> places;
  ObservationsOf observations;
};

// The sum of the frames' equations of the places.
struct Sum {
  explicit Sum(const JointShot& shot) {
    FrameEquations equations;
    for (std::size_t f = 0; f < shot.frames.size(); ++f) {
      EXPECT_TRUE(equations.linearise(shot, f));
      for (const FrameEquations::Sighting& s : equations.sightings()) {
        const auto i = static_cast<int>(2 * s.slot);
        Eigen::Matrix2d c;
        c << s.c.xx, s.c.xy, s.c.xy, s.c.yy;
        matrix.block(i, i, 2, 2) += c;
        gradient.segment(i, 2) += Eigen::Vector2d(s.gradient.x, s.gradient.y);
      }
      for (std::size_t k = 0; equations.isFree() && k < 8; ++k) {
        const Eigen::Map<const Eigen::VectorXd> y(equations.y(k), 12);
        matrix -= y * y.transpose();
        gradient -= equations.l()[k] * y;
      }
    }
  }

  Eigen::MatrixXd matrix = Eigen::MatrixXd::Zero(12, 12);
  Eigen::VectorXd gradient = Eigen::VectorXd::Zero(12);
};

Front frontOf(const JointShot& shot) {
  Front front(6);
  FrameEquations equations;
  for (std::size_t f = 0; f < shot.frames.size(); ++f) {
    EXPECT_TRUE(equations.linearise(shot, f));
    front.add(equations);
  }
  return front;
}

}  // namespace

TEST(Front, SolvesTheSumOfTheFramesEquationsTrackByTrack) {
  const Made made;
  const JointShot shot = made.joint();
  const Sum sum(shot);
  Front front = frontOf(shot);
  std::vector<EliminatedTrack> eliminated;
  for (std::size_t slot : {3u, 0u, 5u, 4u, 1u, 2u})
    eliminated.push_back(front.eliminate(slot, slot, 6));
  FrontVector steps(12, 0.0);
  for (; !eliminated.empty(); eliminated.pop_back()) {
    const EliminatedTrack& one = eliminated.back();
    EXPECT_EQ(one.track, one.slot);
    const Point step = one.step(steps);
    steps[2 * one.slot] = step.x;
    steps[2 * one.slot + 1] = step.y;
  }
  const Eigen::VectorXd expected = sum.matrix.ldlt().solve(sum.gradient);
  EXPECT_GT(expected.cwiseAbs().maxCoeff(), 0.1);
  for (int i = 0; i < 12; ++i) {
    EXPECT_NEAR(steps[static_cast<std::size_t>(i)], expected[i], 1e-8) << i;
  }
}

// The covariance of a track with all others eliminated before is its block of the inverse.
TEST(Front, LeavesTheLastTrackItsCovariance) {
  const Made made;
  const JointShot shot = made.joint();
  const Eigen::MatrixXd inverse = Sum(shot).matrix.inverse();
  Front front = frontOf(shot);
  for (std::size_t slot : {0u, 1u, 3u, 4u, 5u}) front.eliminate(slot, slot, 6);
  const Symmetric2 last = front.eliminate(2, 2, 6).inverse;
  EXPECT_NEAR(last.xx, inverse(4, 4), 1e-8 * inverse(4, 4));
  EXPECT_NEAR(last.xy, inverse(4, 5), 1e-8 * inverse(4, 4));
  EXPECT_NEAR(last.yy, inverse(5, 5), 1e-8 * inverse(4, 4));
}

TEST(Front, LeavesAnEmptySlotBehind) {
  const Made made;
  Front front = frontOf(made.joint());
  front.eliminate(3, 3, 6);
  const EliminatedTrack again = front.eliminate(7, 3, 6);
  EXPECT_EQ(again.inverse.trace(), 0.0);
  EXPECT_EQ(again.gradient.x, 0.0);
  for (std::size_t i = 0; i < 12; ++i) EXPECT_EQ(again.x()[i], 0.0) << i;
}

TEST(Front, StepsNowhereWithATrackThatNothingIsKnownOf) {
  Front front(2);
  const EliminatedTrack one = front.eliminate(5, 1, 2);
  EXPECT_EQ(one.track, 5u);
  const Point step = one.step(FrontVector(4, 9.0));
  EXPECT_EQ(step.x, 0.0);
  EXPECT_EQ(step.y, 0.0);
}

TEST(Front, GoesOnFromACopyAsFromItself) {
  const Made made;
  Front front = frontOf(made.joint());
  front.eliminate(1, 1, 6);
  Front copy = front;
  front.eliminate(0, 0, 6);
  copy.eliminate(0, 0, 6);
  EXPECT_EQ(front.eliminate(4, 4, 6).rows, copy.eliminate(4, 4, 6).rows);
}
