// SPDX-License-Identifier: BSD-3-Clause
#include "shot/surface/frame_equations.h"

#include <gtest/gtest.h>

#include <Eigen/Dense>
#include <cmath>

#include "tests/shot/surface/relay_shot.h"

using namespace cornerpin;

namespace {

// A free frame with six tracks, in slots 0 to 5 of 7.
struct OneFrame {
  OneFrame() {
    frames[0].h = {{{1.1, 0.12, 30}, {-0.15, 0.95, -20}, {4e-4, -3e-4, 1}}};
    frames[0].part = JointFrame::Part::Free;
    for (Point p : {Point{100, 100}, Point{500, 120}, Point{480, 420}, Point{90, 400},
                    Point{300, 250}, Point{200, 330}}) {
      const int t = static_cast<int>(places.size());
      const Point image = map(frames[0].h, p);
      matches.push_back({{}, {image.x + 0.1 * t, image.y - 0.2}, 1.0 + 0.1 * t, t});
      places.push_back({p, {}});
    }
  }

  JointShot shot() const {
    JointShot shot = {frames, places, observations, {0.5}, {}};
    for (std::size_t t = 0; t < places.size(); ++t) shot.lives.slots.push_back(static_cast<int>(t));
    shot.lives.extents = {7};
    return shot;
  }

  std::vector<JointFrame> frames = std::vector<JointFrame>(1);
  std::vector<Place> places;
  std::vector<Match> matches;
  ObservationsOf observations = [this](std::size_t) { return lists::matches(matches); };
};

// The normal equations of the places alone, in pixels: C - B' inv(A) B and c - B' inv(A) g, the
// parameters being the transform's own elements.
struct Reduced {
  explicit Reduced(const OneFrame& frame) {
    constexpr int kPlaces = 14;
    Eigen::MatrixXd jacobian = Eigen::MatrixXd::Zero(12, 8 + kPlaces);
    Eigen::VectorXd right(12);
    for (int i = 0; i < 6; ++i) {
      const Match& m = frame.matches[static_cast<std::size_t>(i)];
      const Homography& h = frame.frames[0].h;
      const Point p = frame.places[static_cast<std::size_t>(i)].point;
      const Point r = {m.present.x - map(h, p).x, m.present.y - map(h, p).y};
      const double bend = 1.0 - (r.x * r.x + r.y * r.y) / 0.25 / 49.0;
      const double w = m.weight * bend / 0.5;
      const Slopes s = slopesOf(h, p);
      const Derivative d = derivative(h, p);
      for (int k = 0; k < 8; ++k) {
        jacobian(2 * i, k) = w * s.x[static_cast<std::size_t>(k)];
        jacobian(2 * i + 1, k) = w * s.y[static_cast<std::size_t>(k)];
      }
      jacobian.block(2 * i, 8 + 2 * i, 2, 2) << w * d.Xx, w * d.Xy, w * d.Yx, w * d.Yy;
      right.segment(2 * i, 2) << w * r.x, w * r.y;
    }
    const Eigen::MatrixXd ofFrame = jacobian.leftCols(8);
    const Eigen::MatrixXd ofPlaces = jacobian.rightCols(kPlaces);
    // The residuals that the frame's parameters leave.
    const Eigen::ColPivHouseholderQR<Eigen::MatrixXd> qr(ofFrame);
    const Eigen::MatrixXd left = ofPlaces - ofFrame * qr.solve(ofPlaces);
    matrix = ofPlaces.transpose() * left;
    gradient = ofPlaces.transpose() * (right - ofFrame * qr.solve(right));
  }

  Eigen::MatrixXd matrix;
  Eigen::VectorXd gradient;
};

}  // namespace

TEST(FrameEquations, LeaveThoseOfThePlaces) {
  OneFrame frame;
  const Reduced expected(frame);
  FrameEquations equations;
  ASSERT_TRUE(equations.linearise(frame.shot(), 0));
  ASSERT_EQ(equations.width(), 14u);
  Eigen::MatrixXd matrix = Eigen::MatrixXd::Zero(14, 14);
  Eigen::VectorXd gradient = Eigen::VectorXd::Zero(14);
  for (const FrameEquations::Sighting& s : equations.sightings()) {
    const auto i = static_cast<int>(2 * s.slot);
    matrix.block(i, i, 2, 2) << s.c.xx, s.c.xy, s.c.xy, s.c.yy;
    gradient.segment(i, 2) << s.gradient.x, s.gradient.y;
  }
  for (std::size_t k = 0; k < 8; ++k) {
    const Eigen::Map<const Eigen::VectorXd> y(equations.y(k), 14);
    matrix -= y * y.transpose();
    gradient -= equations.l()[k] * y;
  }
  EXPECT_LT((matrix - expected.matrix).cwiseAbs().maxCoeff(),
            1e-10 * expected.matrix.cwiseAbs().maxCoeff());
  EXPECT_LT((gradient - expected.gradient).cwiseAbs().maxCoeff(),
            1e-10 * expected.gradient.cwiseAbs().maxCoeff());
}

// With places that stay, the step is that of a fit of the frame alone.
TEST(FrameEquations, StepToTheFrameThatFitsItsTracks) {
  OneFrame frame;
  const Homography truth = {{{1.102, 0.119, 31}, {-0.151, 0.951, -21}, {4.01e-4, -3e-4, 1}}};
  for (Match& m : frame.matches) {
    m.present = map(truth, frame.places[static_cast<std::size_t>(m.track)].point);
  }
  FrameEquations equations;
  for (int i = 0; i < 8; ++i) {
    JointShot shot = frame.shot();
    shot.noise[0] = 1e3;
    ASSERT_TRUE(equations.linearise(shot, 0));
    frame.frames[0].h = equations.stepped(FrontVector(14, 0.0));
  }
  EXPECT_LT(relay::cornerDistance(frame.frames[0].h, truth), 1e-8);
}

// All places moved as the inverse of a small motion of the surface says: the frame moves along.
TEST(FrameEquations, StepAlongWithThePlaces) {
  OneFrame frame;
  for (Match& m : frame.matches) {
    m.present = map(frame.frames[0].h, frame.places[static_cast<std::size_t>(m.track)].point);
  }
  FrameEquations equations;
  ASSERT_TRUE(equations.linearise(frame.shot(), 0));
  FrontVector shift(14, 0.0);
  for (std::size_t i = 0; i < 12; i += 2) shift[i] = 1e-4;
  const Homography moved = equations.stepped(shift);
  const Point p = {310, 240};
  const Point there = map(moved, {p.x + 1e-4, p.y});
  EXPECT_NEAR(there.x, map(frame.frames[0].h, p).x, 1e-9);
  EXPECT_NEAR(there.y, map(frame.frames[0].h, p).y, 1e-9);
  EXPECT_GT(std::fabs(map(moved, p).x - there.x), 5e-5);
}

TEST(FrameEquations, OfAFixedFrameHaveThePlacesAlone) {
  OneFrame frame;
  frame.frames[0].h = kIdentity;
  frame.frames[0].part = JointFrame::Part::Fixed;
  frame.matches.resize(1);
  frame.matches[0].present = {100.5, 100};
  FrameEquations equations;
  ASSERT_TRUE(equations.linearise(frame.shot(), 0));
  EXPECT_FALSE(equations.isFree());
  ASSERT_EQ(equations.sightings().size(), 1u);
  const double w = 4.0 * std::pow(48.0 / 49.0, 2);
  EXPECT_NEAR(equations.sightings()[0].c.xx, w, 1e-12);
  EXPECT_EQ(equations.sightings()[0].c.xy, 0.0);
  EXPECT_NEAR(equations.sightings()[0].gradient.x, 0.5 * w, 1e-12);
  EXPECT_EQ(equations.stepped(FrontVector(14, 3.0)), kIdentity);
  equations.setCovariance(FrontVector(14 * 14, 1.0), 14);
  EXPECT_EQ(equations.covarianceAt({5, 5}).trace(), 0.0);
}

TEST(FrameEquations, AreNoneForFewerThanFourTracksInFront) {
  OneFrame frame;
  FrameEquations equations;
  frame.matches.resize(4);
  EXPECT_TRUE(equations.linearise(frame.shot(), 0));
  frame.places[2].point = {-3e3, 0};  // behind the horizon
  frame.matches[2].present = map(frame.frames[0].h, frame.places[2].point);
  EXPECT_FALSE(equations.linearise(frame.shot(), 0));
  OneFrame out;
  JointShot shot = out.shot();
  shot.noise[0] = 0.0;
  EXPECT_FALSE(equations.linearise(shot, 0));
}

TEST(FrameEquations, AreNoneWhereStraysLeaveTooFewTracks) {
  OneFrame frame;
  FrameEquations equations;
  for (std::size_t t : {1u, 3u}) frame.matches[t].present.x += 50.0;
  EXPECT_TRUE(equations.linearise(frame.shot(), 0));
  frame.matches[5].present.x += 50.0;
  EXPECT_FALSE(equations.linearise(frame.shot(), 0));
}
