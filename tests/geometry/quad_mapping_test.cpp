// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

#include "cornerpin/geometry/MGeometry.h"
#include "tests/support/allocations.h"
#include "tests/support/matrices.h"

namespace {

using Quad = std::array<Vector2, 4>;

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kEps = std::numeric_limits<double>::epsilon();

const Quad kUnitSquare = {Vector2(0, 0), Vector2(1, 0), Vector2(1, 1), Vector2(0, 1)};
const Quad kKeystone = {Vector2(0, 0), Vector2(4, 0), Vector2(3, 2), Vector2(1, 2)};

Matrix44 squareToQuad(const Quad& p) {
  Matrix44 m = filledWith(kNan);
  MComputeSquareToQuadProjectionMatrix(p[0], p[1], p[2], p[3], m);
  return m;
}

Matrix44 quadToSquare(const Quad& p) {
  Matrix44 m = filledWith(kNan);
  MComputeQuadToSquareProjectionMatrix(p[0], p[1], p[2], p[3], m);
  return m;
}

Matrix44 quadToQuad(const Quad& s, const Quad& t) {
  Matrix44 m = filledWith(kNan);
  MComputeQuadToQuadProjectionMatrix(s[0], s[1], s[2], s[3], t[0], t[1], t[2], t[3], m);
  return m;
}

Vector2 mapToQuad(const Quad& p, const Vector2& uv) {
  Vector2 out(kNan, kNan);
  MProjectionMapSquareToQuad(p[0], p[1], p[2], p[3], uv, out);
  return out;
}

Vector2 mapToSquare(const Quad& p, const Vector2& xy) {
  Vector2 out(kNan, kNan);
  MProjectionMapQuadToSquare(p[0], p[1], p[2], p[3], xy, out);
  return out;
}

Vector2 through(const Matrix44& m, const Vector2& p) {
  Vector2 q;
  m.transform(p, q);
  return q;
}

double distance(const Vector2& a, const Vector2& b) {
  return std::max(std::abs(a._x - b._x), std::abs(a._y - b._y));
}

// A convex quad: the unit square with every coordinate moved by less than 0.2.
Quad randomQuad(RandomValues& random) {
  Quad q = kUnitSquare;
  for (Vector2& p : q) p = Vector2(p._x + 0.1 * random.value(), p._y + 0.1 * random.value());
  return q;
}

Vector2 randomInSquare(RandomValues& random) {
  const double u = 0.5 + 0.25 * random.value();
  return Vector2(u, 0.5 + 0.25 * random.value());
}

// The homography from four pairs of points, from its eight linear equations in long double.
class SolvedHomography {
 public:
  SolvedHomography(const Quad& from, const Quad& to) {
    for (std::size_t k = 0; k < 4; ++k) {
      const long double x = from[k]._x, y = from[k]._y, u = to[k]._x, v = to[k]._y;
      rows_[2 * k] = {x, y, 1, 0, 0, 0, -x * u, -y * u, u};
      rows_[2 * k + 1] = {0, 0, 0, x, y, 1, -x * v, -y * v, v};
    }
    for (std::size_t k = 0; k < 8; ++k) eliminate(k);
  }

  // Coefficients a .. h; i is 1.
  long double operator[](std::size_t k) const { return rows_[k][8] / rows_[k][k]; }

  Vector2 map(const Vector2& p) const {
    const SolvedHomography& s = *this;
    const long double w = s[6] * p._x + s[7] * p._y + 1;
    return Vector2(static_cast<double>((s[0] * p._x + s[1] * p._y + s[2]) / w),
                   static_cast<double>((s[3] * p._x + s[4] * p._y + s[5]) / w));
  }

 private:
  void eliminate(std::size_t column) {
    std::size_t pivot = column;
    for (std::size_t r = column; r < 8; ++r) {
      if (std::abs(rows_[r][column]) > std::abs(rows_[pivot][column])) pivot = r;
    }
    std::swap(rows_[column], rows_[pivot]);
    for (std::size_t r = 0; r < 8; ++r) {
      if (r == column) continue;
      const long double factor = rows_[r][column] / rows_[column][column];
      for (std::size_t c = 0; c < 9; ++c) rows_[r][c] -= factor * rows_[column][c];
    }
  }

  std::array<std::array<long double, 9>, 8> rows_;
};

// ---- square to quad

TEST(SquareToQuad, OfTheUnitSquareIsTheIdentity) {
  EXPECT_TRUE(same(squareToQuad(kUnitSquare), Matrix44()));
}

TEST(SquareToQuad, OfAParallelogramIsAffine) {
  const Quad p = {Vector2(1, 2), Vector2(4, 3), Vector2(6, 8), Vector2(3, 7)};
  EXPECT_TRUE(same(squareToQuad(p), matrix44({3, 2, 0, 1, 1, 5, 0, 2, 0, 0, 1, 0, 0, 0, 0, 1})));
}

TEST(SquareToQuad, OfAKeystoneByHand) {
  // g = 0, h = 1: the far edge has half the width of the near one.
  EXPECT_TRUE(
      equal(squareToQuad(kKeystone), matrix44({4, 2, 0, 0, 0, 4, 0, 0, 0, 0, 1, 0, 0, 1, 0, 1})));
}

TEST(SquareToQuad, SendsTheCornersOfTheSquareToThoseOfTheQuad) {
  RandomValues random(61);
  for (int trial = 0; trial < 500; ++trial) {
    const Quad p = randomQuad(random);
    const Matrix44 m = squareToQuad(p);
    for (std::size_t k = 0; k < 4; ++k) {
      EXPECT_LE(distance(through(m, kUnitSquare[k]), p[k]), 10 * kEps) << random.seed;
    }
  }
}

TEST(SquareToQuad, IsNotAffineWhenOnlyOneSumIsZero) {
  // The x coordinates cancel, the y coordinates do not.
  const Quad p = {Vector2(0, 0), Vector2(1, 0), Vector2(1, 1), Vector2(0, 2)};
  const Matrix44 m = squareToQuad(p);
  EXPECT_NE(m(3, 0), 0);
  EXPECT_LE(distance(through(m, Vector2(0, 1)), p[3]), 10 * kEps);
}

TEST(SquareToQuad, HasOneFormToTheBit) {
  RandomValues random(62);
  for (int trial = 0; trial < 500; ++trial) {
    const Quad p = randomQuad(random);
    const double x0 = p[0]._x, x1 = p[1]._x, x2 = p[2]._x, x3 = p[3]._x;
    const double y0 = p[0]._y, y1 = p[1]._y, y2 = p[2]._y, y3 = p[3]._y;
    const double sx = ((x0 - x1) + x2) - x3, sy = ((y0 - y1) + y2) - y3;
    const double dx1 = x1 - x2, dx2 = x3 - x2, dy1 = y1 - y2, dy2 = y3 - y2;
    const double den = dx1 * dy2 - dx2 * dy1;
    const double g = (sx * dy2 - dx2 * sy) / den;
    const double h = (dx1 * sy - sx * dy1) / den;
    const double a = (x1 - x0) + g * x1, b = (x3 - x0) + h * x3;
    const double d = (y1 - y0) + g * y1, e = (y3 - y0) + h * y3;
    ASSERT_TRUE(same(squareToQuad(p), matrix44({a, b, 0, x0, d, e, 0, y0, 0, 0, 1, 0, g, h, 0, 1})))
        << random.seed;
    const double u = random.value(), v = random.value();
    const double w = (g * u + h * v) + 1;
    ASSERT_TRUE(same(mapToQuad(p, Vector2(u, v)),
                     Vector2(((a * u + b * v) + x0) / w, ((d * u + e * v) + y0) / w)))
        << random.seed;
  }
}

TEST(SquareToQuad, AgreesWithTheSolvedEquations) {
  RandomValues random(63);
  for (int trial = 0; trial < 500; ++trial) {
    const Quad p = randomQuad(random);
    const SolvedHomography solved(kUnitSquare, p);
    const Matrix44 m = squareToQuad(p);
    const double ours[] = {m(0, 0), m(0, 1), m(0, 3), m(1, 0), m(1, 1), m(1, 3), m(3, 0), m(3, 1)};
    for (std::size_t k = 0; k < 8; ++k) {
      EXPECT_NEAR(ours[k], static_cast<double>(solved[k]), 10 * kEps) << random.seed;
    }
    const Vector2 uv = randomInSquare(random);
    EXPECT_LE(distance(mapToQuad(p, uv), solved.map(uv)), 10 * kEps) << random.seed;
    EXPECT_LE(distance(through(m, uv), solved.map(uv)), 10 * kEps) << random.seed;
  }
}

TEST(SquareToQuad, CarriesZWithTheSameWeight) {
  const Matrix44 m = squareToQuad(kKeystone);
  Vector3 p(0.5, 1, 6);
  m.transform(p, p);
  EXPECT_TRUE(same(p, Vector3(2, 2, 3)));
}

TEST(SquareToQuad, WithItsLastThreeCornersOnALineIsNotFinite) {
  const Quad p = {Vector2(0, 1), Vector2(0, 0), Vector2(1, 0), Vector2(3, 0)};
  const Matrix44 m = squareToQuad(p);
  EXPECT_FALSE(std::isfinite(m(3, 0)));
  EXPECT_FALSE(std::isfinite(m(3, 1)));
}

TEST(SquareToQuad, WithItsFirstThreeCornersOnALineIsSingular) {
  const Quad p = {Vector2(0, 0), Vector2(1, 0), Vector2(2, 0), Vector2(0, 1)};
  EXPECT_TRUE(same(squareToQuad(p), matrix44({2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 1, -1, 0, 1})));
}

TEST(SquareToQuad, OfOnePointIsThatPoint) {
  const Quad p = {Vector2(3, 5), Vector2(3, 5), Vector2(3, 5), Vector2(3, 5)};
  EXPECT_TRUE(same(mapToQuad(p, Vector2(0.25, 0.75)), p[0]));
}

TEST(SquareToQuad, WithANanCornerIsNan) {
  Quad p = kKeystone;
  p[2]._x = kNan;
  const Matrix44 m = squareToQuad(p);
  EXPECT_TRUE(std::isnan(m(3, 0)));
  EXPECT_TRUE(std::isnan(m(0, 0)));
  EXPECT_EQ(m(0, 3), 0.0);
  EXPECT_EQ(m(2, 2), 1.0);
}

TEST(SquareToQuad, MapsTheLineAtInfinityToInfinity) {
  const Vector2 q = mapToQuad(kKeystone, Vector2(1, -1));
  EXPECT_EQ(q._x, kInf);
  EXPECT_EQ(q._y, -kInf);
}

TEST(SquareToQuad, MapsInPlace) {
  Quad p = kKeystone;
  Vector2 uv(0.25, 0.5);
  const Vector2 expected = mapToQuad(p, uv);
  MProjectionMapSquareToQuad(p[0], p[1], p[2], p[3], uv, uv);
  EXPECT_TRUE(same(uv, expected));
  MProjectionMapSquareToQuad(p[0], p[1], p[2], p[3], Vector2(0.25, 0.5), p[2]);
  EXPECT_TRUE(same(p[2], expected));
}

// ---- quad to square

TEST(QuadToSquare, IsTheAdjugateByHand) {
  EXPECT_TRUE(equal(quadToSquare(kKeystone),
                    matrix44({4, -2, 0, 0, 0, 4, 0, 0, 0, 0, 16, 0, 0, -4, 0, 16})));
}

TEST(QuadToSquare, HasOneFormToTheBit) {
  RandomValues random(64);
  for (int trial = 0; trial < 500; ++trial) {
    const Quad p = randomQuad(random);
    const Matrix44 s = squareToQuad(p);
    const double a = s(0, 0), b = s(0, 1), c = s(0, 3);
    const double d = s(1, 0), e = s(1, 1), f = s(1, 3);
    const double g = s(3, 0), h = s(3, 1);
    const double m00 = e - f * h, m01 = c * h - b, m03 = b * f - c * e;
    const double m10 = f * g - d, m11 = a - c * g, m13 = c * d - a * f;
    const double m30 = d * h - e * g, m31 = b * g - a * h, i = a * e - b * d;
    ASSERT_TRUE(same(quadToSquare(p),
                     matrix44({m00, m01, 0, m03, m10, m11, 0, m13, 0, 0, i, 0, m30, m31, 0, i})))
        << random.seed;
    const double x = random.value(), y = random.value();
    const double w = (i + m30 * x) + m31 * y;
    ASSERT_TRUE(same(mapToSquare(p, Vector2(x, y)),
                     Vector2(((m03 + m00 * x) + m01 * y) / w, ((m13 + m10 * x) + m11 * y) / w)))
        << random.seed;
  }
}

TEST(QuadToSquare, SendsTheCornersOfTheQuadToThoseOfTheSquare) {
  RandomValues random(65);
  for (int trial = 0; trial < 500; ++trial) {
    const Quad p = randomQuad(random);
    const Matrix44 m = quadToSquare(p);
    for (std::size_t k = 0; k < 4; ++k) {
      EXPECT_LE(distance(mapToSquare(p, p[k]), kUnitSquare[k]), 10 * kEps) << random.seed;
      EXPECT_LE(distance(through(m, p[k]), kUnitSquare[k]), 10 * kEps) << random.seed;
    }
  }
}

TEST(QuadToSquare, UndoesSquareToQuad) {
  RandomValues random(66);
  for (int trial = 0; trial < 500; ++trial) {
    const Quad p = randomQuad(random);
    const Vector2 uv = randomInSquare(random);
    EXPECT_LE(distance(mapToSquare(p, mapToQuad(p, uv)), uv), 10 * kEps) << random.seed;
    EXPECT_LE(distance(through(quadToSquare(p), through(squareToQuad(p), uv)), uv), 10 * kEps)
        << random.seed;
  }
}

TEST(QuadToSquare, AgreesWithTheSolvedEquations) {
  RandomValues random(67);
  for (int trial = 0; trial < 500; ++trial) {
    const Quad p = randomQuad(random);
    const SolvedHomography solved(p, kUnitSquare);
    const Vector2 xy = mapToQuad(p, randomInSquare(random));
    EXPECT_LE(distance(mapToSquare(p, xy), solved.map(xy)), 10 * kEps) << random.seed;
  }
}

TEST(QuadToSquare, MapsInPlace) {
  Quad p = kKeystone;
  Vector2 xy(2, 1);
  const Vector2 expected = mapToSquare(p, xy);
  MProjectionMapQuadToSquare(p[0], p[1], p[2], p[3], xy, xy);
  EXPECT_TRUE(same(xy, expected));
  MProjectionMapQuadToSquare(p[0], p[1], p[2], p[3], Vector2(2, 1), p[0]);
  EXPECT_TRUE(same(p[0], expected));
}

// ---- quad to quad

TEST(QuadToQuad, AgreesWithTheSolvedEquations) {
  RandomValues random(68);
  for (int trial = 0; trial < 500; ++trial) {
    const Quad s = randomQuad(random);
    const Quad t = randomQuad(random);
    const SolvedHomography solved(s, t);
    const Matrix44 m = quadToQuad(s, t);
    const Vector2 xy = mapToQuad(s, randomInSquare(random));
    EXPECT_LE(distance(through(m, xy), solved.map(xy)), 20 * kEps) << random.seed;
    const double ours[] = {m(0, 0), m(0, 1), m(0, 3), m(1, 0), m(1, 1), m(1, 3), m(3, 0), m(3, 1)};
    double largest = 1;
    for (std::size_t k = 0; k < 8; ++k) {
      largest = std::max(largest, static_cast<double>(std::abs(solved[k])));
    }
    for (std::size_t k = 0; k < 8; ++k) {
      EXPECT_NEAR(ours[k] / m(3, 3), static_cast<double>(solved[k]), 20 * kEps * largest * largest)
          << random.seed;
    }
  }
}

TEST(QuadToQuad, OfEqualQuadsKeepsEveryPointOfThePlane) {
  RandomValues random(69);
  for (int trial = 0; trial < 200; ++trial) {
    const Quad p = randomQuad(random);
    const Vector2 xy = random.vector2();
    EXPECT_LE(distance(through(quadToQuad(p, p), xy), xy), 20 * kEps) << random.seed;
  }
}

TEST(QuadToQuad, HasABottomRowOfLengthOne) {
  RandomValues random(70);
  for (int trial = 0; trial < 200; ++trial) {
    const Matrix44 m = quadToQuad(randomQuad(random), randomQuad(random));
    const double length = std::hypot(std::hypot(m(3, 0), m(3, 1)), std::hypot(m(3, 2), m(3, 3)));
    EXPECT_NEAR(length, 1, 4 * kEps) << random.seed;
  }
}

TEST(QuadToQuad, IsTheProductTimesTheReciprocalOfItsBottomRowToTheBit) {
  RandomValues random(71);
  for (int trial = 0; trial < 500; ++trial) {
    const Quad s = randomQuad(random);
    const Quad t = randomQuad(random);
    Matrix44 expected = squareToQuad(t);
    expected.rightMult(quadToSquare(s));
    const double q0 = expected(3, 0) * expected(3, 0), q1 = expected(3, 1) * expected(3, 1);
    const double q2 = expected(3, 2) * expected(3, 2), q3 = expected(3, 3) * expected(3, 3);
    const double reciprocal = 1 / std::sqrt(((q0 + q1) + q2) + q3);
    for (int k = 0; k < 16; ++k) expected(k / 4, k % 4) *= reciprocal;
    ASSERT_TRUE(same(quadToQuad(s, t), expected)) << random.seed;
  }
}

TEST(QuadToQuad, HasAnElementForZOfItsOwn) {
  const Matrix44 m = quadToQuad(kKeystone, kKeystone);
  // 1 * 16 before the scaling, where element (3, 3) is 1 * 16 as well; the bottom rows differ.
  EXPECT_EQ(m(2, 2), 1.0);
  const Quad shifted = {Vector2(1, 1), Vector2(5, 1), Vector2(4, 3), Vector2(2, 3)};
  const Matrix44 n = quadToQuad(shifted, kKeystone);
  EXPECT_NE(n(2, 2), n(3, 3));
}

// A rectangle of sides `width` and 1 is carried with a bottom row of length `width`.
Matrix44 rectangleToSquare(double width) {
  const Quad s = {Vector2(0, 0), Vector2(width, 0), Vector2(width, 1), Vector2(0, 1)};
  return quadToQuad(s, kUnitSquare);
}

TEST(QuadToQuad, IsNotScaledWhenItsBottomRowIsShort) {
  const double width = std::nextafter(1e-7, 0);
  const Matrix44 m = rectangleToSquare(width);
  EXPECT_EQ(m(3, 3), width);
  EXPECT_EQ(m(0, 0), 1.0);
}

TEST(QuadToQuad, IsScaledFromTheBoundOn) {
  const Matrix44 m = rectangleToSquare(1e-7);
  EXPECT_EQ(m(3, 3), 1e-7 * (1 / 1e-7));
  EXPECT_EQ(m(0, 0), 1 / 1e-7);
}

TEST(QuadToQuad, OfAPointAsSourceIsZeroAndNotScaled) {
  const Quad s = {Vector2(0, 0), Vector2(0, 0), Vector2(0, 0), Vector2(0, 0)};
  EXPECT_TRUE(same(quadToQuad(s, kUnitSquare), filledWith(0)));
}

TEST(QuadToQuad, WithANanCornerIsNan) {
  Quad s = kKeystone;
  s[1]._y = kNan;
  const Matrix44 m = quadToQuad(s, kUnitSquare);
  EXPECT_TRUE(std::isnan(m(3, 3)));
  EXPECT_TRUE(std::isnan(m(0, 0)));
}

TEST(QuadMappings, AllocateNothing) {
  const std::size_t before = allocations::made();
  const Matrix44 a = quadToQuad(kKeystone, kUnitSquare);
  const Vector2 b = mapToQuad(kKeystone, mapToSquare(kKeystone, Vector2(1, 1)));
  EXPECT_EQ(allocations::made(), before);
  EXPECT_TRUE(std::isfinite(a(0, 0) + b._x));
}

}  // namespace
