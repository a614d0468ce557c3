// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/result_pin.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

using namespace cornerpin;

namespace {

constexpr Homography kMoves = {{{1.2, 0.1, 30.0}, {-0.05, 0.9, -20.0}, {1e-4, 2e-4, 1.0}}};

ResultTransforms resultWith(const Homography& h, YAxis y, bool sized = true) {
  ShotResult result;
  result.provenance.picture.y = y;
  result.provenance.picture.pixelCentre = 0.5;
  if (sized) {
    result.provenance.picture.width = 400;
    result.provenance.picture.height = 300;
  }
  result.baseCentre = {200, 150};
  result.quads = {{"tracks", {{{10, 10}, {390, 10}, {390, 290}, {10, 290}}}}};
  FrameResult frame;
  frame.frame = 3;
  frame.h = h;
  result.frames = {frame};
  return transformsOf(result);
}

// By fractions, as on paper.
Point across(const Homography& h, Point p) {
  const double s = h[2][0] * p.x + h[2][1] * p.y + h[2][2];
  return {(h[0][0] * p.x + h[0][1] * p.y + h[0][2]) / s,
          (h[1][0] * p.x + h[1][1] * p.y + h[1][2]) / s};
}

void expectNear(Point found, Point wanted) {
  EXPECT_NEAR(found.x, wanted.x, 1e-9);
  EXPECT_NEAR(found.y, wanted.y, 1e-9);
}

}  // namespace

TEST(ByCorner, BeginsAtTheLowerLeftWhicheverWayTheQuadGoes) {
  const Quad upright = {{{0, 0}, {4, 1}, {5, 4}, {-1, 3}}};  // y up
  Quad given = upright;
  for (int turn = 0; turn < 4; ++turn) {
    std::rotate(given.begin(), given.begin() + 1, given.end());
    Quad back = given;
    std::reverse(back.begin(), back.end());
    for (const Quad& quad : {given, back}) {
      const Quad up = byCorner(quad, YAxis::Up);
      Quad turned = quad;
      for (Point& p : turned) p.y = -p.y;
      const Quad down = byCorner(turned, YAxis::Down);
      for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(up[i].x, upright[i].x);
        EXPECT_EQ(up[i].y, upright[i].y);
        EXPECT_EQ(down[i].x, upright[i].x);
        EXPECT_EQ(down[i].y, -upright[i].y);
      }
    }
  }
}

TEST(PinOfResult, CarriesTheWholePicture) {
  const Pin pin = pinOf(resultWith(kMoves, YAxis::Down), PinKind::Pin, nullptr);
  EXPECT_EQ(pin.name, "picture");
  expectNear(pin.from[kBottomLeft], {0, 300});
  expectNear(pin.from[kTopRight], {400, 0});
  ASSERT_EQ(pin.frames.size(), 1u);
  EXPECT_EQ(pin.frames[0].frame, 3);
  for (std::size_t i = 0; i < 4; ++i) expectNear(pin.frames[0].to[i], across(kMoves, pin.from[i]));
  EXPECT_EQ(pin.frames[0].h, kMoves);
}

TEST(PinOfResult, PutsThePictureOnAQuad) {
  const NamedQuad sign = {"sign", {{{100, 50}, {150, 55}, {148, 90}, {101, 88}}}};
  const Pin pin = pinOf(resultWith(kMoves, YAxis::Down), PinKind::Pin, &sign);
  EXPECT_EQ(pin.name, "sign");
  expectNear(pin.from[kTopLeft], {0, 0});
  expectNear(pin.frames[0].to[kTopLeft], across(kMoves, {100, 50}));
  expectNear(pin.frames[0].to[kTopRight], across(kMoves, {150, 55}));
  expectNear(pin.frames[0].to[kBottomRight], across(kMoves, {148, 90}));
  expectNear(pin.frames[0].to[kBottomLeft], across(kMoves, {101, 88}));
  for (std::size_t i = 0; i < 4; ++i)
    expectNear(across(pin.frames[0].h, pin.from[i]), pin.frames[0].to[i]);
}

TEST(PinOfResult, BringsTheSurfaceBackToStabilise) {
  const Pin pin = pinOf(resultWith(kMoves, YAxis::Up), PinKind::Stabilise, nullptr);
  for (std::size_t i = 0; i < 4; ++i) {
    expectNear(across(kMoves, pin.frames[0].to[i]), pin.from[i]);
    expectNear(across(pin.frames[0].h, pin.from[i]), pin.frames[0].to[i]);
  }
}

TEST(PinOfResult, NeedsNoSizeForMatrices) {
  const Pin pin = pinOf(resultWith(kMoves, YAxis::Up, false), PinKind::Matrix, nullptr);
  EXPECT_EQ(pin.frames[0].h, kMoves);
  expectNear(pin.from[kBottomLeft], {10, 10});
  expectNear(pin.frames[0].to[kTopRight], across(kMoves, {390, 290}));
}

// The horizon x = 250 lies between the middle of the tracks and the right edge.
TEST(PinOfResult, SendsCornersBehindTheHorizonNowhere) {
  const Homography h = {{{1, 0, 0}, {0, 1, 0}, {-0.004, 0, 1}}};
  const Pin pin = pinOf(resultWith(h, YAxis::Up), PinKind::Pin, nullptr);
  EXPECT_TRUE(std::isfinite(pin.frames[0].to[kBottomLeft].x));
  EXPECT_TRUE(std::isnan(pin.frames[0].to[kBottomRight].x));
  EXPECT_TRUE(std::isnan(pin.frames[0].to[kTopRight].y));
}

// The inverse's horizon is x = -250: all of the picture is in front of it.
TEST(PinOfResult, LooksForTheHorizonOfTheInverse) {
  const Homography h = {{{1, 0, 0}, {0, 1, 0}, {-0.004, 0, 1}}};
  const Pin pin = pinOf(resultWith(h, YAxis::Up), PinKind::Stabilise, nullptr);
  for (const Point& corner : pin.frames[0].to) EXPECT_TRUE(std::isfinite(corner.x));
  const Homography back = {{{1, 0, 0}, {0, 1, 0}, {0.004, 0, 1}}};
  const Pin other = pinOf(resultWith(back, YAxis::Up), PinKind::Stabilise, nullptr);
  EXPECT_TRUE(std::isfinite(other.frames[0].to[kBottomLeft].x));
  EXPECT_TRUE(std::isnan(other.frames[0].to[kBottomRight].x));
}
