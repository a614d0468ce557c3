// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_LINALG_SVD_FIXTURE_H
#define TESTS_LINALG_SVD_FIXTURE_H

#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "cornerpin/linalg/svd.h"

// What the tests of the decomposition and of its least squares share.
namespace svd_tests {

template <class T>
using Matrix = MGenMatrix<T>;
template <class T>
using Vector = MGenVector<T>;

struct Shape {
  int m, n;
};
inline constexpr Shape kShapes[] = {{1, 1}, {3, 2},  {2, 3},  {5, 5},  {1, 4},
                                    {4, 1}, {20, 7}, {7, 20}, {40, 40}};

template <class T>
Matrix<T> matrixOf(int m, int n, const std::vector<T>& rowByRow) {
  Matrix<T> a(m, n, Matrix<T>::ColumnMajor);
  for (int i = 0; i < m; ++i) {
    for (int j = 0; j < n; ++j) a(i, j) = rowByRow[static_cast<std::size_t>(i * n + j)];
  }
  return a;
}

template <class T>
Vector<T> vectorOf(const std::vector<T>& elements) {
  Vector<T> v(static_cast<int>(elements.size()));
  for (int i = 0; i < v.length; ++i) v[i] = elements[static_cast<std::size_t>(i)];
  return v;
}

template <class T>
void fillRandomly(Matrix<T>& a, std::mt19937& random, T scale) {
  std::uniform_real_distribution<T> uniform(-1, 1);
  for (int i = 0; i < a.rows; ++i) {
    for (int j = 0; j < a.cols; ++j) a(i, j) = uniform(random) * scale;
  }
}

template <class T>
Vector<T> randomVector(int n, std::mt19937& random) {
  std::uniform_real_distribution<T> uniform(-1, 1);
  Vector<T> v(n);
  for (int i = 0; i < n; ++i) v[i] = uniform(random);
  return v;
}

template <class T>
bool isZero(const Matrix<T>& a) {
  for (int i = 0; i < a.rows; ++i) {
    for (int j = 0; j < a.cols; ++j) {
      if (a(i, j) != 0) return false;
    }
  }
  return true;
}

template <class T>
bool isZero(const Vector<T>& v) {
  for (int i = 0; i < v.length; ++i) {
    if (v[i] != 0) return false;
  }
  return true;
}

template <class T>
class Svd : public ::testing::Test {
 protected:
  static constexpr T kInf = std::numeric_limits<T>::infinity();
  static constexpr T kNan = std::numeric_limits<T>::quiet_NaN();
  static constexpr T kEps = std::numeric_limits<T>::epsilon();
  static std::string routine() { return sizeof(T) == sizeof(float) ? "sgesvd" : "dgesvd"; }

  std::string messageOfRefusal(const Matrix<T>& a) {
    try {
      _svdCall(svd, a);
    } catch (const LvException& e) {
      EXPECT_EQ(e.className(), LvString("LvException"));
      return e.message.c_str();
    }
    return "nothing thrown";
  }

  std::string messageOfRejection(const Matrix<T>& a) {
    try {
      _svdCall(svd, a);
    } catch (const LvIllegalArgumentException& e) {
      return e.message.c_str();
    }
    return "nothing thrown";
  }

  MSvd<T> svd;
};

using Elements = ::testing::Types<float, double>;

}  // namespace svd_tests

#endif
