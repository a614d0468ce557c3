// SPDX-License-Identifier: BSD-3-Clause
#ifndef PYTHON_SRC_ARRAYS_H
#define PYTHON_SRC_ARRAYS_H

#include <cornerpin/foundation/matrix.h>
#include <cornerpin/shot.h>
#include <pybind11/numpy.h>

#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <utility>
#include <vector>

/// Between NumPy's arrays and those of the libraries. Those that come in are looked at where they
/// are, by their strides; those that go out own their memory.
namespace cornerpin::python {

/// How many elements it is from one to the next in dimension d.
template <class T>
std::ptrdiff_t strideOf(const pybind11::array& array, pybind11::ssize_t d) {
  return array.strides(d) / static_cast<std::ptrdiff_t>(sizeof(T));
}

/// The first element; throws `std::invalid_argument` where elements are no T.
template <class T>
const T* elementsOf(const pybind11::array& array) {
  if (!pybind11::isinstance<pybind11::array_t<T>>(array)) {
    throw std::invalid_argument("an array has elements of another type than is wanted");
  }
  return static_cast<const T*>(array.data());
}

/// A view of an array of two dimensions.
template <class T>
MGenMatrix<T> matrixOn(const pybind11::array& array) {
  MGenMatrix<T> matrix;
  matrix.data = const_cast<T*>(elementsOf<T>(array));
  matrix.rows = static_cast<int>(array.shape(0));
  matrix.cols = static_cast<int>(array.shape(1));
  matrix.rowStride = static_cast<int>(strideOf<T>(array, 0));
  matrix.colStride = static_cast<int>(strideOf<T>(array, 1));
  return matrix;
}

/// Packed by rows, whatever the strides of the matrix.
template <class T>
pybind11::array_t<T> arrayOf(const MGenMatrix<T>& matrix) {
  pybind11::array_t<T> array({matrix.rows, matrix.cols});
  T* to = array.mutable_data();
  for (int i = 0; i < matrix.rows; ++i) {
    for (int j = 0; j < matrix.cols; ++j) *to++ = matrix(i, j);
  }
  return array;
}

/// The numbers in the given shape.
template <class T>
pybind11::array_t<T> arrayOf(const std::vector<T>& numbers, std::vector<pybind11::ssize_t> shape) {
  pybind11::array_t<T> array(std::move(shape));
  std::copy(numbers.begin(), numbers.end(), array.mutable_data());
  return array;
}

}  // namespace cornerpin::python

#endif
