// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/foundation/matrix.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "cornerpin/foundation/shared_buffer.h"

using cornerpin::internal::acquire;
using cornerpin::internal::newBuffer;
using cornerpin::internal::release;

namespace {

// The first index of first .. first + count - 1 that lies outside 0 .. size - 1, or `first` when
// none does.
int firstOutside(int first, int count, int size) {
  if (first < 0 || first >= size || count <= size - first) return first;
  return size;
}

// What both sides of a copy have in rows and columns, and one side's strides.
struct Shape {
  std::ptrdiff_t rows;
  std::ptrdiff_t cols;
  std::ptrdiff_t rowStride;
  std::ptrdiff_t colStride;
};

// `count` lines of `length` elements: `step` from one element of a line to the next, `line` from
// line to line.
template <class T>
struct Lines {
  T* data;
  std::ptrdiff_t step;
  std::ptrdiff_t line;
  std::ptrdiff_t length;
  std::ptrdiff_t count;
};

template <class T>
Lines<T> rowsAsLines(T* data, const Shape& s) {
  return {data, s.colStride, s.rowStride, s.cols, s.rows};
}

template <class T>
Lines<T> columnsAsLines(T* data, const Shape& s) {
  return {data, s.rowStride, s.colStride, s.rows, s.cols};
}

// The addresses from the first cell up to the end of the last one.
struct Range {
  std::uintptr_t first;
  std::uintptr_t end;
};

template <class T>
Range rangeOf(const Lines<T>& lines) {
  const std::ptrdiff_t along = (lines.length - 1) * lines.step;
  const std::ptrdiff_t across = (lines.count - 1) * lines.line;
  const std::ptrdiff_t low =
      std::min<std::ptrdiff_t>(along, 0) + std::min<std::ptrdiff_t>(across, 0);
  const std::ptrdiff_t high = along + across - low;
  return {reinterpret_cast<std::uintptr_t>(lines.data + low),
          reinterpret_cast<std::uintptr_t>(lines.data + high + 1)};
}

// Whether the outcome may depend on the order in which elements are copied: where several lines
// share cells, or are read from cells that are written to.
template <class T, class U>
bool orderMatters(const Lines<T>& to, const Lines<const U>& from) {
  if (to.length <= 1 || to.count <= 1) return false;  // one line: there is but one order
  if (std::abs(to.line) < std::abs(to.step) * to.length) return true;
  const Range written = rangeOf(to);
  const Range read = rangeOf(from);
  return written.first < read.end && read.first < written.end;
}

// Copies line after line, and in each the elements in order, `tile` elements of every line at a
// time.
template <class T, class U>
void copyLines(const Lines<T>& to, const Lines<const U>& from, std::ptrdiff_t tile) {
  const bool alongBoth = to.step == 1 && from.step == 1;
  for (std::ptrdiff_t first = 0; first < to.length; first += tile) {
    const std::ptrdiff_t end = std::min(first + tile, to.length);
    for (std::ptrdiff_t j = 0; j < to.count; ++j) {
      T* const target = to.data + j * to.line;
      const U* const source = from.data + j * from.line;
      if (alongBoth) {
        for (std::ptrdiff_t i = first; i < end; ++i) target[i] = static_cast<T>(source[i]);
      } else {
        for (std::ptrdiff_t i = first; i < end; ++i) {
          target[i * to.step] = static_cast<T>(source[i * from.step]);
        }
      }
    }
  }
}

// Row after row, and in each row the columns in order. Where no other order can be told from it,
// the lines are the destination's, in tiles: where the two sides run crosswise, the lines that a
// tile touches stay in the cache.
template <class T, class U>
void copyElements(T* to, const Shape& toShape, const U* from, const Shape& fromShape) {
  const bool byColumns = std::abs(toShape.rowStride) <= std::abs(toShape.colStride);
  const Lines<T> target = byColumns ? columnsAsLines(to, toShape) : rowsAsLines(to, toShape);
  const Lines<const U> source =
      byColumns ? columnsAsLines(from, fromShape) : rowsAsLines(from, fromShape);
  if (orderMatters(target, source)) {
    copyLines(rowsAsLines(to, toShape), rowsAsLines(from, fromShape), toShape.cols);
    return;
  }
  const bool alongBoth = target.step == 1 && source.step == 1;
  copyLines(target, source, alongBoth ? std::max<std::ptrdiff_t>(target.length, 1) : 16);
}

}  // namespace

template <class T>
MGenMatrix<T>::MGenMatrix(int rows, int cols, Layout layout) {
  if (rows < 0 || cols < 0) {
    MMatrixError::err("MVector length %d must be nonnegative", rows < 0 ? rows : cols);
    return;
  }
  buffer = newBuffer<T>(std::int64_t{rows} * cols);
  data = buffer;
  this->rows = rows;
  this->cols = cols;
  rowStride = layout == RowMajor ? cols : 1;
  colStride = layout == RowMajor ? 1 : rows;
}

template <class T>
MGenMatrix<T>::MGenMatrix(const MGenMatrix& other) noexcept
    : buffer(other.buffer),
      rows(other.rows),
      cols(other.cols),
      rowStride(other.rowStride),
      colStride(other.colStride),
      data(other.data) {
  acquire(buffer);
}

template <class T>
MGenMatrix<T>& MGenMatrix<T>::operator=(const MGenMatrix& other) noexcept {
  acquire(other.buffer);
  T* const shared = other.buffer;  // `other` may be this matrix
  release(buffer);
  buffer = shared;
  rows = other.rows;
  cols = other.cols;
  rowStride = other.rowStride;
  colStride = other.colStride;
  data = other.data;
  return *this;
}

template <class T>
MGenMatrix<T>::~MGenMatrix() {
  release(buffer);
}

template <class T>
MGenMatrix<T> MGenMatrix<T>::copy(Layout layout) const {
  MGenMatrix result(rows, cols, layout);
  result.set(*this);
  return result;
}

template <class T>
template <class U>
MGenMatrix<T>& MGenMatrix<T>::set(const MGenMatrix<U>& source) {
  const void* const self = this;
  if (self == &source) return *this;
  if (rows != source.rows) {
    MMatrixError::err("MMatrix row mismatch %d != %d", rows, source.rows);
  }
  if (cols != source.cols) {
    MMatrixError::err("MMatrix col mismatch %d != %d", cols, source.cols);
  }
  const void* const sourceBuffer = source.buffer;
  const bool overlap = buffer != nullptr && buffer == sourceBuffer;
  const MGenMatrix<U> from = overlap ? source.copy(MGenMatrix<U>::ColumnMajor) : source;
  const int rowsToCopy = std::min(rows, from.rows);
  const int colsToCopy = std::min(cols, from.cols);
  copyElements<T, U>(data, {rowsToCopy, colsToCopy, rowStride, colStride}, from.data,
                     {rowsToCopy, colsToCopy, from.rowStride, from.colStride});
  return *this;
}

template <class T>
void MGenMatrix<T>::resize(int rows, int cols, Layout layout) {
  const bool columnMajor = rowStride == 1 && colStride == rows;
  const bool rowMajor = colStride == 1 && rowStride == cols;
  const bool hasLayout =
      layout == ColumnMajor ? columnMajor : (layout == RowMajor ? rowMajor : true);
  if (rows == this->rows && cols == this->cols && hasLayout) return;
  MGenMatrix result(rows, cols, layout);
  const int rowsToKeep = std::min(result.rows, this->rows);
  const int colsToKeep = std::min(result.cols, this->cols);
  if (rowsToKeep > 0 && colsToKeep > 0) {
    result.view(0, 0, rowsToKeep, colsToKeep).set(view(0, 0, rowsToKeep, colsToKeep));
  }
  *this = result;
}

template <class T>
MGenMatrix<T> MGenMatrix<T>::view(int row, int col, int rowsInView, int colsInView) const {
  if (rowsInView < 0 || colsInView < 0) {
    MMatrixError::err("MVector length %d must be nonnegative",
                      rowsInView < 0 ? rowsInView : colsInView);
    return MGenMatrix();
  }
  MGenMatrix result(*this);
  result.rows = rowsInView;
  result.cols = colsInView;
  if (rowsInView == 0 || colsInView == 0) return result;
  if (!checkColumn(firstOutside(col, colsInView, cols)) ||
      !checkRow(firstOutside(row, rowsInView, rows))) {
    return MGenMatrix();
  }
  result.data = data + offset(row, col);
  return result;
}

template <class T>
MGenVector<T> MGenMatrix<T>::row(int i) const {
  if (!checkRow(i)) return MGenVector<T>();
  return MGenVector<T>(buffer, cols, colStride, cols == 0 ? data : data + offset(i, 0));
}

template <class T>
MGenVector<T> MGenMatrix<T>::column(int j) const {
  if (!checkColumn(j)) return MGenVector<T>();
  return MGenVector<T>(buffer, rows, rowStride, rows == 0 ? data : data + offset(0, j));
}

template <class T>
bool MGenMatrix<T>::ownsBuffer() const noexcept {
  return cornerpin::internal::holderCount(buffer) == 1;
}

template class MGenMatrix<float>;
template class MGenMatrix<double>;
template class MGenMatrix<int>;
template class MGenMatrix<char*>;

#define CORNERPIN_INSTANTIATE_SET(T)                                     \
  template MGenMatrix<T>& MGenMatrix<T>::set(const MGenMatrix<float>&);  \
  template MGenMatrix<T>& MGenMatrix<T>::set(const MGenMatrix<double>&); \
  template MGenMatrix<T>& MGenMatrix<T>::set(const MGenMatrix<int>&)

CORNERPIN_INSTANTIATE_SET(float);
CORNERPIN_INSTANTIATE_SET(double);
CORNERPIN_INSTANTIATE_SET(int);
template MGenMatrix<char*>& MGenMatrix<char*>::set(const MGenMatrix<char*>&);
