// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/foundation/lv_quat.h"

#include <gtest/gtest.h>

#include <cmath>
#include <iomanip>
#include <limits>
#include <random>
#include <sstream>
#include <string>

#include "tests/support/same_bits.h"

namespace {

using Quat = LvQuat<double>;
using Vector3 = LvVector3<double>;

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kEps = std::numeric_limits<double>::epsilon();
constexpr double kPi = 3.14159265358979323846;

::testing::AssertionResult same(const Quat& q, double w, double x, double y, double z) {
  const double expected[] = {w, x, y, z};
  const double actual[] = {q.scalar(), q.vector()._x, q.vector()._y, q.vector()._z};
  for (int i = 0; i < 4; ++i) {
    if (!sameBits(actual[i], expected[i])) {
      return sameBits(actual[i], expected[i]) << " as element " << i;
    }
  }
  return ::testing::AssertionSuccess();
}

void expectNear(const Quat& q, double w, double x, double y, double z, double tolerance) {
  EXPECT_NEAR(q.scalar(), w, tolerance);
  EXPECT_NEAR(q.vector()._x, x, tolerance);
  EXPECT_NEAR(q.vector()._y, y, tolerance);
  EXPECT_NEAR(q.vector()._z, z, tolerance);
}

std::string printed(const Quat& q) {
  std::ostringstream os;
  os << q;
  return os.str();
}

TEST(LvQuat, DefaultConstructionIsTheIdentityRotation) { EXPECT_TRUE(same(Quat(), 1, 0, 0, 0)); }

TEST(LvQuat, KeepsScalarThenVector) {
  EXPECT_TRUE(same(Quat(1, 2, 3, 4), 1, 2, 3, 4));
  EXPECT_TRUE(same(Quat(1, Vector3(2, 3, 4)), 1, 2, 3, 4));
}

TEST(LvQuat, AccessorsGiveTheStoredElements) {
  Quat q;
  q.scalar() = 5;
  q.vector()._y = 6;
  EXPECT_TRUE(same(q, 5, 0, 6, 0));
}

TEST(LvQuatProduct, OfTheUnitsFollowsHamilton) {
  const Quat i(0, 1, 0, 0), j(0, 0, 1, 0), k(0, 0, 0, 1);
  Quat p = i;
  EXPECT_TRUE(same(p *= j, 0, 0, 0, 1));
  p = j;
  EXPECT_TRUE(same(p *= k, 0, 1, 0, 0));
  p = k;
  EXPECT_TRUE(same(p *= i, 0, 0, 1, 0));
  p = j;
  EXPECT_TRUE(same(p *= i, 0, 0, 0, -1));
}

TEST(LvQuatProduct, ReturnsTheQuaternionItself) {
  Quat p(1, 2, 3, 4);
  EXPECT_EQ(&(p *= Quat()), &p);
  EXPECT_TRUE(same(p, 1, 2, 3, 4));
}

TEST(LvQuatProduct, WithItselfChangesNothing) {
  Quat q(0.5, 0.5, -0.5, 0.25);
  const Quat& itself = q;
  EXPECT_EQ(&(q *= itself), &q);
  EXPECT_TRUE(same(q, 0.5, 0.5, -0.5, 0.25));
}

TEST(LvQuatProduct, WithACopySquares) {
  Quat q(0, 0, 0, 1);
  const Quat copy = q;
  EXPECT_TRUE(same(q *= copy, -1, 0, 0, 0));
}

TEST(LvQuatProduct, AddsAnglesAboutOneAxis) {
  for (const double a : {-2.0, 0.3, 1.5}) {
    for (const double b : {-0.7, 0.0, 2.5}) {
      Quat p, o, sum;
      p.setAxisAngle(Vector3(0, 0, 1), a);
      o.setAxisAngle(Vector3(0, 0, 1), b);
      sum.setAxisAngle(Vector3(0, 0, 1), a + b);
      p *= o;
      EXPECT_TRUE(LvMath::equal(p, sum)) << a << " and " << b;
    }
  }
}

TEST(LvQuatProduct, SumsInOneOrderToTheBit) {
  const unsigned seed = 11;
  std::mt19937 random(seed);
  std::uniform_real_distribution<> uniform(-1, 1);
  const auto next = [&] { return uniform(random); };
  for (int trial = 0; trial < 2000; ++trial) {
    const double pw = next(), px = next(), py = next(), pz = next();
    const double ow = next(), ox = next(), oy = next(), oz = next();
    const double xx = px * ox, yy = py * oy, zz = pz * oz, ww = pw * ow;
    const double dot = (xx + yy) + zz;
    const auto part = [](double scaledO, double scaledP, double left, double right) {
      const double cross = left - right;
      const double scaled = scaledO + scaledP;
      return scaled + cross;
    };
    Quat p(pw, px, py, pz);
    p *= Quat(ow, ox, oy, oz);
    ASSERT_TRUE(same(p, ww - dot, part(pw * ox, ow * px, py * oz, pz * oy),
                     part(pw * oy, ow * py, pz * ox, px * oz),
                     part(pw * oz, ow * pz, px * oy, py * ox)))
        << "seed " << seed;
  }
}

TEST(LvQuatAxisAngle, DividesOutTheLengthOfTheAxis) {
  Quat q;
  q.setAxisAngle(Vector3(0, 0, 2), kPi / 2);
  EXPECT_TRUE(same(q, std::cos(kPi / 4), 0, 0, std::sin(kPi / 4)));
}

TEST(LvQuatAxisAngle, ReturnsTheQuaternionItself) {
  Quat q;
  EXPECT_EQ(&q.setAxisAngle(Vector3(1, 0, 0), 1), &q);
}

TEST(LvQuatAxisAngle, DividesByTheLengthBeforeItScales) {
  const unsigned seed = 12;
  std::mt19937 random(seed);
  std::uniform_real_distribution<> uniform(-3, 3);
  for (int trial = 0; trial < 2000; ++trial) {
    const double x = uniform(random), y = uniform(random), z = uniform(random);
    const double angle = uniform(random);
    const double xx = x * x, yy = y * y, zz = z * z;
    const double length = std::sqrt((xx + yy) + zz);
    const double s = std::sin(angle / 2);
    const double nx = x / length, ny = y / length, nz = z / length;
    Quat q;
    q.setAxisAngle(Vector3(x, y, z), angle);
    ASSERT_TRUE(same(q, std::cos(angle / 2), nx * s, ny * s, nz * s)) << "seed " << seed;
  }
}

TEST(LvQuatAxisAngle, TakesItsOwnVectorAsAxis) {
  Quat q(0.1, 0, 0, 2);
  q.setAxisAngle(q.vector(), kPi / 2);
  expectNear(q, std::sqrt(0.5), 0, 0, std::sqrt(0.5), 2 * kEps);
}

TEST(LvQuatAxisAngle, AboutAZeroAxisIsNan) {
  Quat q;
  q.setAxisAngle(Vector3(0, 0, 0), 1);
  EXPECT_TRUE(same(q, std::cos(0.5), kNan, kNan, kNan));
}

TEST(LvQuatAxisAngle, AxisWhoseSquaresUnderflowIsAZeroAxis) {
  Quat q;
  q.setAxisAngle(Vector3(1e-200, 0, 0), 1);
  EXPECT_EQ(q.vector()._x, kInf);
}

TEST(LvQuatPrint, WritesTheElementsInParentheses) {
  EXPECT_EQ(printed(Quat()), "(1 0 0 0)");
  EXPECT_EQ(printed(Quat(0.5, 0.5, 0.5, 0.5)), "(0.5 0.5 0.5 0.5)");
  EXPECT_EQ(printed(Quat(-1, 2e10, kInf, kNan)), "(-1 2e+10 inf nan)");
}

TEST(LvQuatPrint, KeepsTheFormattingOfTheStreamAndReturnsIt) {
  std::ostringstream os;
  os << std::fixed << std::setprecision(1);
  EXPECT_EQ(&(os << Quat(1, 0.25, 0, 3)), &os);
  EXPECT_EQ(os.str(), "(1.0 0.2 0.0 3.0)");
}

TEST(LvMathEqual, TakesAQuaternionAndItsNegativeForOneRotation) {
  const Quat q(0.5, -0.5, 0.5, 0.5);
  EXPECT_TRUE(LvMath::equal(q, q));
  EXPECT_TRUE(LvMath::equal(q, Quat(-0.5, 0.5, -0.5, -0.5)));
}

TEST(LvMathEqual, ComparesEachElementWithTheTolerance) {
  const double values[] = {0.5, -0.5, 0.5, 0.5};
  for (int i = 0; i < 4; ++i) {
    for (const double sign : {1.0, -1.0}) {
      double off[] = {values[0], values[1], values[2], values[3]};
      const Quat q(values[0], values[1], values[2], values[3]);
      off[i] += 5e-8 * sign;
      EXPECT_TRUE(LvMath::equal(q, Quat(off[0], off[1], off[2], off[3])));
      EXPECT_TRUE(LvMath::equal(q, Quat(-off[0], -off[1], -off[2], -off[3])));
      off[i] = values[i] + 2e-7 * sign;
      EXPECT_FALSE(LvMath::equal(q, Quat(off[0], off[1], off[2], off[3])));
      EXPECT_FALSE(LvMath::equal(q, Quat(-off[0], -off[1], -off[2], -off[3])));
    }
  }
}

TEST(LvMathEqual, ExcludesTheToleranceItself) {
  EXPECT_FALSE(LvMath::equal(Quat(0, 0, 0, 1e-7), Quat(0, 0, 0, 0)));
  EXPECT_TRUE(LvMath::equal(Quat(0, 0, 0, std::nextafter(1e-7, 0)), Quat(0, 0, 0, 0)));
}

TEST(LvMathEqual, DoesNotMixDifferencesAndSums) {
  EXPECT_FALSE(LvMath::equal(Quat(1, 1, 0, 0), Quat(1, -1, 0, 0)));
}

TEST(LvMathEqual, IsFalseWithAnyNan) {
  for (int i = 0; i < 4; ++i) {
    double v[] = {0.5, 0.5, 0.5, 0.5};
    v[i] = kNan;
    const Quat q(v[0], v[1], v[2], v[3]);
    EXPECT_FALSE(LvMath::equal(q, q));
    EXPECT_FALSE(LvMath::equal(q, Quat(0.5, 0.5, 0.5, 0.5)));
    EXPECT_FALSE(LvMath::equal(Quat(0.5, 0.5, 0.5, 0.5), q));
  }
}

TEST(LvMathEqual, IsFalseWithInfinities) {
  EXPECT_FALSE(LvMath::equal(Quat(kInf, 0, 0, 0), Quat(kInf, 0, 0, 0)));
  EXPECT_FALSE(LvMath::equal(Quat(kInf, 0, 0, 0), Quat(-kInf, 0, 0, 0)));
}

}  // namespace
