// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/foundation/matrix.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <type_traits>

#include "tests/foundation/containers.h"
#include "tests/support/allocations.h"
#include "tests/support/buffer_header.h"
#include "tests/support/element_types.h"
#include "tests/support/reports.h"

namespace {

using Matrix = MGenMatrix<float>;
using Floats = containers::Table<float>;
using allocations::made;
using containers::numbered;
using containers::values;
constexpr auto ColumnMajor = Matrix::ColumnMajor;
constexpr auto RowMajor = Matrix::RowMajor;
constexpr Matrix::Layout kLayouts[] = {ColumnMajor, RowMajor};
constexpr int kMax = std::numeric_limits<int>::max();

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
