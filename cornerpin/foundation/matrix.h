// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_FOUNDATION_MATRIX_H
#define CORNERPIN_FOUNDATION_MATRIX_H

/// \file
/// The matrix that shares its storage.

#include <cstddef>

#include "cornerpin/export.h"
#include "cornerpin/foundation/exception.h"
#include "cornerpin/foundation/vector.h"

/// A two-stride view on a shared, reference-counted element buffer. Built for `float`, `double`,
/// `int` and `char*`; element (i, j) is `data[i * rowStride + j * colStride]`.
///
/// Copying and assigning share the buffer: writes through either matrix are seen by both, and
/// there is no copy-on-write. `copy` duplicates. Reference counts are plain integers, so matrices
/// on one buffer must not be copied or released from two threads at once.
///
/// Errors go through `MMatrixError::err`. With a handler installed the call carries on: a bad
/// index then reads or writes outside the buffer, a bad shape or view gives an empty matrix, and
/// `set` copies the block that both matrices have.
///
/// A matrix of more than 2^32 - 1 bytes is refused with `std::bad_alloc` before any allocation.
template <class T>
class CORNERPIN_API MGenMatrix {
 public:
  /// Strides of newly allocated storage.
  enum Layout : int {
    ColumnMajor = 0,  ///< rowStride 1, colStride rows: what LAPACK takes
    RowMajor = 1,     ///< rowStride cols, colStride 1
  };

  /// 0 x 0, no buffer, both strides 1.
  MGenMatrix() noexcept = default;
  /// Zeros; no buffer when there are no elements. Reports "MVector length %d must be nonnegative"
  /// for a negative size.
  MGenMatrix(int rows, int cols, Layout layout);
  /// \{
  /// Shares the other matrix's buffer, its shape and its strides.
  MGenMatrix(const MGenMatrix& other) noexcept;
  MGenMatrix& operator=(const MGenMatrix& other) noexcept;
  /// \}
  ~MGenMatrix();

  /// A duplicate in a buffer of its own.
  MGenMatrix copy(Layout layout) const;

  /// Converts and copies the elements of `source` into this matrix's storage, where every other
  /// holder sees them. When both share a buffer the result is that of a snapshot of the source.
  /// Rows are copied from the first to the last, and in each the columns: where strides let
  /// elements of this matrix share a cell, the last one stays.
  /// Reports "MMatrix row mismatch %d != %d", then "MMatrix col mismatch %d != %d".
  template <class U>
  MGenMatrix& set(const MGenMatrix<U>& source);

  /// Moves to a new buffer of the given shape and layout that keeps the common top-left block and
  /// is zero elsewhere. Does nothing, and so keeps sharing, when shape and layout are there
  /// already. Reports a negative size as the constructor does.
  void resize(int rows, int cols, Layout layout);

  /// \{
  /// Element of row i and column j, from 0. Reports "MMatrix col %d out of range 0..%d" before
  /// "MMatrix row %d out of range 0..%d", each with the index and the last valid index.
  T& operator()(int i, int j) { return data[offset(i, j)]; }
  const T& operator()(int i, int j) const { return data[offset(i, j)]; }
  /// \}

  /// \{
  /// The same as the member of that name.
  int rowCount() const noexcept { return rows; }
  int colCount() const noexcept { return cols; }
  /// \}

  /// The block of `rowsInView` x `colsInView` elements from (row, col) on, on the same buffer.
  /// Reports the column, then the row error for the first index that lies outside.
  MGenMatrix view(int row, int col, int rowsInView, int colsInView) const;
  /// Row i, on the same buffer. Reports the row error.
  MGenVector<T> row(int i) const;
  /// Column j, on the same buffer. Reports the column error.
  MGenVector<T> column(int j) const;

  /// True when there is a buffer and this matrix is its only holder.
  bool ownsBuffer() const noexcept;

  T* buffer = nullptr;  ///< first element of the shared buffer, null when there are none
  int rows = 0;         ///< number of rows
  int cols = 0;         ///< number of columns
  int rowStride = 1;    ///< distance from row i to row i + 1, in elements
  int colStride = 1;    ///< distance from column j to column j + 1, in elements
  T* data = nullptr;    ///< element (0, 0)

 private:
  bool checkColumn(int j) const {
    if (j >= 0 && j < cols) return true;
    MMatrixError::err("MMatrix col %d out of range 0..%d", j, cols - 1);
    return false;
  }
  bool checkRow(int i) const {
    if (i >= 0 && i < rows) return true;
    MMatrixError::err("MMatrix row %d out of range 0..%d", i, rows - 1);
    return false;
  }
  // The column is checked first: it names the error of an index that is bad both ways.
  std::ptrdiff_t offset(int i, int j) const {
    checkColumn(j);
    checkRow(i);
    return static_cast<std::ptrdiff_t>(i) * rowStride + static_cast<std::ptrdiff_t>(j) * colStride;
  }
};

extern template class MGenMatrix<float>;
extern template class MGenMatrix<double>;
extern template class MGenMatrix<int>;
extern template class MGenMatrix<char*>;

#endif
