// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/linalg/inverse.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <new>
#include <random>
#include <string>
#include <vector>

#include "cornerpin/linalg/lapack.h"
#include "tests/support/allocations.h"
#include "tests/support/buffer_header.h"
#include "tests/support/child.h"
#include "tests/support/element_types.h"
#include "tests/support/reports.h"
#include "tests/support/whole_run.h"

namespace {

using Rows = std::vector<std::vector<double>>;
using Double = MGenMatrix<double>;
constexpr unsigned kSeed = 104729;

template <class T>
MGenMatrix<T> matrixOf(const Rows& rows, typename MGenMatrix<T>::Layout layout) {
  MGenMatrix<T> m(static_cast<int>(rows.size()), static_cast<int>(rows[0].size()), layout);
  for (int i = 0; i < m.rows; ++i) {
    for (int j = 0; j < m.cols; ++j) {
      m(i, j) = static_cast<T>(rows[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)]);
    }
  }
  return m;
}

Double doubles(const Rows& rows) { return matrixOf<double>(rows, Double::RowMajor); }

template <class T>
MGenMatrix<T> empty(int rows, int cols) {
  return MGenMatrix<T>(rows, cols, MGenMatrix<T>::ColumnMajor);
}

template <class T>
Rows values(const MGenMatrix<T>& m) {
  Rows rows;
  for (int i = 0; i < m.rows; ++i) {
    rows.emplace_back();
    for (int j = 0; j < m.cols; ++j) rows.back().push_back(static_cast<double>(m(i, j)));
  }
  return rows;
}

// The same elements in every kind of storage: both layouts, a block of a larger matrix, a
// transposed view, and both strides negative.
constexpr int kStorages = 5;
template <class T>
MGenMatrix<T> stored(const MGenMatrix<T>& m, int storage) {
  using M = MGenMatrix<T>;
  if (storage < 2) return m.copy(storage == 0 ? M::ColumnMajor : M::RowMajor);
  M view = M(m.rows + 3, m.cols + 2, M::RowMajor).view(2, 1, m.rows, m.cols);
  if (storage == 3) {
    view = M(m.cols, m.rows, M::RowMajor);
    std::swap(view.rows, view.cols);
    std::swap(view.rowStride, view.colStride);
  }
  if (storage == 4) {
    view.data = &view(m.rows - 1, m.cols - 1);
    view.rowStride = -view.rowStride;
    view.colStride = -view.colStride;
  }
  view.set(m);
  return view;
}

template <class T>
MGenMatrix<T> randomMatrix(int rows, int cols, std::mt19937& random) {
  MGenMatrix<T> m(rows, cols, MGenMatrix<T>::RowMajor);
  std::normal_distribution<double> normal;
  for (int i = 0; i < rows; ++i) {
    for (int j = 0; j < cols; ++j) m(i, j) = static_cast<T>(normal(random));
  }
  return m;
}

// A second, plain factorisation in extended precision.
using Wide = std::vector<std::vector<long double>>;

template <class T>
Wide widened(const MGenMatrix<T>& m) {
  Wide wide;
  for (int i = 0; i < m.rows; ++i) {
    wide.emplace_back();
    for (int j = 0; j < m.cols; ++j) wide.back().push_back(m(i, j));
  }
  return wide;
}

struct PlainFactors {
  Wide lu;                        // multipliers below the diagonal, U on and above it
  std::vector<std::size_t> rows;  // the row of the original that each row holds
};

PlainFactors plainFactors(Wide lu) {
  const std::size_t m = lu.size();
  const std::size_t n = lu[0].size();
  PlainFactors factors{std::move(lu), std::vector<std::size_t>(m)};
  for (std::size_t i = 0; i < m; ++i) factors.rows[i] = i;
  Wide& a = factors.lu;
  for (std::size_t k = 0; k < std::min(m, n); ++k) {
    std::size_t pivot = k;
    for (std::size_t i = k; i < m; ++i) {
      if (std::fabs(a[i][k]) > std::fabs(a[pivot][k])) pivot = i;
    }
    std::swap(a[k], a[pivot]);
    std::swap(factors.rows[k], factors.rows[pivot]);
    for (std::size_t i = k + 1; i < m; ++i) {
      a[i][k] /= a[k][k];
      for (std::size_t j = k + 1; j < n; ++j) a[i][j] -= a[i][k] * a[k][j];
    }
  }
  return factors;
}

// Solves for one column of the identity at a time.
Wide plainInverse(const Wide& a) {
  const PlainFactors f = plainFactors(a);
  const std::size_t n = a.size();
  Wide inverse(n, std::vector<long double>(n));
  for (std::size_t column = 0; column < n; ++column) {
    std::vector<long double> x(n);
    for (std::size_t i = 0; i < n; ++i) {
      x[i] = f.rows[i] == column ? 1 : 0;
      for (std::size_t j = 0; j < i; ++j) x[i] -= f.lu[i][j] * x[j];
    }
    for (std::size_t i = n; i-- > 0;) {
      for (std::size_t j = i + 1; j < n; ++j) x[i] -= f.lu[i][j] * x[j];
      x[i] /= f.lu[i][i];
    }
    for (std::size_t i = 0; i < n; ++i) inverse[i][column] = x[i];
  }
  return inverse;
}

long double norm1(const Wide& a) {
  long double largest = 0;
  for (std::size_t j = 0; j < a[0].size(); ++j) {
    long double sum = 0;
    for (const auto& row : a) sum += std::fabs(row[j]);
    largest = std::max(largest, sum);
  }
  return largest;
}

Wide minus(Wide a, const Wide& b) {
  for (std::size_t i = 0; i < a.size(); ++i) {
    for (std::size_t j = 0; j < a[0].size(); ++j) a[i][j] -= b[i][j];
  }
  return a;
}

Wide identityMinusProduct(const Wide& x, const Wide& a) {
  const std::size_t n = a.size();
  Wide result(n, std::vector<long double>(n));
  for (std::size_t i = 0; i < n; ++i) {
    result[i][i] = 1;
    for (std::size_t k = 0; k < n; ++k) {
      for (std::size_t j = 0; j < n; ++j) result[i][j] -= x[i][k] * a[k][j];
    }
  }
  return result;
}

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

constexpr const char* kSingular = "inverse: singular matrix";

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

TEST(Determinant, OfTheOneByOneMatrixIsItsNegative) {
  EXPECT_EQ(determinant(doubles({{5}})), -5.0);
}

TEST(Determinant, OfTwoByTwoIdentityIsOne) {
  EXPECT_EQ(determinant(doubles({{1, 0}, {0, 1}})), 1.0);
}

TEST(Determinant, OfThreeByThreeIdentityIsMinusOne) {
  EXPECT_EQ(determinant(doubles({{1, 0, 0}, {0, 1, 0}, {0, 0, 1}})), -1.0);
}

TEST(Determinant, OfARowExchangeIsOne) { EXPECT_EQ(determinant(doubles({{0, 1}, {1, 0}})), 1.0); }

TEST(Determinant, IsTheProductOfTheFactorsDiagonalWithTheParityOfTheSize) {
  std::mt19937 random(kSeed + 4);
  for (int n = 1; n <= 64; ++n) {
    const Double a = stored(randomMatrix<double>(n, n, random), n % kStorages);
    const Wide wide = widened(a);
    const PlainFactors factors = plainFactors(wide);
    long double expected = n % 2 == 0 ? 1 : -1;
    for (std::size_t i = 0; i < factors.lu.size(); ++i) expected *= factors.lu[i][i];
    const long double condition = norm1(wide) * norm1(plainInverse(wide));
    const long double tolerance =
        30 * n * std::numeric_limits<double>::epsilon() * condition * std::fabs(expected);
    EXPECT_NEAR(static_cast<double>(determinant(a) - expected), 0, static_cast<double>(tolerance))
        << "n " << n << " seed " << kSeed + 4;
  }
}

TEST(Determinant, LeavesItsArgument) {
  const Double a = doubles({{0, 2}, {3, 4}});
  determinant(a);
  EXPECT_EQ(values(a), (Rows{{0, 2}, {3, 4}}));
}

TEST(Determinant, OfATallMatrixIsThatOfTheFactorisedTop) {
  // U has the diagonal 4 and 2.5.
  EXPECT_EQ(determinant(doubles({{4, 7}, {2, 6}, {1, 1}})), 10.0);
  // The last row becomes the first pivot.
  EXPECT_EQ(determinant(doubles({{1, 0}, {0, 1}, {4, 0}})), 4.0);
}

TEST(Determinant, WithoutColumnsIsOne) {
  RecordedReports reports;
  const std::size_t before = allocations::made();
  EXPECT_EQ(determinant(empty<double>(0, 0)), 1.0);
  EXPECT_EQ(determinant(empty<double>(3, 0)), 1.0);
  EXPECT_EQ(determinant(Double()), 1.0);
  EXPECT_EQ(allocations::made(), before);
  EXPECT_TRUE(reports.all().empty());
}

TEST(Determinant, SingularIsReported) {
  EXPECT_EQ(thrownMessage([] { determinant(doubles({{1, 2}, {2, 4}})); }), kSingular);
  EXPECT_EQ(thrownMessage([] { determinant(doubles({{0}})); }), kSingular);
  EXPECT_EQ(thrownMessage([] { determinant(doubles({{1, 0}, {3, 0}})); }), kSingular);
}

TEST(Determinant, SingularCarriesOnToZero) {
  RecordedReports reports;
  EXPECT_EQ(determinant(doubles({{1, 2}, {2, 4}})), 0.0);
  EXPECT_EQ(reports.all(), Reports{kSingular});
}

TEST(Determinant, MoreColumnsThanRowsReportsTheFirstMissingRow) {
  EXPECT_EQ(thrownMessage([] {
              determinant(doubles({{1, 2, 3}, {4, 5, 7}}));
            }),
            "MMatrix row 2 out of range 0..1");
  EXPECT_EQ(thrownMessage([] {
              determinant(doubles({{1, 2, 3, 4}}));
            }),
            "MMatrix row 1 out of range 0..0");
}

TEST(Determinant, MoreColumnsThanRowsCarriesOnWithTheDiagonalThatIsThere) {
  RecordedReports reports;
  EXPECT_EQ(determinant(doubles({{2, 1, 1, 1}, {0, 3, 1, 1}})), 6.0);
  EXPECT_EQ(reports.all(),
            (Reports{"MMatrix row 2 out of range 0..1", "MMatrix row 3 out of range 0..1"}));
}

TEST(Determinant, WithoutRowsIsReportedByTheFactorisation) {
  EXPECT_EQ(thrownMessage([] { determinant(empty<double>(0, 2)); }), "dgetrf");
}

TEST(Determinant, WithoutRowsCarriesOnToTheMissingRows) {
  const ChildRun run = runInChild([] {
    RecordedReports reports;
    const double product = determinant(empty<double>(0, 2));
    if (reports.all() !=
        Reports{"dgetrf", "MMatrix row 0 out of range 0..-1", "MMatrix row 1 out of range 0..-1"}) {
      throw std::bad_alloc();
    }
    // Without a factorisation the pivots are zeros: the sign flips behind the first alone.
    if (product != -1.0) throw std::bad_alloc();
  });
  EXPECT_TRUE(run.exited);
}

TEST(Determinant, RefusalsPrintNothingAndTheProcessLives) {
  const int shapes[][2] = {{0, 1}, {0, 3}, {1, 2}, {2, 3}};
  for (const auto& shape : shapes) {
    const ChildRun run = runInChild([&shape] {
      std::mt19937 random(kSeed);
      const Double a = randomMatrix<double>(shape[0], shape[1], random);
      thrownMessage([&a] { determinant(a); });
      RecordedReports reports;
      determinant(a);
    });
    EXPECT_TRUE(run.exited) << shape[0] << ' ' << shape[1];
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "");
  }
}

TEST(Determinant, LeaksNothingWhicheverAllocationFails) {
  const Double a = doubles({{4, 7}, {2, 6}});
  EXPECT_EQ(allocations::expectNoLeakOnAnyFailure([&a] { determinant(a); }), 2u);
}

TEST(Determinant, LeaksNothingWhenItReports) {
  const Double singular = doubles({{1, 2}, {2, 4}});
  const Double wide = doubles({{1, 2}});
  const std::size_t before = allocations::live();
  EXPECT_THROW(determinant(singular), MMatrixError);
  EXPECT_THROW(determinant(wide), MMatrixError);
  EXPECT_EQ(allocations::live(), before);
}

TEST(Determinant, OverflowsToInfinity) {
  EXPECT_EQ(determinant(doubles({{1e200, 0}, {0, 1e200}})),
            std::numeric_limits<double>::infinity());
}

}  // namespace
