// SPDX-License-Identifier: BSD-3-Clause
#include "shot/plane/quad_shape.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

using namespace cornerpin;

namespace {

// The shape of the corners in all eight orders that go around the same way.
void expectShape(Quad quad, QuadShape shape) {
  for (int way = 0; way < 2; ++way) {
    for (int start = 0; start < 4; ++start) {
      EXPECT_EQ(shapeOf(quad), shape) << "way " << way << ", start " << start;
      std::rotate(quad.begin(), quad.begin() + 1, quad.end());
    }
    std::reverse(quad.begin(), quad.end());
  }
}

// Whether p lies inside the triangle: a combination of its corners with weights above 0.
bool isInside(Point p, Point a, Point b, Point c) {
  const double area = (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
  const double v = ((p.x - a.x) * (c.y - a.y) - (p.y - a.y) * (c.x - a.x)) / area;
  const double w = ((b.x - a.x) * (p.y - a.y) - (b.y - a.y) * (p.x - a.x)) / area;
  return v > 0 && w > 0 && v + w < 1;
}

// Whether the sides a-b and c-d meet, by where the lines cut each other.
bool meet(Point a, Point b, Point c, Point d) {
  const double down = (b.x - a.x) * (d.y - c.y) - (b.y - a.y) * (d.x - c.x);
  const double s = ((c.x - a.x) * (d.y - c.y) - (c.y - a.y) * (d.x - c.x)) / down;
  const double t = ((c.x - a.x) * (b.y - a.y) - (c.y - a.y) * (b.x - a.x)) / down;
  return s > 0 && s < 1 && t > 0 && t < 1;
}

QuadShape plainShapeOf(const Quad& q) {
  if (meet(q[0], q[1], q[2], q[3]) || meet(q[1], q[2], q[3], q[0])) return QuadShape::Crossed;
  for (std::size_t i = 0; i < 4; ++i) {
    if (isInside(q[i], q[(i + 1) % 4], q[(i + 2) % 4], q[(i + 3) % 4])) return QuadShape::Dented;
  }
  return QuadShape::Convex;
}

}  // namespace

TEST(QuadShape, IsConvexWhereEverySideHasTheOthersOnOneHand) {
  expectShape({{{0, 0}, {4, 0}, {4, 3}, {0, 3}}}, QuadShape::Convex);
  expectShape({{{-7, 2}, {1, -9}, {80, 3}, {6, 41}}}, QuadShape::Convex);
}

TEST(QuadShape, IsCrossedWhereTwoSidesCross) {
  expectShape({{{0, 0}, {4, 3}, {4, 0}, {0, 3}}}, QuadShape::Crossed);
}

TEST(QuadShape, IsDentedWhereACornerLiesWithin) {
  expectShape({{{0, 0}, {4, 0}, {1, 1}, {0, 4}}}, QuadShape::Dented);
}

TEST(QuadShape, IsFlatWithCornersOnOneLineOrInOnePlace) {
  expectShape({{{0, 0}, {2, 0}, {4, 0}, {0, 3}}}, QuadShape::Flat);
  expectShape({{{0, 0}, {0, 0}, {4, 0}, {0, 3}}}, QuadShape::Flat);
  expectShape({{{0, 0}, {4, 0}, {0, 0}, {0, 3}}}, QuadShape::Flat);
  expectShape({{{1, 1}, {2, 2}, {3, 3}, {4, 4}}}, QuadShape::Flat);
  expectShape({{{5, 5}, {5, 5}, {5, 5}, {5, 5}}}, QuadShape::Flat);
  // A thousandth of a micron beside the line.
  expectShape({{{0, 0}, {2, 1e-10}, {4, 0}, {0, 3}}}, QuadShape::Flat);
  expectShape({{{0, 0}, {2, -1e-6}, {4, 0}, {0, 3}}}, QuadShape::Convex);
}

TEST(QuadShape, IsFlatWhereACornerIsNotFinite) {
  for (double x : {std::nan(""), std::numeric_limits<double>::infinity()}) {
    expectShape({{{x, 0}, {4, 0}, {4, 3}, {0, 3}}}, QuadShape::Flat);
  }
}

TEST(QuadShape, DoesNotDependOnTheUnit) {
  for (double unit : {1e-200, 1e-30, 1e30, 1e200}) {
    const auto scaled = [&](Quad quad) {
      for (Point& p : quad) p = {p.x * unit, p.y * unit};
      return quad;
    };
    expectShape(scaled({{{0, 0}, {4, 0}, {4, 3}, {0, 3}}}), QuadShape::Convex);
    expectShape(scaled({{{0, 0}, {4, 3}, {4, 0}, {0, 3}}}), QuadShape::Crossed);
    expectShape(scaled({{{0, 0}, {4, 0}, {1, 1}, {0, 4}}}), QuadShape::Dented);
    expectShape(scaled({{{0, 0}, {2, 0}, {4, 0}, {0, 3}}}), QuadShape::Flat);
  }
}

TEST(QuadShape, AgreesWithCrossingsAndTrianglesOnRandomCorners) {
  std::mt19937 random(3);
  int counts[4] = {};
  for (int i = 0; i < 2000; ++i) {
    Quad quad;
    for (Point& p : quad) {
      const double x = static_cast<double>(random() % 10007);
      const double y = static_cast<double>(random() % 10007);
      p = {x, y};
    }
    EXPECT_EQ(shapeOf(quad), plainShapeOf(quad)) << "seed 3, quad " << i;
    ++counts[static_cast<int>(shapeOf(quad))];
  }
  EXPECT_GT(counts[0], 400);
  EXPECT_GT(counts[2], 400);
  EXPECT_GT(counts[3], 400);
}
