// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/linalg/inverse.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <new>
#include <random>
#include <string>
#include <vector>

#include "cornerpin/linalg/lapack.h"
#include "tests/linalg/matrices.h"
#include "tests/linalg/plain_lu.h"
#include "tests/support/allocations.h"
#include "tests/support/buffer_header.h"
#include "tests/support/child.h"
#include "tests/support/element_types.h"
#include "tests/support/reports.h"
#include "tests/support/whole_run.h"

namespace {

using matrices::empty;
using matrices::kStorages;
using matrices::matrixOf;
using matrices::randomMatrix;
using matrices::Rows;
using matrices::stored;
using matrices::values;
using plain_lu::identityMinusProduct;
using plain_lu::minus;
using plain_lu::norm1;
using plain_lu::PlainFactors;
using plain_lu::plainFactors;
using plain_lu::plainInverse;
using plain_lu::Wide;
using plain_lu::widened;
using Double = MGenMatrix<double>;
constexpr unsigned kSeed = 104729;
constexpr const char* kSingular = "inverse: singular matrix";

// LAPACK called directly in a zeroed buffer with a column for every row.
struct DirectFactors {
  std::vector<double> cells;
  std::vector<int> pivots;
};

DirectFactors directFactors(const Double& a) {
  const int m = a.rows;
  const int n = a.cols;
  DirectFactors direct{
      std::vector<double>(static_cast<std::size_t>(m) * static_cast<std::size_t>(std::max(m, n))),
      std::vector<int>(static_cast<std::size_t>(n))};
  for (int i = 0; i < m; ++i) {
    for (int j = 0; j < n; ++j) direct.cells[static_cast<std::size_t>(i + j * m)] = a(i, j);
  }
  int info = 0;
  dgetrf_(&m, &n, direct.cells.data(), &m, direct.pivots.data(), &info);
  EXPECT_EQ(info, 0);
  return direct;
}

Rows directInverse(const Double& a) {
  const int m = a.rows;
  const int n = a.cols;
  DirectFactors direct = directFactors(a);
  const int lwork = 64 * n;
  std::vector<double> work(static_cast<std::size_t>(lwork));
  int info = 0;
  dgetri_(&n, direct.cells.data(), &m, direct.pivots.data(), work.data(), &lwork, &info);
  EXPECT_EQ(info, 0);
  Rows rows(static_cast<std::size_t>(m));
  for (int i = 0; i < m; ++i) {
    for (int j = 0; j < n; ++j) {
      rows[static_cast<std::size_t>(i)].push_back(
          direct.cells[static_cast<std::size_t>(i + j * m)]);
    }
  }
  return rows;
}

void expectNear(const Rows& actual, const Rows& expected, double tolerance) {
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t i = 0; i < actual.size(); ++i) {
    ASSERT_EQ(actual[i].size(), expected[i].size());
    for (std::size_t j = 0; j < actual[i].size(); ++j) {
      EXPECT_NEAR(actual[i][j], expected[i][j], tolerance) << i << ' ' << j;
    }
  }
}

template <class T>
class Inverse : public testing::Test {
 protected:
  static constexpr double kEps = std::numeric_limits<T>::epsilon();
  static const char* factorise() { return sizeof(T) == sizeof(float) ? "sgetrf" : "dgetrf"; }
  static const char* invert() { return sizeof(T) == sizeof(float) ? "sgetri" : "dgetri"; }
};
using Precisions = testing::Types<float, double>;
TYPED_TEST_SUITE(Inverse, Precisions, ElementTypeName);

TYPED_TEST(Inverse, OfTheWorkedExampleInEveryStorage) {
  using M = MGenMatrix<TypeParam>;
  const M a = matrixOf<TypeParam>({{4, 7}, {2, 6}}, M::RowMajor);
  for (int storage = 0; storage < kStorages; ++storage) {
    const M x = inverse(stored(a, storage));
    expectNear(values(x), {{0.6, -0.7}, {-0.2, 0.4}}, 30 * 2 * this->kEps);
  }
}

TYPED_TEST(Inverse, IsColumnMajorInABufferOfItsOwn) {
  using M = MGenMatrix<TypeParam>;
  const M a = matrixOf<TypeParam>({{4, 7}, {2, 6}}, M::RowMajor);
  for (int storage = 0; storage < kStorages; ++storage) {
    const M source = stored(a, storage);
    const M x = inverse(source);
    EXPECT_EQ(x.rowStride, 1);
    EXPECT_EQ(x.colStride, 2);
    EXPECT_EQ(x.data, x.buffer);
    EXPECT_NE(x.buffer, source.buffer);
    EXPECT_EQ(bufferWords(x.buffer).references, 1u);
    EXPECT_EQ(bufferWords(x.buffer).bytes, 4 * sizeof(TypeParam));
  }
}

TYPED_TEST(Inverse, LeavesItsArgument) {
  using M = MGenMatrix<TypeParam>;
  const Rows rows = {{0, 7, 1}, {2, 6, 5}, {3, 1, 1}};
  for (int storage = 0; storage < kStorages; ++storage) {
    const M a = stored(matrixOf<TypeParam>(rows, M::ColumnMajor), storage);
    inverse(a);
    EXPECT_EQ(values(a), rows);
    EXPECT_EQ(bufferWords(a.buffer).references, 1u);
  }
}

TYPED_TEST(Inverse, OfOneElementIsItsReciprocal) {
  using M = MGenMatrix<TypeParam>;
  EXPECT_EQ(values(inverse(matrixOf<TypeParam>({{-4}}, M::RowMajor))), (Rows{{-0.25}}));
}

TYPED_TEST(Inverse, OfAPermutationIsItsTranspose) {
  using M = MGenMatrix<TypeParam>;
  const M a = matrixOf<TypeParam>({{0, 1, 0}, {0, 0, 1}, {1, 0, 0}}, M::RowMajor);
  EXPECT_EQ(values(inverse(a)), (Rows{{0, 0, 1}, {1, 0, 0}, {0, 1, 0}}));
}

TYPED_TEST(Inverse, ResidualStaysWithinTheBound) {
  std::mt19937 random(kSeed);
  std::vector<int> sizes;
  for (int n = 1; n <= 64; ++n) sizes.push_back(n);
  for (const int n : {65, 100, 130}) sizes.push_back(n);  // more than one block of LAPACK's
  for (const int n : sizes) {
    const auto a = stored(randomMatrix<TypeParam>(n, n, random), n % kStorages);
    const Wide x = widened(inverse(a));
    const Wide wide = widened(a);
    EXPECT_LE(norm1(identityMinusProduct(x, wide)), 30 * n * this->kEps * norm1(x) * norm1(wide))
        << "n " << n << " seed " << kSeed;
  }
}

TYPED_TEST(Inverse, AgreesWithExtendedPrecision) {
  std::mt19937 random(kSeed + 1);
  for (int n = 1; n <= 64; ++n) {
    const auto a = stored(randomMatrix<TypeParam>(n, n, random), n % kStorages);
    const Wide wide = widened(a);
    const Wide expected = plainInverse(wide);
    const long double size = norm1(expected);
    EXPECT_LE(norm1(minus(widened(inverse(a)), expected)),
              30 * n * this->kEps * size * size * norm1(wide))
        << "n " << n << " seed " << kSeed + 1;
  }
}

TYPED_TEST(Inverse, HoldsForTinyAndHugeElements) {
  using M = MGenMatrix<TypeParam>;
  for (const double scale : {1e-30, 1e30}) {
    const M a = matrixOf<TypeParam>({{4 * scale, 7 * scale}, {2 * scale, 6 * scale}}, M::RowMajor);
    expectNear(values(inverse(a)), {{0.6 / scale, -0.7 / scale}, {-0.2 / scale, 0.4 / scale}},
               30 * 2 * this->kEps / scale);
  }
}

TYPED_TEST(Inverse, OfAnAlmostSingularMatrixIsReturned) {
  using M = MGenMatrix<TypeParam>;
  const M a = matrixOf<TypeParam>({{1, 1}, {1, 1 + this->kEps}}, M::RowMajor);
  EXPECT_NO_THROW(inverse(a));
}

TYPED_TEST(Inverse, SingularIsReported) {
  using M = MGenMatrix<TypeParam>;
  const std::vector<Rows> singular = {
      {{0}}, {{1, 0, 2}, {3, 0, 4}, {5, 0, 7}}, {{1, 2}, {2, 4}}, {{0, 0}, {0, 0}}};
  for (std::size_t i = 0; i < singular.size(); ++i) {
    const M a = matrixOf<TypeParam>(singular[i], M::RowMajor);
    EXPECT_EQ(thrownMessage([&a] { inverse(a); }), kSingular) << i;
  }
}

TYPED_TEST(Inverse, SingularIsReportedTwiceWhenCarryingOn) {
  using M = MGenMatrix<TypeParam>;
  const M a = matrixOf<TypeParam>({{1, 2}, {2, 4}}, M::RowMajor);
  RecordedReports reports;
  const M x = inverse(a);
  EXPECT_EQ(reports.all(), (Reports{kSingular, kSingular}));
  // What the factorisation left: U above, the multiplier below.
  EXPECT_EQ(values(x), (Rows{{2, 4}, {0.5, 0}}));
}

TYPED_TEST(Inverse, MoreColumnsThanRowsIsReported) {
  using M = MGenMatrix<TypeParam>;
  const M a = matrixOf<TypeParam>({{1, 2, 3}, {4, 5, 7}}, M::RowMajor);
  for (int storage = 0; storage < kStorages; ++storage) {
    EXPECT_EQ(thrownMessage([&] { inverse(stored(a, storage)); }), this->invert());
  }
}

TYPED_TEST(Inverse, MoreColumnsThanRowsCarriesOnWithTheFactors) {
  using M = MGenMatrix<TypeParam>;
  RecordedReports reports;
  const M x = inverse(matrixOf<TypeParam>({{2, 2, 3}, {4, 4, 8}}, M::RowMajor));
  EXPECT_EQ(reports.all(), (Reports{kSingular, this->invert()}));
  EXPECT_EQ(values(x), (Rows{{4, 4, 8}, {0.5, 0, -1}}));
}

TYPED_TEST(Inverse, WithoutRowsIsReportedByTheFactorisation) {
  EXPECT_EQ(thrownMessage([] { inverse(empty<TypeParam>(0, 0)); }), this->factorise());
  EXPECT_EQ(thrownMessage([] { inverse(empty<TypeParam>(0, 3)); }), this->factorise());
  EXPECT_EQ(thrownMessage([] { inverse(MGenMatrix<TypeParam>()); }), this->factorise());
}

TYPED_TEST(Inverse, WithoutRowsCarriesOnToTheRefusedInversion) {
  RecordedReports reports;
  EXPECT_EQ(inverse(empty<TypeParam>(0, 0)).rows, 0);
  EXPECT_EQ(inverse(empty<TypeParam>(0, 3)).cols, 3);
  EXPECT_EQ(reports.all(),
            (Reports{this->factorise(), this->invert(), this->factorise(), this->invert()}));
}

TYPED_TEST(Inverse, WithoutColumnsIsReportedByTheInversion) {
  EXPECT_EQ(thrownMessage([] { inverse(empty<TypeParam>(3, 0)); }), this->invert());
}

TYPED_TEST(Inverse, WithoutColumnsCarriesOnEmpty) {
  RecordedReports reports;
  const auto x = inverse(empty<TypeParam>(3, 0));
  EXPECT_EQ(reports.all(), Reports{this->invert()});
  EXPECT_EQ(x.rows, 3);
  EXPECT_EQ(x.cols, 0);
  EXPECT_EQ(x.buffer, nullptr);
}

TYPED_TEST(Inverse, RefusalsPrintNothingAndTheProcessLives) {
  const int shapes[][2] = {{0, 0}, {0, 3}, {3, 0}, {2, 3}, {1, 70}};
  for (const auto& shape : shapes) {
    const ChildRun run = runInChild([&shape] {
      std::mt19937 random(kSeed);
      const auto a = randomMatrix<TypeParam>(shape[0], shape[1], random);
      thrownMessage([&a] { inverse(a); });
      RecordedReports reports;
      inverse(a);
      if (reports.all().empty()) throw std::bad_alloc();
    });
    EXPECT_TRUE(run.exited) << shape[0] << ' ' << shape[1];
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "");
  }
}

TYPED_TEST(Inverse, OfNansAndInfinitiesReturnsOrReportsSingular) {
  using M = MGenMatrix<TypeParam>;
  const double inf = std::numeric_limits<double>::infinity();
  for (const double bad : {std::nan(""), inf, -inf}) {
    for (int at = 0; at < 9; ++at) {
      M a = matrixOf<TypeParam>({{4, 7, 1}, {2, 6, 3}, {1, 1, 9}}, M::ColumnMajor);
      a.data[at] = static_cast<TypeParam>(bad);
      RecordedReports reports;
      EXPECT_EQ(inverse(a).rows, 3);
      for (const std::string& text : reports.all()) EXPECT_EQ(text, kSingular);
    }
  }
}

TYPED_TEST(Inverse, LeaksNothingWhicheverAllocationFails) {
  using M = MGenMatrix<TypeParam>;
  const M a = matrixOf<TypeParam>({{4, 7}, {2, 6}}, M::RowMajor);
  EXPECT_EQ(allocations::expectNoLeakOnAnyFailure([&a] { inverse(a); }), 2u)
      << "one copy and the pivots";
  EXPECT_EQ(values(a), (Rows{{4, 7}, {2, 6}}));
  const M tall = matrixOf<TypeParam>({{1, 0}, {0, 1}, {4, 0}}, M::RowMajor);
  EXPECT_EQ(allocations::expectNoLeakOnAnyFailure([&tall] { inverse(tall); }), 3u);
  M large(100, 100, M::RowMajor);
  for (int i = 0; i < 100; ++i) large(i, i) = 1;
  EXPECT_EQ(allocations::expectNoLeakOnAnyFailure([&large] { inverse(large); }), 3u)
      << "one copy, the pivots, the work array";
}

TYPED_TEST(Inverse, LeaksNothingWhenItReports) {
  using M = MGenMatrix<TypeParam>;
  const M singular = matrixOf<TypeParam>({{1, 2}, {2, 4}}, M::RowMajor);
  const M wide = matrixOf<TypeParam>({{1, 2}}, M::RowMajor);
  const std::size_t before = allocations::live();
  EXPECT_THROW(inverse(singular), MMatrixError);
  EXPECT_THROW(inverse(wide), MMatrixError);
  EXPECT_EQ(allocations::live(), before);
}

TYPED_TEST(Inverse, RefusesShapesThatDoNotFitInABuffer) {
  MGenMatrix<TypeParam> a = matrixOf<TypeParam>({{1}}, MGenMatrix<TypeParam>::RowMajor);
  a.rowStride = 0;
  a.colStride = 0;
  a.rows = std::numeric_limits<int>::max();
  for (const int cols : {3, 1 << 30, std::numeric_limits<int>::max()}) {
    a.cols = cols;
    const std::size_t before = allocations::made();
    EXPECT_THROW(inverse(a), std::bad_alloc);
    EXPECT_EQ(allocations::made(), before);
  }
}

TYPED_TEST(Inverse, OfATallMatrixIsThatOfItsTopAboveTheMultipliers) {
  using M = MGenMatrix<TypeParam>;
  const M a = matrixOf<TypeParam>({{4, 7}, {2, 6}, {1, 1}}, M::RowMajor);
  for (int storage = 0; storage < kStorages; ++storage) {
    const M x = inverse(stored(a, storage));
    expectNear(values(x), {{0.6, -0.7}, {-0.2, 0.4}, {0.25, -0.3}}, 30 * 2 * this->kEps);
    EXPECT_EQ(x.rowStride, 1);
    EXPECT_EQ(x.colStride, 3);
    EXPECT_EQ(x.data, x.buffer);
    EXPECT_EQ(bufferWords(x.buffer).bytes, 6 * sizeof(TypeParam));
    EXPECT_EQ(bufferWords(x.buffer).references, 1u);
  }
}

TYPED_TEST(Inverse, OfATallMatrixAgreesWithExtendedPrecision) {
  std::mt19937 random(kSeed + 2);
  for (int n = 1; n <= 20; ++n) {
    const int m = n + 1 + n % 4;
    MGenMatrix<TypeParam> a = randomMatrix<TypeParam>(m, n, random);
    for (int i = n; i < m; ++i) {  // too small to become pivots
      for (int j = 0; j < n; ++j) a(i, j) *= static_cast<TypeParam>(1e-3);
    }
    const PlainFactors factors = plainFactors(widened(a));
    for (int i = n; i < m; ++i) ASSERT_EQ(factors.rows[static_cast<std::size_t>(i)], unsigned(i));
    const Wide top = widened(a.view(0, 0, n, n));
    const Wide expected = plainInverse(top);
    const auto x = inverse(stored(a, n % kStorages));
    const long double size = norm1(expected);
    const long double condition = size * norm1(top);
    EXPECT_LE(norm1(minus(widened(x.view(0, 0, n, n)), expected)),
              30 * n * this->kEps * condition * size)
        << "n " << n << " seed " << kSeed + 2;
    const Wide multipliers(factors.lu.begin() + n, factors.lu.end());
    EXPECT_LE(norm1(minus(widened(x.view(n, 0, m - n, n)), multipliers)),
              30 * n * this->kEps * condition * norm1(multipliers))
        << "n " << n << " seed " << kSeed + 2;
  }
}

// The last row is the first pivot: the inverse's first column moves beyond the result, and the
// zeros from there come in.
TYPED_TEST(Inverse, OfATallMatrixWithAPivotBelowTheTopBringsInZeros) {
  using M = MGenMatrix<TypeParam>;
  const M a = matrixOf<TypeParam>({{1, 0}, {0, 1}, {4, 0}}, M::RowMajor);
  EXPECT_EQ(values(inverse(a)), (Rows{{0, 0}, {0, 1}, {0.25, 0}}));
}

TYPED_TEST(Inverse, OfALongThinMatrixTakesMemoryInProportion) {
  MGenMatrix<TypeParam> a(400000, 2, MGenMatrix<TypeParam>::RowMajor);
  a(0, 0) = 1;
  a(1, 1) = 1;
  a(399999, 0) = 4;
  const auto x = inverse(a);
  EXPECT_EQ(values(x.view(0, 0, 2, 2)), (Rows{{0, 0}, {0, 1}}));
  EXPECT_EQ(values(x.view(399999, 0, 1, 2)), (Rows{{0.25, 0}}));
}

TYPED_TEST(Inverse, SingularTallIsReported) {
  using M = MGenMatrix<TypeParam>;
  const M a = matrixOf<TypeParam>({{1, 2}, {2, 4}, {3, 6}}, M::RowMajor);
  EXPECT_EQ(thrownMessage([&a] { inverse(a); }), kSingular);
  RecordedReports reports;
  EXPECT_EQ(inverse(a).rows, 3);
  EXPECT_EQ(reports.all(), (Reports{kSingular, kSingular}));
}

TEST(InverseOfATallMatrix, IsWhatLapackGivesWithAColumnForEveryRow) {
  std::mt19937 random(kSeed + 3);
  int beyond = 0;
  for (int round = 0; round < 150; ++round) {
    const int n = 1 + round % 12;
    const int m = n + 1 + round % (4 * n);
    Double a = randomMatrix<double>(m, n, random);
    // Zeros make a row that was exchanged away come back as a later pivot.
    for (int i = 0; i < m; ++i) {
      for (int j = 0; j < n; ++j) {
        if (round % 3 == 0 && i >= n && j < i % n) a(i, j) = 0;
      }
    }
    for (const int pivot : directFactors(a).pivots) beyond += pivot > n ? 1 : 0;
    EXPECT_EQ(values(inverse(stored(a, round % kStorages))), directInverse(a))
        << m << " x " << n << ", round " << round << ", seed " << kSeed + 3;
  }
  EXPECT_GT(beyond, 100) << "pivots below the top are what this is about";
}

// Both exchanges of the top are with the last row, so what the first moved there comes back.
TEST(InverseOfATallMatrix, ExchangesTwiceWithOneRow) {
  Double a(9, 3, Double::RowMajor);
  a(8, 0) = 8;  // first pivot; brings row 0 down
  a(0, 1) = 4;  // row 0 is the second pivot, from row 8
  a(1, 2) = 2;
  a(0, 0) = 1;
  const DirectFactors direct = directFactors(a);
  ASSERT_EQ(direct.pivots[0], 9);
  ASSERT_EQ(direct.pivots[1], 9);
  EXPECT_EQ(values(inverse(a)), directInverse(a));
}

}  // namespace
