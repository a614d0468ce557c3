// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/foundation/matrix.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <new>
#include <random>
#include <vector>

#include "tests/foundation/containers.h"
#include "tests/support/allocations.h"
#include "tests/support/buffer_header.h"
#include "tests/support/reports.h"

namespace {

using Matrix = MGenMatrix<float>;
using Floats = containers::Table<float>;
using allocations::made;
using containers::numbered;
using containers::Table;
using containers::transposed;
using containers::values;
constexpr auto ColumnMajor = Matrix::ColumnMajor;
constexpr auto RowMajor = Matrix::RowMajor;
constexpr Matrix::Layout kLayouts[] = {ColumnMajor, RowMajor};

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

// Cells as a matrix over memory that no buffer owns.
Matrix over(float* cells, int rows, int cols, int rowStride, int colStride) {
  Matrix m;
  m.rows = rows;
  m.cols = cols;
  m.rowStride = rowStride;
  m.colStride = colStride;
  m.data = cells;
  return m;
}

TEST(MatrixSet, WritesRowAfterRowWhereElementsShareACell) {
  // Cell i + j holds what was written last: of column 0 and 1 the element further down.
  Matrix a(2, 3, RowMajor);
  a.rowStride = 1;
  a.set(numbered(2, 3, ColumnMajor));
  const std::vector<float> cells(a.buffer, a.buffer + 6);
  EXPECT_EQ(cells, (std::vector<float>{11, 21, 22, 23, 0, 0}));
}

// The same loop as the rule has it, cell by cell.
TEST(MatrixSet, WritesRowAfterRowWhateverTheStridesAre) {
  const unsigned seed = 20240608;
  std::mt19937 random(seed);
  const auto pick = [&random](int from, int to) {
    return std::uniform_int_distribution<int>(from, to)(random);
  };
  for (int round = 0; round < 2000; ++round) {
    const int rows = pick(0, 40), cols = pick(0, 40);
    const int rowStride = pick(-4, 4), colStride = pick(-4, 4);
    constexpr std::size_t size = 700, middle = 350;
    std::vector<float> cells(size), expected(size);
    const Matrix source = numbered(rows, cols, kLayouts[round % 2]);
    for (int i = 0; i < rows; ++i) {
      for (int j = 0; j < cols; ++j) {
        expected[middle + static_cast<std::size_t>(i * rowStride + j * colStride)] = source(i, j);
      }
    }
    over(&cells[middle], rows, cols, rowStride, colStride).set(source);
    ASSERT_EQ(cells, expected) << "round " << round << " seed " << seed;
  }
}

TEST(MatrixSet, ReadsWhatItHasWrittenWhereTwoMatricesWithoutBufferOverlap) {
  const unsigned seed = 20240609;
  std::mt19937 random(seed);
  const auto pick = [&random](int from, int to) {
    return std::uniform_int_distribution<int>(from, to)(random);
  };
  for (int round = 0; round < 2000; ++round) {
    const int rows = pick(1, 20), cols = pick(1, 20);
    const bool down = pick(0, 1) == 1, across = pick(0, 1) == 1;
    const std::size_t to = static_cast<std::size_t>(pick(0, 500));
    const std::size_t from = static_cast<std::size_t>(pick(0, 500));
    std::vector<float> cells(900);
    for (std::size_t k = 0; k < cells.size(); ++k) cells[k] = static_cast<float>(k);
    std::vector<float> expected = cells;
    Matrix target = over(&cells[to], rows, cols, down ? 1 : cols, down ? rows : 1);
    const Matrix source = over(&cells[from], rows, cols, across ? 1 : cols, across ? rows : 1);
    for (int i = 0; i < rows; ++i) {
      for (int j = 0; j < cols; ++j) {
        expected[to + static_cast<std::size_t>(i * target.rowStride + j * target.colStride)] =
            expected[from + static_cast<std::size_t>(i * source.rowStride + j * source.colStride)];
      }
    }
    target.set(source);
    ASSERT_EQ(cells, expected) << "round " << round << " seed " << seed;
  }
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

}  // namespace
