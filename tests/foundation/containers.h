// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_FOUNDATION_CONTAINERS_H
#define TESTS_FOUNDATION_CONTAINERS_H

#include <utility>
#include <vector>

#include "cornerpin/foundation/matrix.h"
#include "cornerpin/foundation/vector.h"

// Vectors and matrices whose elements tell their places.
namespace containers {

template <class T>
MGenVector<T> counting(int n) {
  MGenVector<T> v(n);
  for (int i = 0; i < n; ++i) v[i] = static_cast<T>(i + 1);
  return v;
}

template <class T>
std::vector<T> values(const MGenVector<T>& v) {
  std::vector<T> result;
  for (int i = 0; i < v.length; ++i) result.push_back(v[i]);
  return result;
}

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
inline MGenMatrix<float> transposed(MGenMatrix<float> m) {
  std::swap(m.rows, m.cols);
  std::swap(m.rowStride, m.colStride);
  return m;
}

}  // namespace containers

#endif
