// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/foundation/lv_matrix44.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/support/allocations.h"
#include "tests/support/matrices.h"
#include "tests/support/same_bits.h"

namespace {

using Matrix = Matrix44;
using Quat = LvQuat<double>;
using Vector4 = LvVector4<double>;

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kEps = std::numeric_limits<double>::epsilon();
constexpr double kPi = 3.14159265358979323846;

Matrix translation(double x, double y, double z) {
  return matrix44({1, 0, 0, x, 0, 1, 0, y, 0, 0, 1, z, 0, 0, 0, 1});
}

const Matrix kIdentity = matrix44({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
const Matrix kPinhole = matrix44({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 1, 0});

// a0 * b0 + a1 * b1 + a2 * b2 + a3 * b3 from left to right
double sumOfProducts(double a0, double b0, double a1, double b1, double a2, double b2, double a3,
                     double b3) {
  const double p0 = a0 * b0, p1 = a1 * b1, p2 = a2 * b2, p3 = a3 * b3;
  return ((p0 + p1) + p2) + p3;
}

TEST(LvMatrix44, DefaultConstructionIsTheIdentity) { EXPECT_TRUE(same(Matrix(), kIdentity)); }

TEST(LvMatrix44, StoresRowByRow) {
  Matrix m;
  EXPECT_EQ(&m(0, 3) - &m(0, 0), 3);
  EXPECT_EQ(&m(2, 1) - &m(0, 0), 9);
  EXPECT_EQ(sizeof m, 16 * sizeof(double));
}

TEST(LvMatrix44, SetIdentityOverwritesEveryElement) {
  Matrix m = filledWith(kNan);
  m.setIdentity();
  EXPECT_TRUE(same(m, kIdentity));
}

TEST(LvMatrix44, CopiesAreIndependent) {
  Matrix a;
  const Matrix b = a;
  a(0, 0) = 5;
  EXPECT_EQ(b(0, 0), 1.0);
}

TEST(LvMatrix44RightMult, ByTheIdentityChangesNothing) {
  RandomValues random(1);
  const Matrix a = random.matrix();
  Matrix b = a;
  EXPECT_EQ(&b.rightMult(Matrix()), &b);
  EXPECT_TRUE(same(b, a));
  Matrix c;
  EXPECT_TRUE(same(c.rightMult(a), a));
}

TEST(LvMatrix44RightMult, MultipliesRowsByColumns) {
  Matrix a = matrix44({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16});
  a.rightMult(matrix44({1, 0, 2, 0, 0, 1, 0, 3, 1, 1, 0, 0, 0, 0, 1, 1}));
  EXPECT_TRUE(same(a, matrix44({4, 5, 6, 10, 12, 13, 18, 26, 20, 21, 30, 42, 28, 29, 42, 58})));
}

TEST(LvMatrix44RightMult, LetsTheArgumentActFirst) {
  Matrix a = matrix44({2, 0, 0, 1, 0, 3, 0, 0, 0, 0, 4, 0, 0, 0, 0, 1});
  a.rightMult(translation(10, 20, 30));
  Vector3 p(1, 2, 3);
  a.transform(p, p);
  EXPECT_EQ(p._x, 2 * (1 + 10) + 1);
  EXPECT_EQ(p._y, 3 * (2 + 20));
  EXPECT_EQ(p._z, 4 * (3 + 30));
}

TEST(LvMatrix44RightMult, SumsFromLeftToRightToTheBit) {
  const unsigned seed = 21;
  RandomValues random(seed);
  for (int trial = 0; trial < 500; ++trial) {
    const Matrix a = random.matrix();
    const Matrix b = random.matrix();
    Matrix expected;
    for (int r = 0; r < 4; ++r) {
      for (int c = 0; c < 4; ++c) {
        expected(r, c) =
            sumOfProducts(a(r, 0), b(0, c), a(r, 1), b(1, c), a(r, 2), b(2, c), a(r, 3), b(3, c));
      }
    }
    Matrix product = a;
    ASSERT_TRUE(same(product.rightMult(b), expected)) << "seed " << seed;
  }
}

TEST(LvMatrix44RightMult, ByItselfIsNotTheSquare) {
  // Row 0 becomes (7, 10); row 1 is then (3 * 7 + 4 * 3, 3 * 10 + 4 * 4), not (15, 22).
  Matrix a = matrix44({1, 2, 0, 0, 3, 4, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
  a.rightMult(a);
  EXPECT_TRUE(same(a, matrix44({7, 10, 0, 0, 33, 46, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1})));
}

TEST(LvMatrix44RightMult, ByItselfUsesTheRowsAlreadyReplaced) {
  RandomValues random(22);
  const Matrix a = random.matrix();
  Matrix expected = a;
  for (int r = 0; r < 4; ++r) {
    const double row[] = {expected(r, 0), expected(r, 1), expected(r, 2), expected(r, 3)};
    for (int c = 0; c < 4; ++c) {
      expected(r, c) = sumOfProducts(row[0], expected(0, c), row[1], expected(1, c), row[2],
                                     expected(2, c), row[3], expected(3, c));
    }
  }
  Matrix product = a;
  product.rightMult(product);
  EXPECT_TRUE(same(product, expected));
}

TEST(LvMatrix44Transform, OfAPointDividesByW) {
  Vector3 q;
  kPinhole.transform(Vector3(2, 3, 4), q);
  EXPECT_EQ(q._x, 0.5);
  EXPECT_EQ(q._y, 0.75);
  EXPECT_EQ(q._z, 1.0);
}

TEST(LvMatrix44Transform, OfAPointSumsFromLeftToRightToTheBit) {
  const unsigned seed = 23;
  RandomValues random(seed);
  for (int trial = 0; trial < 1000; ++trial) {
    const Matrix m = random.matrix();
    const double x = random.value(), y = random.value(), z = random.value();
    const auto row = [&](int r) {
      return sumOfProducts(m(r, 0), x, m(r, 1), y, m(r, 2), z, m(r, 3), 1);
    };
    Vector3 q(kNan, kNan, kNan);
    m.transform(Vector3(x, y, z), q);
    ASSERT_TRUE(sameBits(q._x, row(0) / row(3))) << "seed " << seed;
    ASSERT_TRUE(sameBits(q._y, row(1) / row(3))) << "seed " << seed;
    ASSERT_TRUE(sameBits(q._z, row(2) / row(3))) << "seed " << seed;
  }
}

TEST(LvMatrix44Transform, OfAPointMayOverwriteIt) {
  RandomValues random(24);
  const Matrix m = random.matrix();
  const Vector3 p(0.3, -0.7, 1.9);
  Vector3 q;
  Vector3 inPlace = p;
  m.transform(p, q);
  m.transform(inPlace, inPlace);
  EXPECT_TRUE(sameBits(inPlace._x, q._x));
  EXPECT_TRUE(sameBits(inPlace._y, q._y));
  EXPECT_TRUE(sameBits(inPlace._z, q._z));
}

TEST(LvMatrix44Transform, OnThePlaneAtInfinityIsNotFinite) {
  Matrix m;
  m(3, 3) = 0;
  Vector3 q;
  m.transform(Vector3(2, -3, 0), q);
  EXPECT_EQ(q._x, kInf);
  EXPECT_EQ(q._y, -kInf);
  EXPECT_TRUE(std::isnan(q._z));
}

TEST(LvMatrix44Transform, OfAPlanePointIgnoresTheThirdColumnAndRow) {
  RandomValues random(25);
  Matrix m = random.matrix();
  Vector2 expected;
  m.transform(Vector2(0.5, -1.5), expected);
  for (int i = 0; i < 4; ++i) m(i, 2) = m(2, i) = kNan;
  Vector2 q;
  m.transform(Vector2(0.5, -1.5), q);
  EXPECT_TRUE(sameBits(q._x, expected._x));
  EXPECT_TRUE(sameBits(q._y, expected._y));
  EXPECT_TRUE(std::isfinite(q._x));
}

TEST(LvMatrix44Transform, OfAPlanePointSumsFromLeftToRightToTheBit) {
  const unsigned seed = 26;
  RandomValues random(seed);
  for (int trial = 0; trial < 1000; ++trial) {
    const Matrix m = random.matrix();
    const double x = random.value(), y = random.value();
    const auto row = [&](int r) {
      const double px = m(r, 0) * x, py = m(r, 1) * y;
      return (px + py) + m(r, 3);
    };
    Vector2 q(x, y);
    m.transform(q, q);
    ASSERT_TRUE(sameBits(q._x, row(0) / row(3))) << "seed " << seed;
    ASSERT_TRUE(sameBits(q._y, row(1) / row(3))) << "seed " << seed;
  }
}

TEST(LvMatrix44Transform, OfAHomogeneousPointDoesNotDivide) {
  const Matrix m = matrix44({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16});
  Vector4 q;
  m.transform(Vector4(1, 10, 100, 1000), q);
  EXPECT_EQ(q._x, 4321.0);
  EXPECT_EQ(q._y, 8765.0);
  EXPECT_EQ(q._z, 13209.0);
  EXPECT_EQ(q._w, 17653.0);
}

TEST(LvMatrix44Transform, OfAHomogeneousPointSumsFromLeftToRightInPlace) {
  const unsigned seed = 27;
  RandomValues random(seed);
  for (int trial = 0; trial < 1000; ++trial) {
    const Matrix m = random.matrix();
    const double x = random.value(), y = random.value(), z = random.value(), w = random.value();
    const auto row = [&](int r) {
      return sumOfProducts(m(r, 0), x, m(r, 1), y, m(r, 2), z, m(r, 3), w);
    };
    Vector4 q(x, y, z, w);
    m.transform(q, q);
    ASSERT_TRUE(sameBits(q._x, row(0))) << "seed " << seed;
    ASSERT_TRUE(sameBits(q._y, row(1))) << "seed " << seed;
    ASSERT_TRUE(sameBits(q._z, row(2))) << "seed " << seed;
    ASSERT_TRUE(sameBits(q._w, row(3))) << "seed " << seed;
  }
}

TEST(LvMatrix44Rotation, OfTheIdentityQuaternionIsTheIdentity) {
  Matrix m = filledWith(kNan);
  m.setRotationFromQuaternion(Quat());
  EXPECT_TRUE(same(m, kIdentity));
}

TEST(LvMatrix44Rotation, DividesOutTheLengthOfTheQuaternion) {
  Matrix m = filledWith(kNan);
  m.setRotationFromQuaternion(Quat(2, 0, 0, 0));
  EXPECT_TRUE(same(m, kIdentity));
}

TEST(LvMatrix44Rotation, TurnsXIntoYByAQuarterAboutZ) {
  Quat q;
  q.setAxisAngle(Vector3(0, 0, 1), kPi / 2);
  Matrix m;
  m.setRotationFromQuaternion(q);
  Vector3 p(1, 0, 0);
  m.transform(p, p);
  EXPECT_NEAR(p._x, 0, 4 * kEps);
  EXPECT_NEAR(p._y, 1, 4 * kEps);
  EXPECT_EQ(p._z, 0);
}

TEST(LvMatrix44Rotation, AgreesWithRodrigues) {
  const unsigned seed = 28;
  RandomValues random(seed);
  for (int trial = 0; trial < 500; ++trial) {
    const Vector3 axis(random.value(), random.value(), random.value());
    const double angle = 2 * random.value();
    const Vector3 p(random.value(), random.value(), random.value());
    const double length = std::hypot(std::hypot(axis._x, axis._y), axis._z);
    const Vector3 k(axis._x / length, axis._y / length, axis._z / length);
    const double c = std::cos(angle), s = std::sin(angle);
    const double along = (k._x * p._x + k._y * p._y + k._z * p._z) * (1 - c);
    const double scale = 50 * kEps * (1 + std::abs(p._x) + std::abs(p._y) + std::abs(p._z));
    Quat q;
    q.setAxisAngle(axis, angle);
    Matrix m;
    m.setRotationFromQuaternion(q);
    Vector3 r;
    m.transform(p, r);
    EXPECT_NEAR(r._x, p._x * c + (k._y * p._z - k._z * p._y) * s + k._x * along, scale) << seed;
    EXPECT_NEAR(r._y, p._y * c + (k._z * p._x - k._x * p._z) * s + k._y * along, scale) << seed;
    EXPECT_NEAR(r._z, p._z * c + (k._x * p._y - k._y * p._x) * s + k._z * along, scale) << seed;
  }
}

TEST(LvMatrix44Rotation, HasOneFormToTheBit) {
  const unsigned seed = 29;
  RandomValues random(seed);
  for (int trial = 0; trial < 1000; ++trial) {
    const double w = random.value(), x = random.value(), y = random.value(), z = random.value();
    const double s = 2 / sumOfProducts(w, w, x, x, y, y, z, z);
    const auto p = [s](double a, double b) {  // a * (b * s)
      const double scaled = b * s;
      return a * scaled;
    };
    const Matrix expected =
        matrix44({1 - (p(y, y) + p(z, z)), p(x, y) - p(w, z), p(x, z) + p(w, y), 0,
                  p(x, y) + p(w, z), 1 - (p(x, x) + p(z, z)), p(y, z) - p(w, x), 0,
                  p(x, z) - p(w, y), p(y, z) + p(w, x), 1 - (p(x, x) + p(y, y)), 0, 0, 0, 0, 1});
    Matrix m = filledWith(kNan);
    m.setRotationFromQuaternion(Quat(w, x, y, z));
    ASSERT_TRUE(same(m, expected)) << "seed " << seed;
  }
}

TEST(LvMatrix44Rotation, OfAZeroQuaternionIsNan) {
  Matrix m;
  m.setRotationFromQuaternion(Quat(0, 0, 0, 0));
  EXPECT_TRUE(std::isnan(m(0, 0)));
  EXPECT_TRUE(std::isnan(m(2, 1)));
  EXPECT_EQ(m(0, 3), 0.0);
  EXPECT_EQ(m(3, 3), 1.0);
}

TEST(LvMatrix44LeftRotate, RotatesAfterTheTransform) {
  Quat q;
  q.setAxisAngle(Vector3(0, 0, 1), kPi / 2);
  Matrix m = translation(1, 0, 0);
  m.leftRotate(q);
  Vector3 p(1, 0, 5);
  m.transform(p, p);
  EXPECT_NEAR(p._x, 0, 8 * kEps);
  EXPECT_NEAR(p._y, 2, 8 * kEps);
  EXPECT_EQ(p._z, 5);
}

TEST(LvMatrix44LeftRotate, IsTheRotationTimesTheMatrixToTheBit) {
  RandomValues random(30);
  const Quat q(random.value(), random.value(), random.value(), random.value());
  Matrix m = random.matrix();
  Matrix expected;
  expected.setRotationFromQuaternion(q);
  expected.rightMult(m);
  m.leftRotate(q);
  EXPECT_TRUE(same(m, expected));
}

TEST(LvMatrix44, OfDoublesAllocatesNothing) {
  const std::size_t before = allocations::made();
  Matrix m = translation(1, 2, 3);
  Quat q;
  q.setAxisAngle(Vector3(1, 2, 3), 0.5);
  m.leftRotate(q);
  m.rightMult(kPinhole);
  Vector4 p(1, 2, 3, 4);
  m.transform(p, p);
  Vector3 r = p.reduce();
  m.transform(r, r);
  EXPECT_EQ(allocations::made(), before);
}

}  // namespace
