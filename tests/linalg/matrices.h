// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_LINALG_MATRICES_H
#define TESTS_LINALG_MATRICES_H

#include <cstddef>
#include <random>
#include <utility>
#include <vector>

#include "cornerpin/foundation/matrix.h"

// Matrices that are easy to write down, to store in every way and to compare.
namespace matrices {

using Rows = std::vector<std::vector<double>>;

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

inline MGenMatrix<double> doubles(const Rows& rows) {
  return matrixOf<double>(rows, MGenMatrix<double>::RowMajor);
}

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

}  // namespace matrices

#endif
