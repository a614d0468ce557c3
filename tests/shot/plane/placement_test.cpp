// SPDX-License-Identifier: BSD-3-Clause
#include "shot/plane/placement.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/shot/random.h"

using namespace cornerpin;

namespace {

constexpr Quad kRectangle = {{{100.0, 900.0}, {700.0, 900.0}, {700.0, 500.0}, {100.0, 500.0}}};

double squares(const Placement& placement, const Quad& from, const Quad& to) {
  double sum = 0.0;
  for (std::size_t i = 0; i < from.size(); ++i) {
    sum += squaredDistance(placement.apply(from[i]), to[i]);
  }
  return sum;
}

Quad through(const Placement& placement, const Quad& from) {
  Quad to;
  for (std::size_t i = 0; i < from.size(); ++i) to[i] = placement.apply(from[i]);
  return to;
}

Quad shaken(const Quad& quad, made::Random& random, double most) {
  Quad other = quad;
  for (Point& p : other) {
    const double x = random.real(-most, most);
    const double y = random.real(-most, most);
    p = {p.x + x, p.y + y};
  }
  return other;
}

}  // namespace

// (10, 0) about (0, 0), doubled, a quarter turn clockwise where y is down, then moved.
TEST(Placement, ScalesThenTurnsFromXTowardsYThenMoves) {
  Placement placement;
  placement.anchor = {100.0, 200.0};
  placement.position = {7.0, 9.0};
  placement.scale = {2.0, 3.0};
  placement.degrees = 90.0;
  const Point p = placement.apply({110.0, 200.0});
  EXPECT_NEAR(p.x, 7.0, 1e-12);
  EXPECT_NEAR(p.y, 29.0, 1e-12);
  const Point q = placement.apply({100.0, 201.0});
  EXPECT_NEAR(q.x, 4.0, 1e-12);
  EXPECT_NEAR(q.y, 9.0, 1e-12);
}

TEST(Placement, KeepsTheNumbersOfALayerThatStays) {
  Placement placement;
  placement.anchor = {960.0, 540.0};
  placement.position = {960.0, 540.0};
  const Point p = placement.apply({430.8, 0.1});
  EXPECT_EQ(p.x, 430.8);
  EXPECT_EQ(p.y, 0.1);
}

TEST(NearestPlacement, IsFoundAgain) {
  made::Random random(5);
  for (int i = 0; i < 200; ++i) {
    Placement wanted;
    wanted.anchor = {400.0, 700.0};  // the rectangle's middle
    wanted.position.x = random.real(-1000.0, 1000.0);
    wanted.position.y = random.real(-1000.0, 1000.0);
    wanted.scale.x = random.real(0.1, 3.0);
    wanted.scale.y = random.chance(0.2) ? random.real(-3.0, -0.1) : random.real(0.1, 3.0);
    wanted.degrees = random.real(-720.0, 720.0);
    const double near = wanted.degrees + random.real(-170.0, 170.0);
    const Placement found = nearestPlacement(kRectangle, through(wanted, kRectangle), near);
    EXPECT_EQ(found.anchor.x, 400.0);
    EXPECT_EQ(found.anchor.y, 700.0);
    EXPECT_NEAR(found.position.x, wanted.position.x, 1e-9);
    EXPECT_NEAR(found.position.y, wanted.position.y, 1e-9);
    EXPECT_NEAR(found.scale.x, wanted.scale.x, 1e-9) << i;
    EXPECT_NEAR(found.scale.y, wanted.scale.y, 1e-9) << i;
    EXPECT_NEAR(found.degrees, wanted.degrees, 1e-6) << i;
  }
}

// No placement around it, and none far away, has a smaller sum of squares.
TEST(NearestPlacement, HasTheLeastSquares) {
  made::Random random(9);
  for (int i = 0; i < 100; ++i) {
    const Quad to = shaken(kRectangle, random, i < 50 ? 60.0 : 600.0);
    const Placement best = nearestPlacement(kRectangle, to, 0.0);
    const double least = squares(best, kRectangle, to);
    for (int k = 0; k < 500; ++k) {
      const double size = k % 2 == 0 ? 0.01 : 1.0;
      Placement other = best;
      other.position.x += size * random.real(-100.0, 100.0);
      other.position.y += size * random.real(-100.0, 100.0);
      other.scale.x += size * random.real(-1.0, 1.0);
      other.scale.y += size * random.real(-1.0, 1.0);
      other.degrees += size * random.real(-180.0, 180.0);
      EXPECT_GE(squares(other, kRectangle, to), least * (1.0 - 1e-12)) << i << " " << k;
    }
  }
}

TEST(NearestPlacement, TurnsOnFromTheFrameBefore) {
  double degrees = 0.0;
  for (int frame = 1; frame <= 60; ++frame) {
    Placement wanted;
    wanted.anchor = {400.0, 700.0};
    wanted.degrees = 25.0 * frame;
    degrees = nearestPlacement(kRectangle, through(wanted, kRectangle), degrees).degrees;
    EXPECT_NEAR(degrees, 25.0 * frame, 1e-9);
  }
}

TEST(NearestPlacement, IsFiniteForWhatHasNoSize) {
  const Quad point = {{{3.0, 4.0}, {3.0, 4.0}, {3.0, 4.0}, {3.0, 4.0}}};
  for (const Placement& placement :
       {nearestPlacement(kRectangle, point, 0.0), nearestPlacement(point, kRectangle, 0.0)}) {
    EXPECT_TRUE(std::isfinite(placement.degrees));
    EXPECT_EQ(placement.scale.x, 0.0);
    EXPECT_EQ(placement.scale.y, 0.0);
  }
}
