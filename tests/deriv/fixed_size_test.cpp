// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/deriv/fixed_size.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "tests/support/deriv_numbers.h"

namespace {

using Matrix = LvMatrix44Tmpl<double>;
using NumberMatrix = LvMatrix44Tmpl<Number>;
using NumberQuat = LvQuat<Number>;
using NumberVector2 = LvVector2<Number>;
using NumberVector3 = LvVector3<Number>;
using NumberVector4 = LvVector4<Number>;

constexpr double kEps = std::numeric_limits<double>::epsilon();

class Random {
 public:
  explicit Random(unsigned seed) : random_(seed) {}
  double value() { return std::uniform_real_distribution<>(-2, 2)(random_); }
  Number number() {
    Numbers d(random_() % 4);
    for (double& di : d) di = value();
    return ::number(value(), d);
  }
  NumberMatrix numberMatrix() {
    NumberMatrix m;
    for (int i = 0; i < 16; ++i) m(i / 4, i % 4) = number();
    return m;
  }
  Matrix matrix() {
    Matrix m;
    for (int i = 0; i < 16; ++i) m(i / 4, i % 4) = value();
    return m;
  }

 private:
  std::mt19937 random_;
};

::testing::AssertionResult isIdentityOfConstants(const NumberMatrix& m) {
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c) {
      const auto element = same(m(r, c), r == c ? 1.0 : 0.0, {});
      if (!element) return element;
    }
  }
  return ::testing::AssertionSuccess();
}

TEST(LvMatrix44OfDerivatives, DefaultConstructionIsTheIdentityWithoutDerivatives) {
  EXPECT_TRUE(isIdentityOfConstants(NumberMatrix()));
  EXPECT_EQ(allocationsOf([] { const NumberMatrix m; }), 0u);
}

TEST(LvMatrix44OfDerivatives, SetIdentityReleasesTheDerivatives) {
  NumberMatrix m;
  const std::size_t live = allocations::live();
  for (int i = 0; i < 16; ++i) m(i / 4, i % 4) = number(i, {1, 2});
  m.setIdentity();
  EXPECT_TRUE(isIdentityOfConstants(m));
  EXPECT_EQ(allocations::live(), live);
}

TEST(LvMatrix44OfDerivatives, CopiesAreDeep) {
  NumberMatrix a;
  a(1, 2) = number(3, {1});
  const NumberMatrix b = a;
  a(1, 2).d(0) = 5;
  EXPECT_TRUE(same(b(1, 2), 3, {1}));
}

TEST(LvMatrix44OfDerivatives, RightMultSumsFromLeftToRightToTheBit) {
  Random random(41);
  const NumberMatrix a = random.numberMatrix();
  const NumberMatrix b = random.numberMatrix();
  NumberMatrix product = a;
  product.rightMult(b);
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c) {
      Number sum = a(r, 0) * b(0, c);
      for (int k = 1; k < 4; ++k) sum += a(r, k) * b(k, c);
      EXPECT_TRUE(same(product(r, c), sum)) << r << ", " << c;
    }
  }
}

TEST(LvMatrix44OfDerivatives, TransformsInPlaceToTheBit) {
  Random random(42);
  const NumberMatrix m = random.numberMatrix();
  const Number x = random.number(), y = random.number(), z = random.number();
  const Number w = m(3, 0) * x + m(3, 1) * y + m(3, 2) * z + m(3, 3);
  NumberVector3 p(x, y, z);
  m.transform(p, p);
  EXPECT_TRUE(same(p._x, (m(0, 0) * x + m(0, 1) * y + m(0, 2) * z + m(0, 3)) / w));
  EXPECT_TRUE(same(p._y, (m(1, 0) * x + m(1, 1) * y + m(1, 2) * z + m(1, 3)) / w));
  EXPECT_TRUE(same(p._z, (m(2, 0) * x + m(2, 1) * y + m(2, 2) * z + m(2, 3)) / w));
  const Number planeW = m(3, 0) * x + m(3, 1) * y + m(3, 3);
  NumberVector2 q(x, y);
  m.transform(q, q);
  EXPECT_TRUE(same(q._x, (m(0, 0) * x + m(0, 1) * y + m(0, 3)) / planeW));
  EXPECT_TRUE(same(q._y, (m(1, 0) * x + m(1, 1) * y + m(1, 3)) / planeW));
}

TEST(LvMatrix44OfDoubles, ScalesTheDerivativesOfAHomogeneousPoint) {
  Random random(43);
  const Matrix m = random.matrix();
  const Number in[] = {number(1.5, {1}), number(-2, {0, 1}), number(0.3, {0, 0, 1}), Number(1)};
  NumberVector4 v(in[0], in[1], in[2], in[3]);
  m.transform(v, v);
  const Number* out[] = {&v._x, &v._y, &v._z, &v._w};
  for (int r = 0; r < 4; ++r) {
    const double p0 = m(r, 0) * 1.5, p1 = m(r, 1) * -2.0, p2 = m(r, 2) * 0.3;
    EXPECT_TRUE(same(*out[r], ((p0 + p1) + p2) + m(r, 3), {m(r, 0), m(r, 1), m(r, 2)}));
  }
}

TEST(LvMatrix44OfDoubles, TransformsPointsOfDerivativesInPlace) {
  Random random(44);
  const Matrix m = random.matrix();
  const Number x = random.number(), y = random.number(), z = random.number();
  const Number w = m(3, 0) * x + m(3, 1) * y + m(3, 2) * z + m(3, 3);
  NumberVector3 p(x, y, z);
  m.transform(p, p);
  EXPECT_TRUE(same(p._y, (m(1, 0) * x + m(1, 1) * y + m(1, 2) * z + m(1, 3)) / w));
  NumberVector2 q(x, y);
  m.transform(q, q);
  EXPECT_TRUE(
      same(q._y, (m(1, 0) * x + m(1, 1) * y + m(1, 3)) / (m(3, 0) * x + m(3, 1) * y + m(3, 3))));
}

TEST(LvVector4OfDerivatives, ReducesByTheReciprocalOfTheWeight) {
  const NumberVector4 v(number(3, {1}), number(5, {0, 1}), 7, number(49, {2, 3}));
  const NumberVector3 p = v.reduce();
  // The reciprocal has the weight's own derivatives: -w' / w^2.
  const double r = 1.0 / 49.0;
  const Number reciprocal = number(r, {-2.0 / (49.0 * 49.0), -3.0 / (49.0 * 49.0)});
  EXPECT_TRUE(same(p._x, v._x * reciprocal));
  EXPECT_TRUE(same(p._y, v._y * reciprocal));
  EXPECT_TRUE(same(p._z, v._z * reciprocal));
}

TEST(LvVector4OfDerivatives, ReducesWithAConstantWeight) {
  const NumberVector3 p = NumberVector4(number(3, {1}), 4, 8, 2).reduce();
  EXPECT_TRUE(same(p._x, 1.5, {0.5}));
  EXPECT_TRUE(same(p._y, 2, {}));
}

TEST(LvQuatOfDerivatives, ProductWithItselfChangesNothing) {
  NumberQuat q(number(1, {1}), 2, number(3, {0, 1}), 4);
  const NumberQuat& itself = q;
  q *= itself;
  EXPECT_TRUE(same(q.scalar(), 1, {1}));
  EXPECT_TRUE(same(q.vector()._y, 3, {0, 1}));
}

TEST(LvQuatOfDerivatives, AxisAngleHalvesTheDerivativesOfTheAngle) {
  NumberQuat q;
  q.setAxisAngle(NumberVector3(0, 0, 1), number(0.8, {1, 3}));
  const double c = std::cos(0.4), s = std::sin(0.4);
  EXPECT_TRUE(same(q.scalar(), c, {-s * 0.5, -s * 1.5}));
  EXPECT_TRUE(same(q.vector()._z, s, {c * 0.5, c * 1.5}));
}

// A point turned about two axes, as a formula over its number type.
template <class T>
LvVector3<T> turned(const T& a, const T& b, const T& tilt) {
  LvQuat<T> p, q;
  p.setAxisAngle(LvVector3<T>(tilt, T(1.0), T(0.5)), a);
  q.setAxisAngle(LvVector3<T>(T(0.0), tilt, T(2.0)), b);
  p *= q;
  LvMatrix44Tmpl<T> m;
  m(0, 3) = a;
  m.leftRotate(p);
  LvVector3<T> point(T(1.0), T(2.0), T(3.0));
  m.transform(point, point);
  return point;
}

TEST(LvQuatOfDerivatives, RotationsAgreeWithForwardDifferences) {
  const unsigned seed = 45;
  Random random(seed);
  const double h = std::sqrt(kEps);
  for (int trial = 0; trial < 200; ++trial) {
    const double at[] = {random.value(), random.value(), random.value()};
    const NumberVector3 p =
        turned(number(at[0], {1}), number(at[1], {0, 1}), number(at[2], {0, 0, 1}));
    for (int i = 0; i < 3; ++i) {
      double moved[] = {at[0], at[1], at[2]};
      moved[i] += h;
      const LvVector3<double> q = turned(moved[0], moved[1], moved[2]);
      const double step = moved[i] - at[i];
      // Second derivatives of the turned point stay below about 100.
      const double tolerance = 100 * step * step + 100 * kEps;
      EXPECT_NEAR(p._x.x() + p._x.d(i) * step, q._x, tolerance) << "seed " << seed;
      EXPECT_NEAR(p._y.x() + p._y.d(i) * step, q._y, tolerance) << "seed " << seed;
      EXPECT_NEAR(p._z.x() + p._z.d(i) * step, q._z, tolerance) << "seed " << seed;
    }
  }
}

TEST(LvQuatOfDerivatives, ValuesEqualThoseOfPlainNumbers) {
  Random random(46);
  for (int trial = 0; trial < 100; ++trial) {
    const double a = random.value(), b = random.value(), tilt = random.value();
    const LvVector3<double> plain = turned(a, b, tilt);
    const NumberVector3 p = turned(number(a, {1}), number(b, {0, 1}), Number(tilt));
    EXPECT_TRUE(sameBits(p._x.x(), plain._x));
    EXPECT_TRUE(sameBits(p._y.x(), plain._y));
    EXPECT_TRUE(sameBits(p._z.x(), plain._z));
  }
}

TEST(FixedSizeOfDerivatives, LeakNothingWhenAnyAllocationFails) {
  EXPECT_GT(allocations::expectNoLeakOnAnyFailure([] {
              double one = 1;
              turned(Number(0.3, &one, 1, true), Number(0.2), Number(0.1));
            }),
            20u);
}

}  // namespace
