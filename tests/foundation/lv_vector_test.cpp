// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/foundation/lv_vector.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();

TEST(LvVector, DefaultConstructionGivesZeros) {
  const LvVector2<float> a;
  const LvVector3<double> b;
  const LvVector4<double> c;
  EXPECT_EQ(a._x, 0.0f);
  EXPECT_EQ(a._y, 0.0f);
  EXPECT_EQ(b._x, 0.0);
  EXPECT_EQ(b._y, 0.0);
  EXPECT_EQ(b._z, 0.0);
  EXPECT_EQ(c._x, 0.0);
  EXPECT_EQ(c._y, 0.0);
  EXPECT_EQ(c._z, 0.0);
  EXPECT_EQ(c._w, 0.0);
}

TEST(LvVector, KeepsItsComponentsInOrder) {
  const LvVector2<double> a(1, 2);
  const LvVector3<double> b(1, 2, 3);
  const LvVector4<double> c(1, 2, 3, 4);
  EXPECT_EQ(a._x, 1.0);
  EXPECT_EQ(a._y, 2.0);
  EXPECT_EQ(b._x, 1.0);
  EXPECT_EQ(b._y, 2.0);
  EXPECT_EQ(b._z, 3.0);
  EXPECT_EQ(c._x, 1.0);
  EXPECT_EQ(c._y, 2.0);
  EXPECT_EQ(c._z, 3.0);
  EXPECT_EQ(c._w, 4.0);
  EXPECT_EQ(&c._w - &c._x, 3);
}

TEST(LvVector4Reduce, DividesOutTheWeight) {
  const LvVector3<double> r = LvVector4<double>(2, -4, 6, 8).reduce();
  EXPECT_EQ(r._x, 0.25);
  EXPECT_EQ(r._y, -0.5);
  EXPECT_EQ(r._z, 0.75);
}

TEST(LvVector4Reduce, MultipliesByTheReciprocal) {
  // 49 * (1 / 49) is the last number below 1.
  const LvVector3<double> r = LvVector4<double>(49, 98, 0, 49).reduce();
  EXPECT_EQ(r._x, 1.0 - std::numeric_limits<double>::epsilon() / 2);
  EXPECT_EQ(r._y, 2.0 - std::numeric_limits<double>::epsilon());
}

TEST(LvVector4Reduce, OverflowsWithTheReciprocalOfASubnormalWeight) {
  const double tiny = std::numeric_limits<double>::denorm_min();
  const LvVector3<double> r = LvVector4<double>(tiny, -tiny, 0, tiny).reduce();
  EXPECT_EQ(r._x, kInf);
  EXPECT_EQ(r._y, -kInf);
  EXPECT_TRUE(std::isnan(r._z));
}

TEST(LvVector4Reduce, OfAZeroWeightIsNotFinite) {
  const LvVector3<double> r = LvVector4<double>(1, -2, 0, 0).reduce();
  EXPECT_EQ(r._x, kInf);
  EXPECT_EQ(r._y, -kInf);
  EXPECT_TRUE(std::isnan(r._z));
}

}  // namespace
