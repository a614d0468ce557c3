// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/linalg/svd.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>
#include <random>
#include <string>
#include <vector>

#include <Eigen/Core>
#include <Eigen/SVD>

#include "tests/linalg/svd_fixture.h"
#include "tests/support/allocations.h"
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
using svd_tests::Shape;
using svd_tests::Svd;
using svd_tests::Vector;
using svd_tests::vectorOf;

// How far the first `count` columns of q are from orthonormal.
template <class T>
long double departure(const Matrix<T>& q, int count) {
  long double worst = 0;
  for (int a = 0; a < count; ++a) {
    for (int b = 0; b < count; ++b) {
      long double dot = a == b ? -1 : 0;
      for (int k = 0; k < q.rows; ++k) dot += static_cast<long double>(q(k, a)) * q(k, b);
      worst = std::max(worst, std::abs(dot));
    }
  }
  return worst;
}

// The Frobenius norm of a - U * diag(S) * V^T.
template <class T>
long double residual(const Matrix<T>& a, const MSvd<T>& svd) {
  long double sum = 0;
  for (int i = 0; i < a.rows; ++i) {
    for (int j = 0; j < a.cols; ++j) {
      long double r = a(i, j);
      for (int k = 0; k < a.cols; ++k) {
        r -= static_cast<long double>(svd.U(i, k)) * svd.S[k] * svd.V(j, k);
      }
      sum += r * r;
    }
  }
  return std::sqrt(sum);
}

template <class T>
void expectDecomposition(const Matrix<T>& a, const MSvd<T>& svd) {
  const int m = a.rows, n = a.cols, rank = std::min(m, n);
  const long double bound = 10.0L * std::max(m, n) * std::numeric_limits<T>::epsilon();
  EXPECT_TRUE(svd.ok);
  ASSERT_EQ(svd.U.rows, m);
  ASSERT_EQ(svd.U.cols, n);
  ASSERT_EQ(svd.V.rows, n);
  ASSERT_EQ(svd.V.cols, n);
  ASSERT_EQ(svd.S.length, n);
  ASSERT_EQ(svd.x.length, n);
  EXPECT_LE(residual(a, svd), bound * svd.S[0]);
  EXPECT_LE(departure(svd.U, rank), bound);
  EXPECT_LE(departure(svd.V, n), bound);
  for (int i = 1; i < n; ++i) EXPECT_GE(svd.S[i - 1], svd.S[i]);
  EXPECT_GE(svd.S[n - 1], 0);
  for (int i = rank; i < n; ++i) {
    EXPECT_EQ(svd.S[i], 0);
    for (int k = 0; k < m; ++k) EXPECT_EQ(svd.U(k, i), 0);
  }
}

TYPED_TEST_SUITE(Svd, Elements, ElementTypeName);

// ---- the record

TYPED_TEST(Svd, RecordStartsEmptyWithToleranceZero) {
  EXPECT_EQ(this->svd.tolerance, 0);
  EXPECT_FALSE(this->svd.ok);
  EXPECT_EQ(this->svd.U.rows, 0);
  EXPECT_EQ(this->svd.S.length, 0);
}

TYPED_TEST(Svd, RecordKeepsItsFieldsInOrder) {
  const auto at = [](const auto& field) { return reinterpret_cast<std::uintptr_t>(&field); };
  const auto& s = this->svd;
  EXPECT_LT(at(s.b), at(s.U));
  EXPECT_LT(at(s.U), at(s.V));
  EXPECT_LT(at(s.V), at(s.S));
  EXPECT_LT(at(s.S), at(s.x));
  EXPECT_LT(at(s.x), at(s.spare));
  EXPECT_LT(at(s.spare), at(s.tolerance));
  EXPECT_LT(at(s.tolerance), at(s.ok));
}

// ---- decompositions

TYPED_TEST(Svd, OfADiagonalMatrixSortsTheMagnitudes) {
  using T = TypeParam;
  EXPECT_TRUE(_svdCall(this->svd, matrixOf<T>(3, 3, {1, 0, 0, 0, -4, 0, 0, 0, 2})));
  EXPECT_EQ(this->svd.S[0], 4);
  EXPECT_EQ(this->svd.S[1], 2);
  EXPECT_EQ(this->svd.S[2], 1);
}

TYPED_TEST(Svd, OfATallMatrixByHand) {
  // Columns (3, 0, 0) and (0, 0, 4): singular values 4 and 3.
  using T = TypeParam;
  const Matrix<T> a = matrixOf<T>(3, 2, {3, 0, 0, 0, 0, 4});
  EXPECT_TRUE(_svdCall(this->svd, a));
  EXPECT_EQ(this->svd.S[0], 4);
  EXPECT_EQ(this->svd.S[1], 3);
  EXPECT_EQ(std::abs(this->svd.U(2, 0)), 1);
  EXPECT_EQ(std::abs(this->svd.U(0, 1)), 1);
  EXPECT_EQ(std::abs(this->svd.V(1, 0)), 1);
  EXPECT_EQ(this->svd.U(2, 0) * this->svd.V(1, 0), 1);
  expectDecomposition(a, this->svd);
}

TYPED_TEST(Svd, ReproducesMatricesOfEveryShapeLayoutAndScale) {
  using T = TypeParam;
  const unsigned seed = 101;
  std::mt19937 random(seed);
  std::vector<T> scales = {1, static_cast<T>(1e-30), static_cast<T>(1e30)};
  if (sizeof(T) == sizeof(double)) {
    scales.push_back(static_cast<T>(1e-200));
    scales.push_back(static_cast<T>(1e200));
  }
  for (const Shape& shape : kShapes) {
    for (const T scale : scales) {
      for (const bool rowMajor : {false, true}) {
        SCOPED_TRACE(::testing::Message()
                     << shape.m << " x " << shape.n << ", scale " << scale << ", seed " << seed);
        Matrix<T> a(shape.m, shape.n, rowMajor ? Matrix<T>::RowMajor : Matrix<T>::ColumnMajor);
        fillRandomly(a, random, scale);
        EXPECT_TRUE(_svdCall(this->svd, a));
        expectDecomposition(a, this->svd);
      }
    }
  }
}

TYPED_TEST(Svd, TakesAViewWithStrides) {
  using T = TypeParam;
  std::mt19937 random(102);
  Matrix<T> parent(12, 14, Matrix<T>::RowMajor);
  fillRandomly(parent, random, T(1));
  Matrix<T> a = parent.view(1, 2, 5, 6);
  a.rowStride *= 2;
  a.colStride *= 2;
  const Matrix<T> copy = a.copy(Matrix<T>::ColumnMajor);
  const Matrix<T> before = parent.copy(Matrix<T>::ColumnMajor);
  EXPECT_TRUE(_svdCall(this->svd, a));
  expectDecomposition(copy, this->svd);
  for (int i = 0; i < 12; ++i) {
    for (int j = 0; j < 14; ++j) EXPECT_EQ(parent(i, j), before(i, j));
  }
}

TYPED_TEST(Svd, AgreesWithAnotherLibrary) {
  using T = TypeParam;
  const unsigned seed = 103;
  std::mt19937 random(seed);
  for (const Shape& shape : kShapes) {
    Matrix<T> a(shape.m, shape.n, Matrix<T>::ColumnMajor);
    fillRandomly(a, random, T(1));
    Eigen::MatrixXd twin(shape.m, shape.n);
    for (int i = 0; i < shape.m; ++i) {
      for (int j = 0; j < shape.n; ++j) twin(i, j) = static_cast<double>(a(i, j));
    }
    const Eigen::VectorXd values = Eigen::JacobiSVD<Eigen::MatrixXd>(twin).singularValues();
    EXPECT_TRUE(_svdCall(this->svd, a));
    for (int i = 0; i < std::min(shape.m, shape.n); ++i) {
      EXPECT_NEAR(static_cast<double>(this->svd.S[i]), values[i],
                  10.0 * std::max(shape.m, shape.n) * static_cast<double>(this->kEps) * values[0])
          << "seed " << seed;
    }
  }
}

TYPED_TEST(Svd, OfSubnormalElementsHoldsToTheirAbsoluteStep) {
  using T = TypeParam;
  const T tiny = std::numeric_limits<T>::denorm_min();
  EXPECT_TRUE(_svdCall(this->svd, matrixOf<T>(2, 2, {8 * tiny, 0, 0, 3 * tiny})));
  EXPECT_LE(std::abs(this->svd.S[0] - 8 * tiny), 2 * tiny);
  EXPECT_LE(std::abs(this->svd.S[1] - 3 * tiny), 2 * tiny);
}

TYPED_TEST(Svd, StoresVRowByRowAndUColumnByColumn) {
  using T = TypeParam;
  Matrix<T> a(4, 3, Matrix<T>::RowMajor);
  std::mt19937 random(104);
  fillRandomly(a, random, T(1));
  EXPECT_TRUE(_svdCall(this->svd, a));
  EXPECT_EQ(this->svd.U.rowStride, 1);
  EXPECT_EQ(this->svd.U.colStride, 4);
  EXPECT_EQ(this->svd.V.rowStride, 3);
  EXPECT_EQ(this->svd.V.colStride, 1);
}

TYPED_TEST(Svd, EmptiesTheSpareVectorAndZeroesTheSolution) {
  using T = TypeParam;
  this->svd.spare.resize(5);
  this->svd.x = vectorOf<T>({7, 8});
  EXPECT_TRUE(_svdCall(this->svd, matrixOf<T>(2, 2, {1, 2, 3, 4})));
  EXPECT_EQ(this->svd.spare.length, 0);
  EXPECT_EQ(this->svd.x.length, 2);
  EXPECT_TRUE(isZero(this->svd.x));
}

TYPED_TEST(Svd, KeepsTheRightHandSideOfAnEarlierSolve) {
  using T = TypeParam;
  const Matrix<T> a = matrixOf<T>(2, 2, {1, 2, 3, 4});
  EXPECT_TRUE(_svdCall(this->svd, a, vectorOf<T>({5, 6})));
  EXPECT_TRUE(_svdCall(this->svd, a));
  ASSERT_EQ(this->svd.b.length, 2);
  EXPECT_EQ(this->svd.b[1], 6);
}

TYPED_TEST(Svd, WritesIntoFactorsOfTheRightShape) {
  using T = TypeParam;
  EXPECT_TRUE(_svdCall(this->svd, matrixOf<T>(2, 2, {1, 0, 0, 1})));
  const MSvd<T> sharing = this->svd;
  EXPECT_TRUE(_svdCall(this->svd, matrixOf<T>(2, 2, {5, 0, 0, 3})));
  EXPECT_EQ(sharing.S[0], 5);
  EXPECT_EQ(sharing.U.data, this->svd.U.data);
}

TYPED_TEST(Svd, DecomposesAMatrixOfItsOwnRecord) {
  using T = TypeParam;
  this->svd.U = matrixOf<T>(3, 2, {1, 2, 3, 4, 5, 7});
  const Matrix<T> a = this->svd.U.copy(Matrix<T>::ColumnMajor);
  EXPECT_TRUE(_svdCall(this->svd, this->svd.U));
  expectDecomposition(a, this->svd);
}

TYPED_TEST(Svd, FollowsTheStrideOfAVectorOfValuesThatItKeeps) {
  using T = TypeParam;
  const Matrix<T> a = matrixOf<T>(3, 3, {3, 0, 0, 0, 2, 0, 0, 0, 1});
  for (const int step : {2, -2}) {
    Vector<T> parent(5);
    for (int i = 0; i < 5; ++i) parent[i] = 9;
    this->svd.S = parent.view(step > 0 ? 0 : 4, 3, step);
    this->svd.x = parent.view(1, 2, 2).copy();
    EXPECT_TRUE(_svdCall(this->svd, a));
    expectDecomposition(a, this->svd);
    EXPECT_EQ(parent[step > 0 ? 0 : 4], 3);
    EXPECT_EQ(parent[1], 9);
    EXPECT_EQ(parent[2], 2);
    EXPECT_EQ(parent[3], 9);
  }
}

// ---- rejected and refused input

TYPED_TEST(Svd, RejectsNanAndInfinity) {
  using T = TypeParam;
  EXPECT_EQ(this->messageOfRejection(matrixOf<T>(2, 2, {1, 2, 3, this->kNan})), "NaN");
  EXPECT_EQ(this->messageOfRejection(matrixOf<T>(2, 2, {1, this->kInf, 3, 4})), "infinite number");
  EXPECT_EQ(this->messageOfRejection(matrixOf<T>(2, 2, {1, 2, -this->kInf, 4})), "infinite number");
}

TYPED_TEST(Svd, RejectsTheFirstOffenderColumnByColumn) {
  using T = TypeParam;
  const Matrix<T> a = matrixOf<T>(2, 2, {1, this->kInf, this->kNan, 4});
  EXPECT_EQ(this->messageOfRejection(a), "NaN");
  EXPECT_EQ(this->messageOfRejection(a.copy(Matrix<T>::RowMajor)), "NaN");
}

TYPED_TEST(Svd, AcceptsTheLargestNumbers) {
  using T = TypeParam;
  const T huge = std::numeric_limits<T>::max() / 4;
  EXPECT_TRUE(_svdCall(this->svd, matrixOf<T>(2, 1, {huge, -huge})));
  EXPECT_NEAR(static_cast<double>(this->svd.S[0] / huge), std::sqrt(2.0),
              4 * static_cast<double>(this->kEps));
}

TYPED_TEST(Svd, RejectedInputLeavesZeros) {
  using T = TypeParam;
  EXPECT_TRUE(_svdCall(this->svd, matrixOf<T>(3, 2, {1, 2, 3, 4, 5, 6}), vectorOf<T>({1, 2, 4})));
  const Vector<T> oldValues = this->svd.S;
  EXPECT_EQ(this->messageOfRejection(matrixOf<T>(3, 2, {1, 2, 3, this->kNan, 5, 6})), "NaN");
  EXPECT_TRUE(isZero(this->svd.U));
  EXPECT_TRUE(isZero(this->svd.V));
  EXPECT_TRUE(isZero(this->svd.S));
  EXPECT_TRUE(isZero(this->svd.x));
  EXPECT_TRUE(isZero(oldValues));  // a holder of the same buffer sees the zeros
}

TYPED_TEST(Svd, RejectedInputLeavesOkAsItWas) {
  using T = TypeParam;
  EXPECT_TRUE(_svdCall(this->svd, matrixOf<T>(1, 1, {2})));
  EXPECT_EQ(this->messageOfRejection(matrixOf<T>(1, 1, {this->kNan})), "NaN");
  EXPECT_TRUE(this->svd.ok);
}

TYPED_TEST(Svd, RefusedArgumentsAreNamedAndNothingIsPrinted) {
  using T = TypeParam;
  const auto empty = [](int m, int n) { return Matrix<T>(m, n, Matrix<T>::ColumnMajor); };
  ::testing::internal::CaptureStderr();
  ::testing::internal::CaptureStdout();
  const std::string withoutRows = this->messageOfRefusal(empty(0, 3));
  const std::string withoutColumns = this->messageOfRefusal(empty(3, 0));
  const std::string withNeither = this->messageOfRefusal(empty(0, 0));
  const std::string tallest = this->messageOfRefusal(empty(300000000, 0));
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(withoutRows, this->routine() + ": bad parameter 6");
  EXPECT_EQ(withoutColumns, this->routine() + ": bad parameter 11");
  EXPECT_EQ(withNeither, this->routine() + ": bad parameter 6");
  EXPECT_EQ(tallest, this->routine() + ": bad parameter 11");
}

TYPED_TEST(Svd, RefusedArgumentsClearOk) {
  using T = TypeParam;
  EXPECT_TRUE(_svdCall(this->svd, matrixOf<T>(1, 1, {2})));
  EXPECT_THROW(_svdCall(this->svd, Matrix<T>(0, 2, Matrix<T>::RowMajor)), LvException);
  EXPECT_FALSE(this->svd.ok);
  EXPECT_EQ(this->svd.V.rows, 2);
  EXPECT_TRUE(isZero(this->svd.V));
}

TYPED_TEST(Svd, AMatrixTooWideForItsSquareIsRefusedByTheMemory) {
  using T = TypeParam;
  EXPECT_THROW(_svdCall(this->svd, Matrix<T>(0, 1 << 20, Matrix<T>::ColumnMajor)), std::bad_alloc);
}

// ---- memory

TYPED_TEST(Svd, LeaksNothingWhenAnyAllocationFails) {
  using T = TypeParam;
  const Matrix<T> a = matrixOf<T>(3, 2, {1, 2, 3, 4, 5, 7});
  const Vector<T> b = vectorOf<T>({1, 2, 3});
  EXPECT_GT(allocations::expectNoLeakOnAnyFailure([&] {
              MSvd<T> record;
              _svdCall(record, a, b);
            }),
            5u);
}

TYPED_TEST(Svd, ReleasesItsTemporariesWhenItThrows) {
  using T = TypeParam;
  const Matrix<T> a = matrixOf<T>(1, 2, {1, this->kNan});
  const std::size_t live = allocations::live();
  {
    MSvd<T> record;
    EXPECT_THROW(_svdCall(record, a), LvIllegalArgumentException);
    EXPECT_THROW(_svdCall(record, a.view(0, 0, 0, 2)), LvException);
  }
  EXPECT_EQ(allocations::live(), live);
}

}  // namespace
