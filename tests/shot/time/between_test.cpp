// SPDX-License-Identifier: BSD-3-Clause
#include "shot/time/between.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "tests/shot/time/made_result.h"

using namespace cornerpin;
using made::worstCorner;

namespace {

// Corners that move by cubics.
Homography bending(double t) {
  return {{{1, 0, 2 * t + 0.01 * t * t * t}, {0, 1, t - 0.2 * t * t}, {0, 0, 1}}};
}

ShotResult with(double at, ShotResult result = made::result(bending, 10, 20, 10)) {
  for (FrameResult& frame : result.frames) frame.h = bending(frame.frame);
  addBetween(result, {at});
  return result;
}

std::string refusal(const ShotResult& result, double at) {
  ShotResult changed = result;
  try {
    addBetween(changed, {at});
  } catch (const std::invalid_argument& error) {
    EXPECT_TRUE(changed.between.empty());
    return error.what();
  }
  return "nothing thrown";
}

}  // namespace

TEST(AddBetween, FollowsTheFourNearestFrames) {
  for (double t : {10.5, 11.25, 14.9, 18.5, 19.5}) {
    const ShotResult result = with(t);
    ASSERT_EQ(result.between.size(), 1u);
    EXPECT_EQ(result.between[0].frame, t);
    EXPECT_LT(worstCorner(result.between[0].h, bending(t)), 1e-8) << t;
  }
}

TEST(AddBetween, IsTheFramesOwnInAFrame) {
  for (int f : {10, 15, 20}) EXPECT_EQ(with(f).between[0].h, bending(f));
}

TEST(AddBetween, SortsTheTimesAndHasEachOnce) {
  ShotResult result = made::result(bending, 10, 20, 10);
  addBetween(result, {18.5, 11, 11.25, 18.5});
  ASSERT_EQ(result.between.size(), 3u);
  EXPECT_EQ(result.between[0].frame, 11.0);
  EXPECT_EQ(result.between[1].frame, 11.25);
  EXPECT_EQ(result.between[2].frame, 18.5);
}

TEST(AddBetween, MakesDoWithShortShots) {
  ShotResult two = made::result(bending, 10, 11, 10);
  EXPECT_NEAR(with(10.5, two).between[0].h[0][2], (bending(10)[0][2] + bending(11)[0][2]) / 2,
              1e-9);
  ShotResult one = made::result(bending, 10, 10, 10);
  EXPECT_EQ(with(10, one).between[0].h, bending(10));
}

// The frame before is held at a wrong place: the three others make a parabola.
TEST(AddBetween, GoesByNoOuterFrameThatIsHeld) {
  ShotResult result = made::result(bending, 10, 20, 10);
  for (FrameResult& frame : result.frames) frame.h = bending(frame.frame);
  result.frames[3].verdict.status = Status::Held;
  result.frames[3].h = {{{1, 0, 999}, {0, 1, 999}, {0, 0, 1}}};
  addBetween(result, {14.5});
  const auto parabola = [&](std::size_t row) {
    const double a = bending(14)[row][2], b = bending(15)[row][2], c = bending(16)[row][2];
    return (3 * a + 6 * b - c) / 8;
  };
  EXPECT_NEAR(result.between[0].h[0][2], parabola(0), 1e-9);
  EXPECT_NEAR(result.between[0].h[1][2], parabola(1), 1e-9);
}

TEST(AddBetween, SaysWhatItRefuses) {
  const ShotResult result = made::result(bending, 10, 20, 10);
  EXPECT_EQ(refusal(result, 9.75), "9.75 is not in the shot: take times from 10 to 20");
  EXPECT_EQ(refusal(result, 20.5), "20.5 is not in the shot: take times from 10 to 20");
  EXPECT_EQ(refusal(result, 20.0), "nothing thrown");
  ShotResult turned = made::result(bending, 10, 11, 10);
  turned.frames[1].h = {{{-1, 0, 1000}, {0, -1, 600}, {0, 0, 1}}};
  EXPECT_EQ(refusal(turned, 10.5), "nothing leads from frame 10 to frame 11 by way of 10.5");
}
