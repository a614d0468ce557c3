// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "cornerpin/deriv/projection_jacobian.h"
#include "cornerpin/geometry/MGeometry.h"
#include "tests/support/allocations.h"
#include "tests/support/matrices.h"

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kEps = std::numeric_limits<double>::epsilon();

const Matrix44 kPinhole = matrix44({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 1, 0});

Matrix44 affineOf(const Matrix44& m, const Vector3& p) {
  Matrix44 aff = filledWith(kNan);
  perspectiveToAffine(m, p, &aff);
  return aff;
}

Vector3 through(const Matrix44& m, const Vector3& p) {
  Vector3 q;
  m.transform(p, q);
  return q;
}

struct ScaleTranslate {
  Vector3 scale{kNan, kNan, kNan};
  Vector3 translate{kNan, kNan, kNan};
};

ScaleTranslate scaleTranslateOf(const Matrix44& m, const Vector3& p, const Vector3& weights) {
  ScaleTranslate result;
  getScaleTranslate(m, p, weights, &result.scale, &result.translate);
  return result;
}

void expectNear(const Vector3& a, const Vector3& b, double tolerance) {
  EXPECT_NEAR(a._x, b._x, tolerance);
  EXPECT_NEAR(a._y, b._y, tolerance);
  EXPECT_NEAR(a._z, b._z, tolerance);
}

Vector3 plus(const Vector3& p, const Vector3& d, double step) {
  return Vector3(p._x + step * d._x, p._y + step * d._y, p._z + step * d._z);
}

// ---- perspectiveToAffine

TEST(PerspectiveToAffine, OfTheDivisionByZByHand) {
  // At (2, 3, 4): x' = 0.5 + (x - 2) / 4 - (z - 4) / 8, y' = 0.75 + (y - 3) / 4 - 3 (z - 4) / 16.
  EXPECT_TRUE(
      same(affineOf(kPinhole, Vector3(2, 3, 4)),
           matrix44({0.25, 0, -0.125, 0.5, 0, 0.25, -0.1875, 0.75, 0, 0, 0, 1, 0, 0, 0, 1})));
}

TEST(PerspectiveToAffine, IsAffine) {
  RandomValues random(81);
  for (int trial = 0; trial < 500; ++trial) {
    const Matrix44 aff = affineOf(random.mildProjection(), random.vector3());
    EXPECT_EQ(aff(3, 0), 0.0);
    EXPECT_EQ(aff(3, 1), 0.0);
    EXPECT_EQ(aff(3, 2), 0.0);
    EXPECT_EQ(aff(3, 3), 1.0);
  }
}

TEST(PerspectiveToAffine, OfAnAffineMatrixIsThatMatrix) {
  RandomValues random(82);
  for (int trial = 0; trial < 200; ++trial) {
    Matrix44 m = random.matrix();
    for (int c = 0; c < 4; ++c) m(3, c) = c == 3 ? 1 : 0;
    const Matrix44 aff = affineOf(m, random.vector3());
    for (int r = 0; r < 4; ++r) {
      for (int c = 0; c < 3; ++c) EXPECT_EQ(aff(r, c), m(r, c)) << random.seed;
      EXPECT_NEAR(aff(r, 3), m(r, 3), 60 * kEps) << random.seed;
    }
  }
}

TEST(PerspectiveToAffine, KeepsTheImageOfThePoint) {
  RandomValues random(83);
  for (int trial = 0; trial < 500; ++trial) {
    const Matrix44 m = random.mildProjection();
    const Vector3 p = random.vector3();
    expectNear(through(affineOf(m, p), p), through(m, p), 300 * kEps);
  }
}

TEST(PerspectiveToAffine, IsOffBySecondOrderNearThePoint) {
  RandomValues random(84);
  for (int trial = 0; trial < 200; ++trial) {
    const Matrix44 m = random.mildProjection();
    const Vector3 p = random.vector3();
    const Vector3 direction = random.vector3();
    const Matrix44 aff = affineOf(m, p);
    for (const double step : {1e-3, 1e-4, 1e-5}) {
      const Vector3 near = plus(p, direction, step);
      expectNear(through(aff, near), through(m, near), 100 * step * step + 300 * kEps);
    }
  }
}

TEST(PerspectiveToAffine, OfAQuadMappingMovesNearbyPointsAlike) {
  const Vector2 s[] = {Vector2(0, 0), Vector2(4, 0), Vector2(3, 2), Vector2(1, 2)};
  const Vector2 t[] = {Vector2(1, 1), Vector2(5, 2), Vector2(4, 6), Vector2(0, 4)};
  Matrix44 m;
  MComputeQuadToQuadProjectionMatrix(s[0], s[1], s[2], s[3], t[0], t[1], t[2], t[3], m);
  const Vector3 p(2, 1, 0);
  const Matrix44 aff = affineOf(m, p);
  const double step = 1e-6;
  for (const Vector3& direction : {Vector3(1, 0, 0), Vector3(0, 1, 0), Vector3(-1, 2, 0)}) {
    const Vector3 near = plus(p, direction, step);
    expectNear(plus(through(aff, near), through(aff, p), -1),
               plus(through(m, near), through(m, p), -1), 100 * step * step + 100 * kEps);
  }
}

TEST(PerspectiveToAffine, ComposesTheTranslationsInOneOrderToTheBit) {
  RandomValues random(85);
  for (int trial = 0; trial < 500; ++trial) {
    const Matrix44 m = random.matrix();
    const Vector3 p = random.vector3();
    const Vector3 q = through(m, p);
    Matrix44 expected;
    projectionJacobian(p, m, expected);
    const double moves[] = {q._x, q._y, q._z};
    for (int r = 0; r < 3; ++r) {
      double t = -p._x * expected(r, 0);
      t = t + -p._y * expected(r, 1);
      t = t + -p._z * expected(r, 2);
      expected(r, 3) = moves[r] + t;
    }
    ASSERT_TRUE(same(affineOf(m, p), expected)) << random.seed;
  }
}

TEST(PerspectiveToAffine, KeepsAnInfiniteDerivativeOutOfTheTranslationWhereThePointIsZero) {
  // x' = 1e300 z / 1e-10: at z = 0 the value is 0, while its derivative overflows.
  Matrix44 m;
  m(0, 0) = 0;
  m(0, 2) = 1e300;
  m(3, 3) = 1e-10;
  const Matrix44 aff = affineOf(m, Vector3(1, 0, 0));
  EXPECT_EQ(aff(0, 2), kInf);
  EXPECT_EQ(aff(0, 3), 0.0);
  EXPECT_EQ(affineOf(m, Vector3(1, 0, 1e-300))(0, 3), -kInf);
}

TEST(PerspectiveToAffine, MayOverwriteItsMatrix) {
  RandomValues random(86);
  Matrix44 m = random.mildProjection();
  const Vector3 p = random.vector3();
  const Matrix44 expected = affineOf(m, p);
  perspectiveToAffine(m, p, &m);
  EXPECT_TRUE(same(m, expected));
}

TEST(PerspectiveToAffine, OnThePlaneAtInfinityIsNotFinite) {
  const Matrix44 aff = affineOf(kPinhole, Vector3(1, 2, 0));
  EXPECT_FALSE(std::isfinite(aff(0, 0)));
  EXPECT_FALSE(std::isfinite(aff(0, 3)));
  EXPECT_FALSE(std::isfinite(aff(2, 3)));
}

// ---- getScaleTranslate

TEST(GetScaleTranslate, OfAUniformScaling) {
  for (const double s : {3.0, -3.0}) {
    const Matrix44 m = matrix44({s, 0, 0, 0, 0, s, 0, 0, 0, 0, s, 0, 0, 0, 0, 1});
    const ScaleTranslate r = scaleTranslateOf(m, Vector3(0, 0, 0), Vector3(1, 1, 1));
    EXPECT_TRUE(same(r.scale, Vector3(3, 3, 3)));
    EXPECT_TRUE(same(r.translate, Vector3(0, 0, 0)));
  }
}

TEST(GetScaleTranslate, OfATranslation) {
  const Matrix44 m = matrix44({1, 0, 0, 5, 0, 1, 0, -6, 0, 0, 1, 7, 0, 0, 0, 1});
  const ScaleTranslate r = scaleTranslateOf(m, Vector3(1, 2, 3), Vector3(1, 1, 1));
  EXPECT_TRUE(same(r.scale, Vector3(1, 1, 1)));
  EXPECT_TRUE(same(r.translate, Vector3(5, -6, 7)));
}

TEST(GetScaleTranslate, WeightsTheOutputCoordinates) {
  // Column 0 is (3, 4, 0), column 1 is (0, 0, 2), column 2 is (1, 0, 0).
  const Matrix44 m = matrix44({3, 0, 1, 0, 4, 0, 0, 0, 0, 2, 0, 0, 0, 0, 0, 1});
  EXPECT_TRUE(
      same(scaleTranslateOf(m, Vector3(0, 0, 0), Vector3(1, 1, 1)).scale, Vector3(5, 2, 1)));
  EXPECT_TRUE(
      same(scaleTranslateOf(m, Vector3(0, 0, 0), Vector3(4, 0, 10)).scale, Vector3(12, 20, 4)));
}

TEST(GetScaleTranslate, HasOneFormToTheBit) {
  RandomValues random(87);
  for (int trial = 0; trial < 500; ++trial) {
    const Matrix44 m = random.matrix();
    const Vector3 p = random.vector3();
    const Vector3 w = random.vector3();
    Matrix44 j;
    projectionJacobian(p, m, j);
    const auto length = [&](int c) {
      const double x = j(0, c) * w._x, y = j(1, c) * w._y, z = j(2, c) * w._z;
      const double xx = x * x, yy = y * y, zz = z * z;
      return std::sqrt((xx + yy) + zz);
    };
    const ScaleTranslate r = scaleTranslateOf(m, p, w);
    ASSERT_TRUE(same(r.scale, Vector3(length(0), length(1), length(2)))) << random.seed;
    const Vector3 q = through(m, p);
    ASSERT_TRUE(same(r.translate, Vector3(q._x - p._x, q._y - p._y, q._z - p._z))) << random.seed;
  }
}

TEST(GetScaleTranslate, ShorterFormsSupplyTheirDefaults) {
  RandomValues random(88);
  const Matrix44 m = random.mildProjection();
  const Vector3 p = random.vector3();
  ScaleTranslate r;
  getScaleTranslate(m, p, &r.scale, &r.translate);
  ScaleTranslate expected = scaleTranslateOf(m, p, Vector3(1, 1, 1));
  EXPECT_TRUE(same(r.scale, expected.scale));
  EXPECT_TRUE(same(r.translate, expected.translate));
  getScaleTranslate(m, &r.scale, &r.translate);
  expected = scaleTranslateOf(m, Vector3(0, 0, 0), Vector3(1, 1, 1));
  EXPECT_TRUE(same(r.scale, expected.scale));
  EXPECT_TRUE(same(r.translate, expected.translate));
}

TEST(GetScaleTranslate, MayOverwriteItsInputs) {
  RandomValues random(89);
  const Matrix44 m = random.mildProjection();
  Vector3 p = random.vector3();
  Vector3 weights = random.vector3();
  const ScaleTranslate expected = scaleTranslateOf(m, p, weights);
  const Vector3 point = p;
  const Vector3 weightsGiven = weights;
  getScaleTranslate(m, p, weights, &weights, &p);
  EXPECT_TRUE(same(weights, expected.scale));
  EXPECT_TRUE(same(p, expected.translate));
  p = point;
  weights = weightsGiven;
  getScaleTranslate(m, p, weights, &p, &weights);
  EXPECT_TRUE(same(p, expected.scale));
  EXPECT_TRUE(same(weights, expected.translate));
}

TEST(GetScaleTranslate, OnThePlaneAtInfinityIsNotFinite) {
  const ScaleTranslate r = scaleTranslateOf(kPinhole, Vector3(1, 2, 0), Vector3(1, 1, 1));
  EXPECT_FALSE(std::isfinite(r.scale._x));
  EXPECT_FALSE(std::isfinite(r.translate._x));
}

TEST(PerspectiveAffine, ReleasesAllItAllocates) {
  const std::size_t live = allocations::live();
  const Matrix44 aff = affineOf(kPinhole, Vector3(1, 2, 3));
  const ScaleTranslate r = scaleTranslateOf(aff, Vector3(1, 2, 3), Vector3(1, 1, 1));
  EXPECT_EQ(allocations::live(), live);
  EXPECT_TRUE(std::isfinite(r.scale._x));
}

}  // namespace
