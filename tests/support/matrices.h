// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SUPPORT_MATRICES_H
#define TESTS_SUPPORT_MATRICES_H

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "cornerpin/foundation/lv_matrix44.h"
#include "tests/support/same_bits.h"

// 4 x 4 matrices that are easy to write down and to compare.
using Matrix44 = LvMatrix44Tmpl<double>;
using Vector2 = LvVector2<double>;
using Vector3 = LvVector3<double>;

inline Matrix44 matrix44(const double (&v)[16]) {
  Matrix44 m;
  for (int i = 0; i < 16; ++i) m(i / 4, i % 4) = v[i];
  return m;
}

inline Matrix44 filledWith(double value) {
  Matrix44 m;
  for (int i = 0; i < 16; ++i) m(i / 4, i % 4) = value;
  return m;
}

inline ::testing::AssertionResult same(const Matrix44& a, const Matrix44& b) {
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c) {
      if (!sameBits(a(r, c), b(r, c))) {
        return sameBits(a(r, c), b(r, c)) << " at (" << r << ", " << c << ")";
      }
    }
  }
  return ::testing::AssertionSuccess();
}

// Equal as numbers: either zero will do.
inline ::testing::AssertionResult equal(const Matrix44& a, const Matrix44& b) {
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c) {
      if (a(r, c) != b(r, c)) return sameBits(a(r, c), b(r, c)) << " at (" << r << ", " << c << ")";
    }
  }
  return ::testing::AssertionSuccess();
}

inline ::testing::AssertionResult same(const Vector2& a, const Vector2& b) {
  if (!sameBits(a._x, b._x)) return sameBits(a._x, b._x) << " as x";
  return sameBits(a._y, b._y) << " as y";
}

inline ::testing::AssertionResult same(const Vector3& a, const Vector3& b) {
  if (!sameBits(a._x, b._x)) return sameBits(a._x, b._x) << " as x";
  if (!sameBits(a._y, b._y)) return sameBits(a._y, b._y) << " as y";
  return sameBits(a._z, b._z) << " as z";
}

// Uniform values in (-2, 2); keeps its seed for messages.
class RandomValues {
 public:
  explicit RandomValues(unsigned seedOfTest) : seed(seedOfTest), random_(seedOfTest) {}
  double value() { return std::uniform_real_distribution<>(-2, 2)(random_); }
  Vector2 vector2() {
    const double x = value();
    return Vector2(x, value());
  }
  Vector3 vector3() {
    const double x = value(), y = value();
    return Vector3(x, y, value());
  }
  Matrix44 matrix() {
    Matrix44 m;
    for (int i = 0; i < 16; ++i) m(i / 4, i % 4) = value();
    return m;
  }
  // A matrix with |w| of at least 0.8 for points with coordinates below 2.
  Matrix44 mildProjection() {
    Matrix44 m = matrix();
    for (int c = 0; c < 3; ++c) m(3, c) *= 0.1;
    m(3, 3) = 2;
    return m;
  }
  const unsigned seed;

 private:
  std::mt19937 random_;
};

#endif
