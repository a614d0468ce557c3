// SPDX-License-Identifier: BSD-3-Clause
#include "shot/surface/joint_elimination.h"

#include <gtest/gtest.h>

#include <set>

#include "tests/shot/surface/dense_joint_fit.h"
#include "tests/shot/surface/relay_shot.h"

using namespace cornerpin;

namespace {

struct Made {
  explicit Made(const relay::Plan& plan) : shot(relay::shot(plan)) {
    for (Point p : shot.places) places.push_back({{p.x + 0.3, p.y - 0.2}, {}});
    observations = shot.observations();
  }

  JointShot joint() const { return jointShot(shot.frames, places, observations); }

  relay::Shot shot;
  std::vector<Place> places;
  ObservationsOf observations;
};

relay::Plan longPlan(std::size_t frames) {
  relay::Plan plan;
  plan.frames = frames;
  plan.base = frames / 3;
  plan.life = 4;
  plan.alive = 8;
  plan.seed = 2;
  return plan;
}

// Which tracks are there when a frame is visited.
struct Record : WayBack {
  explicit Record(const JointShot& shot) : shot(shot) {}
  void restore(const EliminatedTrack& track) override {
    EXPECT_TRUE(alive.insert(track.track).second);
  }
  void visit(std::size_t frame, FrameEquations&) override {
    frames.push_back(frame);
    const Matches matches = shot.observations(frame);
    for (int t : matches.tracks()) EXPECT_EQ(alive.count(static_cast<std::size_t>(t)), 1u) << t;
  }

  const JointShot& shot;
  std::set<std::size_t> alive;
  std::vector<std::size_t> frames;
};

// The places' steps.
struct Steps : WayBack {
  explicit Steps(std::size_t tracks) : front(2 * kMostAlive), places(tracks) {}
  void restore(const EliminatedTrack& track) override {
    const Point step = track.step(front);
    front[2 * track.slot] = step.x;
    front[2 * track.slot + 1] = step.y;
    places[track.track] = step;
  }
  void visit(std::size_t, FrameEquations&) override {}

  FrontVector front;
  std::vector<Point> places;
};

}  // namespace

TEST(EliminateAndReturn, BringsBackEachTrackBeforeItsLastFrame) {
  for (std::size_t frames : {1u, 3u, 30u, 200u}) {
    const Made made(longPlan(frames));
    const JointShot shot = made.joint();
    for (std::size_t mostKept : {std::size_t{0}, kMostNumbersKept}) {
      Record record(shot);
      eliminateAndReturn(shot, record, mostKept);
      ASSERT_EQ(record.frames.size(), frames);
      for (std::size_t i = 0; i < frames; ++i) EXPECT_EQ(record.frames[i], frames - 1 - i);
      EXPECT_EQ(record.alive.size(), made.places.size());
    }
  }
}

TEST(EliminateAndReturn, LeavesOutFramesThatTakeNoPart) {
  Made made(longPlan(30));
  made.shot.frames[12].part = JointFrame::Part::None;
  const JointShot shot = made.joint();
  Record record(shot);
  eliminateAndReturn(shot, record);
  EXPECT_EQ(record.frames.size(), 29u);
  EXPECT_EQ(record.frames[17], 11u);
}

// One step, of 60 frames in blocks of 16 or in one.
TEST(EliminateAndReturn, SolvesTheEquationsOfTheWholeShot) {
  relay::Plan plan = longPlan(60);
  plan.life = 8;
  plan.alive = 20;
  const Made made(plan);
  const JointShot shot = made.joint();
  Steps steps(made.places.size());
  eliminateAndReturn(shot, steps, 0);
  Steps atOnce(made.places.size());
  eliminateAndReturn(shot, atOnce);
  EXPECT_EQ(atOnce.front, steps.front);
  const relay::DenseJointFit dense(made.shot, made.shot.frames, made.places, shot.noise);
  const Eigen::VectorXd expected = dense.normal().second;
  for (std::size_t t = 0; t < made.places.size(); ++t) {
    const auto i = static_cast<int>(2 * t);
    const double tolerance = 1e-6 * (1.0 + std::fabs(expected[i]) + std::fabs(expected[i + 1]));
    EXPECT_NEAR(steps.places[t].x, expected[i], tolerance) << t;
    EXPECT_NEAR(steps.places[t].y, expected[i + 1], tolerance) << t;
  }
}
