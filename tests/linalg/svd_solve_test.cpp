// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/linalg/svd.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <random>
#include <vector>

#include <Eigen/Core>
#include <Eigen/QR>

#include "tests/linalg/svd_fixture.h"
#include "tests/support/element_types.h"
#include "tests/support/reports.h"
#include "tests/support/same_bits.h"
#include "tests/support/whole_run.h"

namespace {

using svd_tests::Elements;
using svd_tests::fillRandomly;
using svd_tests::isZero;
using svd_tests::kShapes;
using svd_tests::Matrix;
using svd_tests::matrixOf;
using svd_tests::randomVector;
using svd_tests::Shape;
using svd_tests::Svd;
using svd_tests::Vector;
using svd_tests::vectorOf;

TYPED_TEST_SUITE(Svd, Elements, ElementTypeName);

TYPED_TEST(Svd, SolvesASquareSystem) {
  using T = TypeParam;
  EXPECT_TRUE(_svdCall(this->svd, matrixOf<T>(2, 2, {2, 1, 1, 3}), vectorOf<T>({5, 10})));
  EXPECT_NEAR(static_cast<double>(this->svd.x[0]), 1, 30 * static_cast<double>(this->kEps));
  EXPECT_NEAR(static_cast<double>(this->svd.x[1]), 3, 30 * static_cast<double>(this->kEps));
}

TYPED_TEST(Svd, SolvesAnOverdeterminedSystemInTheLeastSquares) {
  // The line through (0, 1), (1, 2), (2, 4) by the normal equations: 5/6 + 3/2 t.
  using T = TypeParam;
  EXPECT_TRUE(_svdCall(this->svd, matrixOf<T>(3, 2, {1, 0, 1, 1, 1, 2}), vectorOf<T>({1, 2, 4})));
  EXPECT_NEAR(static_cast<double>(this->svd.x[0]), 5.0 / 6, 30 * static_cast<double>(this->kEps));
  EXPECT_NEAR(static_cast<double>(this->svd.x[1]), 1.5, 30 * static_cast<double>(this->kEps));
}

TYPED_TEST(Svd, SolvesAnUnderdeterminedSystemByTheShortestSolution) {
  using T = TypeParam;
  EXPECT_TRUE(_svdCall(this->svd, matrixOf<T>(1, 3, {1, 2, 2}), vectorOf<T>({9})));
  EXPECT_NEAR(static_cast<double>(this->svd.x[0]), 1, 30 * static_cast<double>(this->kEps));
  EXPECT_NEAR(static_cast<double>(this->svd.x[1]), 2, 30 * static_cast<double>(this->kEps));
  EXPECT_NEAR(static_cast<double>(this->svd.x[2]), 2, 30 * static_cast<double>(this->kEps));
}

TYPED_TEST(Svd, DropsDirectionsBelowTheTolerance) {
  using T = TypeParam;
  this->svd.tolerance = static_cast<T>(0.1);
  EXPECT_TRUE(_svdCall(this->svd, matrixOf<T>(2, 2, {4, 0, 0, T(0.25)}), vectorOf<T>({8, 1})));
  EXPECT_EQ(this->svd.x[0], 2);
  EXPECT_EQ(this->svd.x[1], 0);
  this->svd.tolerance = 0;
  EXPECT_TRUE(_svdCall(this->svd, matrixOf<T>(2, 2, {4, 0, 0, T(0.25)}), vectorOf<T>({8, 1})));
  EXPECT_EQ(this->svd.x[1], 4);
}

TYPED_TEST(Svd, DropsASingularValueEqualToTheThreshold) {
  using T = TypeParam;
  const Matrix<T> a = matrixOf<T>(2, 2, {4, 0, 0, 1});
  this->svd.tolerance = static_cast<T>(0.25);
  EXPECT_TRUE(_svdCall(this->svd, a, vectorOf<T>({8, 1})));
  EXPECT_EQ(this->svd.S[1], 1);
  EXPECT_EQ(this->svd.x[1], 0);
  this->svd.tolerance = std::nextafter(T(0.25), T(0));
  EXPECT_TRUE(_svdCall(this->svd, a, vectorOf<T>({8, 1})));
  EXPECT_EQ(this->svd.x[1], 1);
}

TYPED_TEST(Svd, RoundsTheThresholdToTheElementType) {
  // 3 * 0.1 rounds up, in both types: the singular value lies above the unrounded product.
  using T = TypeParam;
  this->svd.tolerance = static_cast<T>(0.1);
  const T second = T(3) * this->svd.tolerance;
  EXPECT_GT(second, 3.0L * this->svd.tolerance);
  EXPECT_TRUE(_svdCall(this->svd, matrixOf<T>(2, 2, {3, 0, 0, second}), vectorOf<T>({3, 1})));
  EXPECT_EQ(this->svd.S[0], 3);
  EXPECT_EQ(this->svd.S[1], second);
  EXPECT_EQ(this->svd.x[1], 0);
}

TYPED_TEST(Svd, DropsEverythingWithANanTolerance) {
  using T = TypeParam;
  this->svd.tolerance = this->kNan;
  EXPECT_TRUE(_svdCall(this->svd, matrixOf<T>(2, 2, {4, 0, 0, 1}), vectorOf<T>({8, 1})));
  EXPECT_TRUE(isZero(this->svd.x));
}

TYPED_TEST(Svd, LetsZerosInWithANegativeTolerance) {
  using T = TypeParam;
  this->svd.tolerance = -1;
  EXPECT_TRUE(_svdCall(this->svd, matrixOf<T>(2, 2, {4, 0, 0, 0}), vectorOf<T>({8, 1})));
  EXPECT_FALSE(std::isfinite(this->svd.x[1]));
}

TYPED_TEST(Svd, SolvesAZeroMatrixByZero) {
  using T = TypeParam;
  EXPECT_TRUE(_svdCall(this->svd, matrixOf<T>(2, 2, {0, 0, 0, 0}), vectorOf<T>({1, 2})));
  EXPECT_TRUE(isZero(this->svd.S));
  EXPECT_TRUE(isZero(this->svd.x));
}

TYPED_TEST(Svd, SumsTheSolutionFromLeftToRightToTheBit) {
  using T = TypeParam;
  const unsigned seed = 105;
  std::mt19937 random(seed);
  this->svd.tolerance = static_cast<T>(0.05);
  for (const Shape& shape : kShapes) {
    Matrix<T> a(shape.m, shape.n, Matrix<T>::RowMajor);
    fillRandomly(a, random, T(1));
    const Vector<T> b = randomVector<T>(shape.m, random);
    EXPECT_TRUE(_svdCall(this->svd, a, b));
    const T threshold = this->svd.S[0] * this->svd.tolerance;
    std::vector<T> w;
    for (int i = 0; i < shape.n; ++i) {
      T sum = 0;
      for (int k = 0; k < shape.m; ++k) {
        const T product = this->svd.U(k, i) * b[k];
        sum = sum + product;
      }
      w.push_back(this->svd.S[i] > threshold ? sum / this->svd.S[i] : 0);
    }
    for (int i = 0; i < shape.n; ++i) {
      T sum = 0;
      for (int k = 0; k < shape.n; ++k) {
        const T product = this->svd.V(i, k) * w[static_cast<std::size_t>(k)];
        sum = sum + product;
      }
      EXPECT_TRUE(sameBits(this->svd.x[i], sum)) << "seed " << seed;
    }
  }
}

TYPED_TEST(Svd, AgreesWithAnotherLibraryInTheLeastSquares) {
  using T = TypeParam;
  const unsigned seed = 106;
  std::mt19937 random(seed);
  for (const Shape& shape : {Shape{20, 5}, Shape{5, 20}, Shape{6, 6}}) {
    Matrix<T> a(shape.m, shape.n, Matrix<T>::ColumnMajor);
    fillRandomly(a, random, T(1));
    const Vector<T> b = randomVector<T>(shape.m, random);
    Eigen::MatrixXd twin(shape.m, shape.n);
    Eigen::VectorXd right(shape.m);
    for (int i = 0; i < shape.m; ++i) {
      right[i] = static_cast<double>(b[i]);
      for (int j = 0; j < shape.n; ++j) twin(i, j) = static_cast<double>(a(i, j));
    }
    const Eigen::VectorXd x = twin.completeOrthogonalDecomposition().solve(right);
    EXPECT_TRUE(_svdCall(this->svd, a, b));
    const int rank = std::min(shape.m, shape.n);
    const double condition = static_cast<double>(this->svd.S[0] / this->svd.S[rank - 1]);
    const double bound = 30 * std::max(shape.m, shape.n) * static_cast<double>(this->kEps) *
                         condition * condition * (1 + x.norm());
    for (int i = 0; i < shape.n; ++i) {
      EXPECT_NEAR(static_cast<double>(this->svd.x[i]), x[i], bound) << "seed " << seed;
    }
  }
}

TYPED_TEST(Svd, KeepsACopyOfTheRightHandSide) {
  using T = TypeParam;
  Vector<T> parent = vectorOf<T>({5, 0, 10, 0});
  const Vector<T> b = parent.view(0, 2, 2);
  EXPECT_TRUE(_svdCall(this->svd, matrixOf<T>(2, 2, {2, 1, 1, 3}), b));
  parent[0] = 7;
  EXPECT_EQ(this->svd.b[0], 5);
  EXPECT_EQ(this->svd.b[1], 10);
  EXPECT_EQ(this->svd.b.stride, 1);
}

TYPED_TEST(Svd, TakesItsOwnVectorsAsRightHandSide) {
  using T = TypeParam;
  const Matrix<T> a = matrixOf<T>(2, 2, {2, 0, 0, 4});
  EXPECT_TRUE(_svdCall(this->svd, a, vectorOf<T>({8, 16})));
  EXPECT_TRUE(_svdCall(this->svd, a, this->svd.x));
  EXPECT_EQ(this->svd.x[0], 2);
  EXPECT_EQ(this->svd.x[1], 1);
  EXPECT_TRUE(_svdCall(this->svd, a, this->svd.b));
  EXPECT_EQ(this->svd.x[0], 2);
  EXPECT_EQ(this->svd.x[1], 1);
}

TYPED_TEST(Svd, IgnoresWhatIsTooLongInTheRightHandSide) {
  using T = TypeParam;
  EXPECT_TRUE(
      _svdCall(this->svd, matrixOf<T>(2, 2, {2, 0, 0, 4}), vectorOf<T>({8, 16, this->kNan})));
  EXPECT_EQ(this->svd.x[0], 4);
  EXPECT_EQ(this->svd.x[1], 4);
}

TYPED_TEST(Svd, PropagatesANanInTheRightHandSide) {
  using T = TypeParam;
  EXPECT_TRUE(_svdCall(this->svd, matrixOf<T>(2, 2, {2, 0, 0, 4}), vectorOf<T>({this->kNan, 1})));
  EXPECT_TRUE(std::isnan(this->svd.x[0]));
}

TYPED_TEST(Svd, ReportsARightHandSideThatIsTooShort) {
  using T = TypeParam;
  const auto action = [&] { _svdCall(this->svd, matrixOf<T>(3, 1, {1, 1, 1}), vectorOf<T>({2})); };
  EXPECT_EQ(thrownMessage(action), "MVector index 1 out of range 0");
  EXPECT_TRUE(isZero(this->svd.x));
}

TYPED_TEST(Svd, LeavesMissingTermsOutUnderAHandler) {
  using T = TypeParam;
  const RecordedReports reports;
  EXPECT_TRUE(_svdCall(this->svd, matrixOf<T>(2, 2, {2, 0, 0, 4}), vectorOf<T>({8})));
  EXPECT_EQ(reports.all(), Reports(2, "MVector index 1 out of range 0"));
  EXPECT_EQ(this->svd.x[0], 4);
  EXPECT_EQ(this->svd.x[1], 0);
}

TYPED_TEST(Svd, RejectedInputStillStoresTheRightHandSide) {
  using T = TypeParam;
  EXPECT_THROW(_svdCall(this->svd, matrixOf<T>(1, 1, {this->kNan}), vectorOf<T>({3})),
               LvIllegalArgumentException);
  EXPECT_EQ(this->svd.b[0], 3);
  EXPECT_TRUE(isZero(this->svd.x));
}

}  // namespace
