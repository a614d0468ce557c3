// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_FOUNDATION_VECTOR_H
#define CORNERPIN_FOUNDATION_VECTOR_H

/// \file
/// The vector that shares its storage.

#include <cstddef>

#include "cornerpin/export.h"
#include "cornerpin/foundation/exception.h"

template <class T>
class CORNERPIN_API MGenMatrix;

/// A strided view on a shared, reference-counted element buffer. Built for `float`, `double`,
/// `int` and `char*`; element i is `data[i * stride]`.
///
/// Copying and assigning share the buffer: writes through either vector are seen by both, and
/// there is no copy-on-write. `copy` duplicates. Reference counts are plain integers, so vectors
/// on one buffer must not be copied or released from two threads at once.
///
/// Errors go through `MMatrixError::err`. With a handler installed the call carries on: a bad
/// index then reads or writes outside the buffer, a bad length gives an empty vector, a bad view
/// an empty one, and `set` copies the elements that both vectors have.
///
/// A vector of more than 2^32 - 1 bytes is refused with `std::bad_alloc` before any allocation.
template <class T>
class CORNERPIN_API MGenVector {
 public:
  /// No elements and no buffer.
  MGenVector() noexcept = default;
  /// n zeros. Reports "MVector length %d must be nonnegative" for a negative n.
  explicit MGenVector(int n);
  /// \{
  /// Shares the other vector's buffer, its length and its stride.
  MGenVector(const MGenVector& other) noexcept;
  MGenVector& operator=(const MGenVector& other) noexcept;
  /// \}
  ~MGenVector();

  /// A duplicate in a buffer of its own, stride 1.
  MGenVector copy() const;

  /// Converts and copies the elements of `source` into this vector's storage, where every other
  /// holder sees them. When both share a buffer the result is that of a snapshot of the source.
  /// Reports "MVector length mismatch %d != %d".
  template <class U>
  MGenVector& set(const MGenVector<U>& source);

  /// Moves to a new buffer of n elements with stride 1 that keeps the first elements and is zero
  /// behind them. Does nothing when the length is n already, whatever the stride. Reports a
  /// negative n as the constructor does.
  void resize(int n);

  /// \{
  /// Element i, from 0. Reports "MVector index %d out of range %d" with the index and the last
  /// valid index.
  T& operator[](int i) { return data[offset(i)]; }
  const T& operator[](int i) const { return data[offset(i)]; }
  /// \}

  /// The elements first, first + step, ... (count of them), on the same buffer; the step may be
  /// negative or 0. Reports the index error for the first index that lies outside.
  MGenVector view(int first, int count, int step = 1) const;

  /// True when there is a buffer and this vector is its only holder.
  bool ownsBuffer() const noexcept;

  /// For `float`: multiplies element i by w[i]. Lengths are not compared: w must be at least as
  /// long.
  MGenVector& operator*=(const MGenVector& w);
  /// For `float`: divides every element by s: a true division each, not a multiplication by 1 / s.
  MGenVector& operator/=(T s);

  T* buffer = nullptr;  ///< first element of the shared buffer, null when there are none
  int length = 0;       ///< number of elements
  int stride = 1;       ///< distance between consecutive elements, in elements
  T* data = nullptr;    ///< element 0

 private:
  friend class MGenMatrix<T>;

  // Shares `sharedBuffer`.
  MGenVector(T* sharedBuffer, int length, int stride, T* data) noexcept;

  std::ptrdiff_t offset(int i) const {
    if (i < 0 || i >= length) {
      MMatrixError::err("MVector index %d out of range %d", i, length - 1);
    }
    return static_cast<std::ptrdiff_t>(i) * stride;
  }
};

/// \cond
template <>
CORNERPIN_API MGenVector<float>& MGenVector<float>::operator*=(const MGenVector<float>& w);
template <>
CORNERPIN_API MGenVector<float>& MGenVector<float>::operator/=(float s);
/// \endcond

extern template class MGenVector<float>;
extern template class MGenVector<double>;
extern template class MGenVector<int>;
extern template class MGenVector<char*>;

#endif
