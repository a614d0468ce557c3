// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/foundation/matrix.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/foundation/containers.h"
#include "tests/support/buffer_header.h"
#include "tests/support/reports.h"

namespace {

using Matrix = MGenMatrix<float>;
using Floats = containers::Table<float>;
using containers::numbered;
using containers::values;
constexpr auto ColumnMajor = Matrix::ColumnMajor;
constexpr auto RowMajor = Matrix::RowMajor;
constexpr Matrix::Layout kLayouts[] = {ColumnMajor, RowMajor};
constexpr int kMax = std::numeric_limits<int>::max();

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

}  // namespace
