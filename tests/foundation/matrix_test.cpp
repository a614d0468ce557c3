// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/foundation/matrix.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <random>
#include <type_traits>
#include <vector>

#include "tests/support/allocations.h"
#include "tests/support/buffer_header.h"
#include "tests/support/element_types.h"
#include "tests/support/reports.h"

namespace {

using Matrix = MGenMatrix<float>;
using allocations::made;
constexpr auto ColumnMajor = Matrix::ColumnMajor;
constexpr auto RowMajor = Matrix::RowMajor;
constexpr Matrix::Layout kLayouts[] = {ColumnMajor, RowMajor};
constexpr int kMax = std::numeric_limits<int>::max();

// Element (i, j) is 10 * (i + 1) + (j + 1).
template <class T = float>
MGenMatrix<T> numbered(int rows, int cols, typename MGenMatrix<T>::Layout layout) {
  MGenMatrix<T> m(rows, cols, layout);
  for (int i = 0; i < rows; ++i) {
    for (int j = 0; j < cols; ++j) m(i, j) = static_cast<T>(10 * (i + 1) + (j + 1));
  }
  return m;
}

template <class T>
using Table = std::vector<std::vector<T>>;
using Floats = Table<float>;

template <class T>
Table<T> values(const MGenMatrix<T>& m) {
  Table<T> result;
  for (int i = 0; i < m.rows; ++i) {
    result.emplace_back();
    for (int j = 0; j < m.cols; ++j) result.back().push_back(m(i, j));
  }
  return result;
}

// The transposed view on the same buffer.
Matrix transposed(Matrix m) {
  std::swap(m.rows, m.cols);
  std::swap(m.rowStride, m.colStride);
  return m;
}

template <class T>
class EveryMatrix : public testing::Test {};
TYPED_TEST_SUITE(EveryMatrix, ElementTypes, ElementTypeName);

TYPED_TEST(EveryMatrix, IsEmptyByDefault) {
  const MGenMatrix<TypeParam> m;
  EXPECT_EQ(m.buffer, nullptr);
  EXPECT_EQ(m.data, nullptr);
  EXPECT_EQ(m.rows, 0);
  EXPECT_EQ(m.cols, 0);
  EXPECT_EQ(m.rowStride, 1);
  EXPECT_EQ(m.colStride, 1);
}

TYPED_TEST(EveryMatrix, FieldsAreBufferShapeStridesData) {
  using M = MGenMatrix<TypeParam>;
  static_assert(std::is_standard_layout_v<M>);
  EXPECT_EQ(offsetof(M, buffer), 0u);
  EXPECT_EQ(offsetof(M, rows), sizeof(void*));
  EXPECT_EQ(offsetof(M, cols), sizeof(void*) + 4);
  EXPECT_EQ(offsetof(M, rowStride), sizeof(void*) + 8);
  EXPECT_EQ(offsetof(M, colStride), sizeof(void*) + 12);
  EXPECT_EQ(offsetof(M, data), sizeof(void*) + 16);
  EXPECT_EQ(sizeof(M), 2 * sizeof(void*) + 16);
}

TYPED_TEST(EveryMatrix, IsMadeOfZerosInOneAllocation) {
  using M = MGenMatrix<TypeParam>;
  const std::size_t before = made();
  const M m(20, 30, M::RowMajor);
  EXPECT_EQ(made(), before + 1);
  EXPECT_EQ(m.data, m.buffer);
  for (int i = 0; i < 20; ++i) {
    for (int j = 0; j < 30; ++j) EXPECT_EQ(m(i, j), TypeParam{});
  }
}

TYPED_TEST(EveryMatrix, HeaderHoldsBytesThenReferences) {
  using M = MGenMatrix<TypeParam>;
  const M m(2, 3, M::ColumnMajor);
  EXPECT_EQ(bufferWords(m.buffer).bytes, 6 * sizeof(TypeParam));
  EXPECT_EQ(bufferWords(m.buffer).references, 1u);
  const M second(m);
  EXPECT_EQ(bufferWords(m.buffer).references, 2u);
}

TYPED_TEST(EveryMatrix, CopiesSetsResizesAndViews) {
  using M = MGenMatrix<TypeParam>;
  M m(2, 3, M::RowMajor);
  M copy = m.copy(M::ColumnMajor);
  EXPECT_NE(copy.buffer, m.buffer);
  m.set(copy);
  m.resize(3, 3, M::ColumnMajor);
  EXPECT_EQ(m.view(1, 1, 2, 2).rowCount(), 2);
  EXPECT_EQ(m.row(1).length, 3);
  EXPECT_EQ(m.column(1).length, 3);
}

TYPED_TEST(EveryMatrix, RefusesSizesThatTheHeaderCannotHoldBeforeAllocating) {
  using M = MGenMatrix<TypeParam>;
  const int halfOfTooMany = static_cast<int>((std::int64_t{1} << 31) / sizeof(TypeParam));
  const std::size_t before = made();
  for (const auto layout : {M::ColumnMajor, M::RowMajor}) {
    EXPECT_THROW(M(2, halfOfTooMany, layout), std::bad_alloc);
    EXPECT_THROW(M(65536, 65536, layout), std::bad_alloc);  // 2^32 elements
    EXPECT_THROW(M(kMax, kMax, layout), std::bad_alloc);
    EXPECT_THROW(M(65536, 65537, layout), std::bad_alloc);  // 65536 elements modulo 2^32
  }
  EXPECT_EQ(made(), before);
  allocations::FailAt fail(1);
  EXPECT_THROW(M(2, halfOfTooMany, M::RowMajor), std::bad_alloc);
  EXPECT_FALSE(fail.failed());
  EXPECT_THROW(M(2, halfOfTooMany - 1, M::RowMajor), std::bad_alloc);
  EXPECT_TRUE(fail.failed()) << "the largest size is attempted";
}

TEST(MatrixLayout, ColumnMajorIsZeroAndRowMajorOne) {
  EXPECT_EQ(static_cast<int>(ColumnMajor), 0);
  EXPECT_EQ(static_cast<int>(RowMajor), 1);
}

TEST(MatrixLayout, ColumnMajorStepsByOneThenRows) {
  const Matrix m(2, 3, ColumnMajor);
  EXPECT_EQ(m.rowStride, 1);
  EXPECT_EQ(m.colStride, 2);
}

TEST(MatrixLayout, RowMajorStepsByColsThenOne) {
  const Matrix m(2, 3, RowMajor);
  EXPECT_EQ(m.rowStride, 3);
  EXPECT_EQ(m.colStride, 1);
}

TEST(MatrixConstruction, WithoutElementsHasNoBufferButKeepsShapeAndStrides) {
  const std::size_t before = made();
  const Matrix wide(0, 5, RowMajor);
  EXPECT_EQ(wide.buffer, nullptr);
  EXPECT_EQ(wide.data, nullptr);
  EXPECT_EQ(wide.rows, 0);
  EXPECT_EQ(wide.cols, 5);
  EXPECT_EQ(wide.rowStride, 5);
  const Matrix tall(5, 0, ColumnMajor);
  EXPECT_EQ(tall.buffer, nullptr);
  EXPECT_EQ(tall.rows, 5);
  EXPECT_EQ(tall.colStride, 5);
  const Matrix huge(kMax, 0, RowMajor);
  EXPECT_EQ(huge.rows, kMax);
  EXPECT_EQ(made(), before);
}

TEST(MatrixConstruction, NegativeSizeIsReported) {
  EXPECT_EQ(thrownMessage([] { Matrix m(-2, 3, RowMajor); }),
            "MVector length -2 must be nonnegative");
  EXPECT_EQ(thrownMessage([] { Matrix m(2, -3, RowMajor); }),
            "MVector length -3 must be nonnegative");
  EXPECT_EQ(thrownMessage([] { Matrix m(-2, -3, ColumnMajor); }),
            "MVector length -2 must be nonnegative");
}

TEST(MatrixConstruction, NegativeSizeCarriesOnEmpty) {
  RecordedReports reports;
  const Matrix m(-2, 3, RowMajor);
  EXPECT_EQ(m.buffer, nullptr);
  EXPECT_EQ(m.rows, 0);
  EXPECT_EQ(m.cols, 0);
  EXPECT_EQ(reports.all().size(), 1u);
}

TEST(MatrixCopyConstruction, SharesEverythingAndAllocatesNothing) {
  const Matrix a = numbered(3, 3, RowMajor).view(1, 1, 2, 2);
  const std::size_t before = made();
  const Matrix b(a);
  EXPECT_EQ(made(), before);
  EXPECT_EQ(std::memcmp(&a, &b, sizeof a), 0);
  EXPECT_EQ(bufferWords(a.buffer).references, 2u);
}

TEST(MatrixAssignment, SharesSoThatWritesAreSeenByBoth) {
  Matrix a = numbered(2, 2, ColumnMajor);
  Matrix b;
  b = a;
  b(0, 0) = 5;
  EXPECT_EQ(a(0, 0), 5);
}

TEST(MatrixAssignment, ReleasesTheOldBuffer) {
  const std::size_t before = allocations::live();
  {
    Matrix a(2, 2, RowMajor);
    const Matrix holder(a);
    a = Matrix(3, 3, RowMajor);
    EXPECT_EQ(bufferWords(holder.buffer).references, 1u);
    a = Matrix();
    EXPECT_EQ(a.buffer, nullptr);
    EXPECT_EQ(a.rows, 0);
    EXPECT_EQ(allocations::live(), before + 1);
  }
  EXPECT_EQ(allocations::live(), before);
}

TEST(MatrixAssignment, ToItselfAndOfItsOwnViewIsSafe) {
  Matrix a = numbered(3, 3, RowMajor);
  const Matrix& alias = a;
  a = alias;
  EXPECT_EQ(bufferWords(a.buffer).references, 1u);
  a = a.view(1, 1, 2, 2);
  EXPECT_EQ(values(a), (Floats{{22, 23}, {32, 33}}));
  EXPECT_EQ(bufferWords(a.buffer).references, 1u);
}

TEST(MatrixOwnsBuffer, OnlyWhenAloneAndNotEmpty) {
  EXPECT_FALSE(Matrix(0, 3, RowMajor).ownsBuffer());
  const Matrix a(2, 2, RowMajor);
  EXPECT_TRUE(a.ownsBuffer());
  const Matrix b = a.view(0, 0, 1, 1);
  EXPECT_FALSE(a.ownsBuffer());
}

TEST(MatrixLifetime, ABufferLivesAsLongAsARowOrColumnOrView) {
  Matrix view;
  MGenVector<float> row;
  MGenVector<float> column;
  {
    const Matrix a = numbered(3, 3, RowMajor);
    view = a.view(2, 2, 1, 1);
    row = a.row(1);
    column = a.column(1);
  }
  EXPECT_EQ(view(0, 0), 33);
  EXPECT_EQ(row[2], 23);
  EXPECT_EQ(column[2], 32);
}

TEST(MatrixCopy, IsDeepInTheAskedLayout) {
  for (const auto from : kLayouts) {
    for (const auto to : kLayouts) {
      const Matrix a = numbered(2, 3, from);
      Matrix b = a.copy(to);
      const Matrix fresh(2, 3, to);
      EXPECT_EQ(b.rowStride, fresh.rowStride);
      EXPECT_EQ(b.colStride, fresh.colStride);
      EXPECT_EQ(values(b), values(a));
      b(0, 0) = -1;
      EXPECT_EQ(a(0, 0), 11);
    }
  }
}

TEST(MatrixCopy, OfAViewHoldsTheViewAlone) {
  const Matrix copy = numbered(4, 4, ColumnMajor).view(1, 2, 2, 2).copy(RowMajor);
  EXPECT_EQ(values(copy), (Floats{{23, 24}, {33, 34}}));
  EXPECT_EQ(bufferWords(copy.buffer).bytes, 4 * sizeof(float));
  EXPECT_EQ(copy.data, copy.buffer);
}

TEST(MatrixCopy, OfAMatrixWithoutElementsKeepsTheShape) {
  const Matrix copy = Matrix(0, 3, RowMajor).copy(ColumnMajor);
  EXPECT_EQ(copy.buffer, nullptr);
  EXPECT_EQ(copy.cols, 3);
  EXPECT_EQ(Matrix(3, 0, RowMajor).copy(ColumnMajor).rows, 3);
}

TEST(MatrixCopy, LeaksNothingWhenMemoryRunsOut) {
  const Matrix a = numbered(2, 2, RowMajor);
  EXPECT_EQ(allocations::expectNoLeakOnAnyFailure([&a] { a.copy(ColumnMajor); }), 1u);
  EXPECT_EQ(bufferWords(a.buffer).references, 1u);
}

TEST(MatrixElement, IsFoundByBothStrides) {
  for (const auto layout : kLayouts) {
    Matrix m = numbered(3, 4, layout);
    EXPECT_EQ(&m(2, 3), m.data + 2 * m.rowStride + 3 * m.colStride);
    const Matrix& constant = m;
    EXPECT_EQ(&constant(2, 3), &m(2, 3));
  }
}

TEST(MatrixElement, OutsideIsReportedWithTheLastValidIndex) {
  Matrix m(3, 4, RowMajor);
  const Matrix& constant = m;
  EXPECT_EQ(thrownMessage([&] { m(3, 0); }), "MMatrix row 3 out of range 0..2");
  EXPECT_EQ(thrownMessage([&] { m(-1, 0); }), "MMatrix row -1 out of range 0..2");
  EXPECT_EQ(thrownMessage([&] { m(0, 4); }), "MMatrix col 4 out of range 0..3");
  EXPECT_EQ(thrownMessage([&] { constant(0, -1); }), "MMatrix col -1 out of range 0..3");
  EXPECT_EQ(thrownMessage([&] { constant(kMax, 0); }), "MMatrix row 2147483647 out of range 0..2");
}

TEST(MatrixElement, BothIndicesBadReportTheColumn) {
  Matrix m(3, 4, RowMajor);
  EXPECT_EQ(thrownMessage([&] { m(3, 4); }), "MMatrix col 4 out of range 0..3");
}

TEST(MatrixElement, OfAnEmptyMatrixHasNoValidIndex) {
  EXPECT_EQ(thrownMessage([] { Matrix()(0, 0); }), "MMatrix col 0 out of range 0..-1");
}

TEST(MatrixElement, CarriesOnToTheElementThatWouldBeThereAfterBothReports) {
  RecordedReports reports;
  Matrix a = numbered(3, 3, RowMajor);
  Matrix view = a.view(0, 0, 1, 1);
  EXPECT_EQ(&view(1, 2), &a.data[5]);
  EXPECT_EQ(reports.all(),
            (Reports{"MMatrix col 2 out of range 0..0", "MMatrix row 1 out of range 0..0"}));
}

TEST(MatrixSet, CopiesInPlaceForEveryHolder) {
  for (const auto from : kLayouts) {
    for (const auto to : kLayouts) {
      Matrix a(2, 3, to);
      const Matrix holder(a);
      const Matrix source = numbered(2, 3, from);
      const std::size_t before = made();
      EXPECT_EQ(&a.set(source), &a);
      EXPECT_EQ(made(), before);
      EXPECT_EQ(values(holder), values(source));
      EXPECT_EQ(a.rowStride, Matrix(2, 3, to).rowStride);
    }
  }
}

TEST(MatrixSet, OfAViewWritesTheViewAlone) {
  Matrix a(3, 3, ColumnMajor);
  a.view(1, 1, 2, 2).set(numbered(2, 2, RowMajor));
  EXPECT_EQ(values(a), (Floats{{0, 0, 0}, {0, 11, 12}, {0, 21, 22}}));
}

TEST(MatrixSet, FromItselfReturnsAtOnce) {
  Matrix a = numbered(2, 2, RowMajor);
  const std::size_t before = made();
  EXPECT_EQ(&a.set(a), &a);
  EXPECT_EQ(made(), before);
}

TEST(MatrixSet, FromItsOwnTransposeTakesASnapshot) {
  Matrix a = numbered(3, 3, RowMajor);
  a.set(transposed(a));
  EXPECT_EQ(values(a), (Floats{{11, 21, 31}, {12, 22, 32}, {13, 23, 33}}));
}

TEST(MatrixSet, BetweenViewsOfOneBufferTakesASnapshot) {
  std::mt19937 random(20240607);  // seed
  for (int round = 0; round < 200; ++round) {
    const auto pick = [&random](int from, int to) {
      return std::uniform_int_distribution<int>(from, to)(random);
    };
    const Matrix a = numbered(7, 6, kLayouts[round % 2]);
    const int rows = pick(0, 6);
    const int cols = pick(0, 5);
    const int toRow = pick(0, 7 - rows), toCol = pick(0, 6 - cols);
    const int fromRow = pick(0, 7 - rows), fromCol = pick(0, 6 - cols);
    Floats expected = values(a);
    const Floats snapshot = expected;
    for (int i = 0; i < rows; ++i) {
      for (int j = 0; j < cols; ++j) {
        expected[static_cast<std::size_t>(toRow + i)][static_cast<std::size_t>(toCol + j)] =
            snapshot[static_cast<std::size_t>(fromRow + i)][static_cast<std::size_t>(fromCol + j)];
      }
    }
    a.view(toRow, toCol, rows, cols).set(a.view(fromRow, fromCol, rows, cols));
    EXPECT_EQ(values(a), expected) << "round " << round;
  }
}

TEST(MatrixSet, OnOneBufferMakesOneTemporaryAndReleasesIt) {
  Matrix a = numbered(3, 3, RowMajor);
  const Matrix source = transposed(a);
  const std::size_t madeBefore = made();
  const std::size_t liveBefore = allocations::live();
  a.set(source);
  EXPECT_EQ(made(), madeBefore + 1);
  EXPECT_EQ(allocations::live(), liveBefore);
}

TEST(MatrixSet, LeavesTheElementsWhenTheTemporaryRunsOutOfMemory) {
  Matrix a = numbered(2, 2, RowMajor);
  const Matrix source = transposed(a);
  allocations::FailAt fail(1);
  EXPECT_THROW(a.set(source), std::bad_alloc);
  EXPECT_EQ(values(a), (Floats{{11, 12}, {21, 22}}));
}

TEST(MatrixSet, DifferentShapeIsReportedRowsBeforeColumnsOwnSizeFirst) {
  Matrix a = numbered(2, 3, RowMajor);
  EXPECT_EQ(thrownMessage([&] { a.set(Matrix(4, 3, RowMajor)); }), "MMatrix row mismatch 2 != 4");
  EXPECT_EQ(thrownMessage([&] { a.set(Matrix(2, 5, RowMajor)); }), "MMatrix col mismatch 3 != 5");
  EXPECT_EQ(thrownMessage([&] { a.set(Matrix(4, 5, RowMajor)); }), "MMatrix row mismatch 2 != 4");
  EXPECT_EQ(a(1, 2), 23);
}

TEST(MatrixSet, CarriesOnWithTheCommonBlockAfterBothReports) {
  RecordedReports reports;
  Matrix a(2, 3, RowMajor);
  a.set(numbered(3, 2, ColumnMajor));
  EXPECT_EQ(reports.all(), (Reports{"MMatrix row mismatch 2 != 3", "MMatrix col mismatch 3 != 2"}));
  EXPECT_EQ(values(a), (Floats{{11, 12, 0}, {21, 22, 0}}));
}

TEST(MatrixSet, CarriesOnWithinOneBuffer) {
  RecordedReports reports;
  Matrix a = numbered(2, 2, RowMajor);
  a.set(a.view(1, 0, 1, 2));
  EXPECT_EQ(values(a), (Floats{{21, 22}, {21, 22}}));
}

TEST(MatrixSet, ConvertsEveryElement) {
  MGenMatrix<double> source(1, 3, MGenMatrix<double>::ColumnMajor);
  source(0, 0) = 0.1;
  source(0, 1) = -2.9;
  source(0, 2) = 16777217;
  Matrix single(1, 3, RowMajor);
  single.set(source);
  EXPECT_EQ(values(single), (Floats{{0.1f, -2.9f, 16777216.0f}}));
  MGenMatrix<int> whole(1, 3, MGenMatrix<int>::RowMajor);
  whole.set(source);
  EXPECT_EQ(values(whole), (Table<int>{{0, -2, 16777217}}));
  MGenMatrix<double> back(1, 3, MGenMatrix<double>::RowMajor);
  back.set(single);
  EXPECT_EQ(back(0, 0), static_cast<double>(0.1f));
}

TEST(MatrixResize, KeepsTopLeftBlockAndZeroesTheRest) {
  Matrix m = numbered(2, 3, RowMajor);
  m.resize(3, 2, ColumnMajor);
  EXPECT_EQ(values(m), (Floats{{11, 12}, {21, 22}, {0, 0}}));
  EXPECT_EQ(m.rowStride, 1);
  EXPECT_EQ(m.colStride, 3);
}

TEST(MatrixResize, KeepsTheCommonBlockForEveryPairOfShapesAndLayouts) {
  for (const auto from : kLayouts) {
    for (const auto to : kLayouts) {
      for (int rows = 0; rows < 4; ++rows) {
        for (int cols = 0; cols < 4; ++cols) {
          Matrix m = numbered(2, 2, from);
          m.resize(rows, cols, to);
          const Matrix fresh(rows, cols, to);
          EXPECT_EQ(m.rowStride, fresh.rowStride);
          EXPECT_EQ(m.colStride, fresh.colStride);
          EXPECT_EQ(m.data, m.buffer);
          EXPECT_EQ(m.buffer == nullptr, rows * cols == 0);
          for (int i = 0; i < rows; ++i) {
            for (int j = 0; j < cols; ++j) {
              const int kept = i < 2 && j < 2 ? 10 * (i + 1) + (j + 1) : 0;
              EXPECT_EQ(m(i, j), static_cast<float>(kept));
            }
          }
        }
      }
    }
  }
}

TEST(MatrixResize, ToTheSameShapeAndLayoutKeepsSharing) {
  for (const auto layout : kLayouts) {
    Matrix m = numbered(2, 3, layout);
    const Matrix holder(m);
    const std::size_t before = made();
    m.resize(2, 3, layout);
    EXPECT_EQ(made(), before);
    EXPECT_EQ(m.buffer, holder.buffer);
  }
}

TEST(MatrixResize, OfTheLayoutAloneReallocates) {
  Matrix m = numbered(2, 3, RowMajor);
  const Matrix holder(m);
  m.resize(2, 3, ColumnMajor);
  EXPECT_NE(m.buffer, holder.buffer);
  EXPECT_EQ(values(m), values(holder));
  EXPECT_EQ(m.rowStride, 1);
}

TEST(MatrixResize, ToTheSameShapeWithAnUnknownLayoutKeepsTheStorage) {
  for (const auto layout : kLayouts) {
    Matrix m = numbered(2, 3, layout);
    const float* const buffer = m.buffer;
    m.resize(2, 3, static_cast<Matrix::Layout>(2));
    EXPECT_EQ(m.buffer, buffer);
    EXPECT_EQ(m.rowStride, Matrix(2, 3, layout).rowStride);
  }
}

TEST(MatrixResize, OfAViewWithOtherStridesReallocates) {
  const Matrix parent = numbered(3, 3, RowMajor);
  Matrix view = parent.view(0, 0, 2, 2);
  view.resize(2, 2, RowMajor);
  EXPECT_NE(view.buffer, parent.buffer);
  EXPECT_EQ(values(view), (Floats{{11, 12}, {21, 22}}));
  EXPECT_EQ(view.rowStride, 2);
}

TEST(MatrixResize, OfAViewThatHasTheLayoutKeepsSharing) {
  const Matrix parent = numbered(3, 3, RowMajor);
  Matrix view = parent.view(1, 0, 2, 3);
  view.resize(2, 3, RowMajor);
  EXPECT_EQ(view.buffer, parent.buffer);
  EXPECT_EQ(view.data, parent.data + 3);
}

TEST(MatrixResize, OfOneColumnHasBothLayoutsOnlyByItsStrides) {
  Matrix column = numbered(3, 1, ColumnMajor);
  const float* const buffer = column.buffer;
  column.resize(3, 1, RowMajor);  // strides 1 and 3 are not 1 and 1
  EXPECT_NE(column.buffer, buffer);
  EXPECT_EQ(column.colStride, 1);
  EXPECT_EQ(values(column), (Floats{{11}, {21}, {31}}));
}

TEST(MatrixResize, OfADefaultMatrixTakesTheShape) {
  Matrix m;
  m.resize(2, 2, RowMajor);
  EXPECT_EQ(values(m), (Floats{{0, 0}, {0, 0}}));
}

TEST(MatrixResize, ToNoElementsLeavesNoBuffer) {
  const std::size_t before = allocations::live();
  Matrix m(2, 3, RowMajor);
  m.resize(0, 3, RowMajor);
  EXPECT_EQ(m.buffer, nullptr);
  EXPECT_EQ(m.data, nullptr);
  EXPECT_EQ(m.cols, 3);
  EXPECT_EQ(allocations::live(), before);
}

TEST(MatrixResize, LeavesOtherHoldersAlone) {
  Matrix m = numbered(2, 2, RowMajor);
  const Matrix holder(m);
  m.resize(1, 1, RowMajor);
  m(0, 0) = 9;
  EXPECT_EQ(holder(0, 0), 11);
  EXPECT_EQ(bufferWords(holder.buffer).references, 1u);
}

TEST(MatrixResize, AllocatesOnce) {
  Matrix m = numbered(2, 2, RowMajor);
  const std::size_t before = made();
  m.resize(5, 5, ColumnMajor);
  EXPECT_EQ(made(), before + 1);
}

TEST(MatrixResize, NegativeIsReportedAndChangesNothing) {
  Matrix m = numbered(2, 2, RowMajor);
  EXPECT_EQ(thrownMessage([&] { m.resize(2, -1, RowMajor); }),
            "MVector length -1 must be nonnegative");
  EXPECT_EQ(values(m), (Floats{{11, 12}, {21, 22}}));
}

TEST(MatrixResize, NegativeCarriesOnEmpty) {
  RecordedReports reports;
  Matrix m = numbered(2, 2, RowMajor);
  m.resize(-1, -1, RowMajor);
  EXPECT_EQ(reports.all(), Reports{"MVector length -1 must be nonnegative"});
  EXPECT_EQ(m.rows, 0);
  EXPECT_EQ(m.cols, 0);
  EXPECT_EQ(m.buffer, nullptr);
}

TEST(MatrixResize, LeavesTheMatrixWhenMemoryRunsOut) {
  Matrix m = numbered(2, 2, RowMajor);
  const float* const buffer = m.buffer;
  {
    allocations::FailAt fail(1);
    EXPECT_THROW(m.resize(3, 3, RowMajor), std::bad_alloc);
  }
  EXPECT_THROW(m.resize(65536, 65536, RowMajor), std::bad_alloc);
  EXPECT_EQ(m.buffer, buffer);
  EXPECT_EQ(values(m), (Floats{{11, 12}, {21, 22}}));
}

TEST(MatrixView, CarriesItsShapeAndTheParentsStrides) {
  for (const auto layout : kLayouts) {
    Matrix m = numbered(4, 5, layout);
    const Matrix view = m.view(1, 2, 3, 2);
    EXPECT_EQ(view.buffer, m.buffer);
    EXPECT_EQ(view.rowCount(), 3);
    EXPECT_EQ(view.colCount(), 2);
    EXPECT_EQ(view.rowStride, m.rowStride);
    EXPECT_EQ(view.colStride, m.colStride);
    EXPECT_EQ(view.data, &m(1, 2));
    EXPECT_EQ(bufferWords(m.buffer).references, 2u);
    EXPECT_EQ(values(view), (Floats{{23, 24}, {33, 34}, {43, 44}}));
  }
}

TEST(MatrixView, OutsideIsReportedColumnFirst) {
  const Matrix m(3, 4, RowMajor);
  const auto message = [&m](int row, int col, int rows, int cols) {
    return thrownMessage([&] { m.view(row, col, rows, cols); });
  };
  EXPECT_EQ(message(0, 0, 4, 4), "MMatrix row 3 out of range 0..2");
  EXPECT_EQ(message(0, 0, 3, 5), "MMatrix col 4 out of range 0..3");
  EXPECT_EQ(message(0, 0, 4, 5), "MMatrix col 4 out of range 0..3");
  EXPECT_EQ(message(-1, 0, 1, 1), "MMatrix row -1 out of range 0..2");
  EXPECT_EQ(message(0, -2, 1, 1), "MMatrix col -2 out of range 0..3");
  EXPECT_EQ(message(1, 1, kMax, 1), "MMatrix row 3 out of range 0..2");
  EXPECT_EQ(message(kMax, 0, kMax, 1), "MMatrix row 2147483647 out of range 0..2");
  EXPECT_EQ(message(0, 0, -1, 1), "MVector length -1 must be nonnegative");
  EXPECT_EQ(message(0, 0, 1, -4), "MVector length -4 must be nonnegative");
}

TEST(MatrixView, WithoutElementsIsEmptyWhereverItStarts) {
  const Matrix m(3, 4, RowMajor);
  const Matrix view = m.view(3, 4, 0, 2);
  EXPECT_EQ(view.rows, 0);
  EXPECT_EQ(view.cols, 2);
  EXPECT_EQ(view.rowStride, 4);
}

TEST(MatrixView, OutsideCarriesOnEmpty) {
  RecordedReports reports;
  const Matrix m(3, 4, RowMajor);
  const Matrix view = m.view(1, 1, 3, 4);
  EXPECT_EQ(reports.all(), Reports{"MMatrix col 4 out of range 0..3"});
  EXPECT_EQ(view.rows, 0);
  EXPECT_EQ(view.buffer, nullptr);
  EXPECT_EQ(bufferWords(m.buffer).references, 1u);
}

TEST(MatrixRow, SharesTheBufferAndStepsByTheColumnStride) {
  for (const auto layout : kLayouts) {
    Matrix m = numbered(3, 4, layout);
    MGenVector<float> row = m.row(1);
    EXPECT_EQ(row.length, 4);
    EXPECT_EQ(row.stride, m.colStride);
    row[2] = 7;
    EXPECT_EQ(m(1, 2), 7);
  }
}

TEST(MatrixColumn, SharesTheBufferAndStepsByTheRowStride) {
  for (const auto layout : kLayouts) {
    Matrix m = numbered(3, 4, layout);
    MGenVector<float> column = m.column(3);
    EXPECT_EQ(column.length, 3);
    EXPECT_EQ(column.stride, m.rowStride);
    column[2] = 7;
    EXPECT_EQ(m(2, 3), 7);
  }
}

TEST(MatrixRowAndColumn, OutsideAreReported) {
  const Matrix m(3, 4, RowMajor);
  EXPECT_EQ(thrownMessage([&] { m.row(3); }), "MMatrix row 3 out of range 0..2");
  EXPECT_EQ(thrownMessage([&] { m.column(-1); }), "MMatrix col -1 out of range 0..3");
}

TEST(MatrixRowAndColumn, OutsideCarryOnEmpty) {
  RecordedReports reports;
  const Matrix m(3, 4, RowMajor);
  EXPECT_EQ(m.row(3).length, 0);
  EXPECT_EQ(m.column(4).length, 0);
  EXPECT_EQ(reports.all().size(), 2u);
}

TEST(MatrixRowAndColumn, OfAMatrixWithoutElementsAreEmpty) {
  EXPECT_EQ(Matrix(3, 0, RowMajor).row(2).length, 0);
  EXPECT_EQ(Matrix(0, 3, RowMajor).column(2).length, 0);
}

TEST(MatrixOverForeignMemory, IsReadCopiedSetResizedAndLeft) {
  float cells[] = {1, 2, 3, 4, 5, 6};
  const std::size_t before = allocations::live();
  {
    Matrix m;
    m.rows = 2;
    m.cols = 3;
    m.rowStride = -3;
    m.data = cells + 3;
    EXPECT_EQ(values(m.copy(ColumnMajor)), (Floats{{4, 5, 6}, {1, 2, 3}}));
    m.set(numbered(2, 3, ColumnMajor));
    m.resize(1, 1, RowMajor);
    EXPECT_EQ(m(0, 0), 11);
  }
  EXPECT_EQ(cells[0], 21);
  EXPECT_EQ(cells[3], 11);
  EXPECT_EQ(allocations::live(), before);
}

}  // namespace
