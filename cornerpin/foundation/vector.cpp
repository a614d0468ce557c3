// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/foundation/vector.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>

#include "cornerpin/foundation/shared_buffer.h"

using cornerpin::internal::acquire;
using cornerpin::internal::newBuffer;
using cornerpin::internal::release;

namespace {

// The first of the indices first, first + step, ... (count of them) that lies outside
// 0 .. length - 1, or `first` when none does.
std::int64_t firstOutside(int first, int count, int step, int length) {
  if (first < 0 || first >= length || step == 0) return first;
  const std::int64_t inside =
      step > 0 ? (std::int64_t{length} - 1 - first) / step : first / -std::int64_t{step};
  return count - 1 <= inside ? first : first + (inside + 1) * step;
}

}  // namespace

template <class T>
MGenVector<T>::MGenVector(int n) {
  if (n < 0) {
    MMatrixError::err("MVector length %d must be nonnegative", n);
    return;
  }
  buffer = newBuffer<T>(n);
  data = buffer;
  length = n;
}

template <class T>
MGenVector<T>::MGenVector(T* sharedBuffer, int length, int stride, T* data) noexcept
    : buffer(sharedBuffer), length(length), stride(stride), data(data) {
  acquire(buffer);
}

template <class T>
MGenVector<T>::MGenVector(const MGenVector& other) noexcept
    : MGenVector(other.buffer, other.length, other.stride, other.data) {}

template <class T>
MGenVector<T>& MGenVector<T>::operator=(const MGenVector& other) noexcept {
  acquire(other.buffer);
  T* const shared = other.buffer;  // `other` may be this vector
  release(buffer);
  buffer = shared;
  length = other.length;
  stride = other.stride;
  data = other.data;
  return *this;
}

template <class T>
MGenVector<T>::~MGenVector() {
  release(buffer);
}

template <class T>
MGenVector<T> MGenVector<T>::copy() const {
  MGenVector result(length);
  result.set(*this);
  return result;
}

template <class T>
template <class U>
MGenVector<T>& MGenVector<T>::set(const MGenVector<U>& source) {
  const void* const self = this;
  if (self == &source) return *this;
  if (length != source.length) {
    MMatrixError::err("MVector length mismatch %d != %d", length, source.length);
  }
  const void* const sourceBuffer = source.buffer;
  const bool overlap = buffer != nullptr && buffer == sourceBuffer;
  const MGenVector<U> from = overlap ? source.copy() : source;
  const int count = std::min(length, from.length);
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    data[i * stride] = static_cast<T>(from.data[i * from.stride]);
  }
  return *this;
}

template <class T>
void MGenVector<T>::resize(int n) {
  if (n == length) return;
  MGenVector result(n);
  const int count = std::min(result.length, length);
  if (stride == 1) {
    if (count > 0) std::memcpy(result.data, data, sizeof(T) * static_cast<std::size_t>(count));
  } else {
    for (std::ptrdiff_t i = 0; i < count; ++i) result.data[i] = data[i * stride];
  }
  *this = result;
}

template <class T>
MGenVector<T> MGenVector<T>::view(int first, int count, int step) const {
  if (count < 0) {
    MMatrixError::err("MVector length %d must be nonnegative", count);
    return MGenVector();
  }
  if (count == 0) return MGenVector(buffer, 0, stride, data);
  const std::int64_t outside = firstOutside(first, count, step, length);
  if (outside < 0 || outside >= length) {
    constexpr std::int64_t highest = std::numeric_limits<int>::max();
    MMatrixError::err("MVector index %d out of range %d",
                      static_cast<int>(std::min(outside, highest)), length - 1);
    return MGenVector();
  }
  // One element needs no stride; with more, the product stays inside the buffer and fits.
  const int viewStride = count == 1 ? stride : static_cast<int>(std::int64_t{stride} * step);
  return MGenVector(buffer, count, viewStride, data + static_cast<std::ptrdiff_t>(first) * stride);
}

template <class T>
bool MGenVector<T>::ownsBuffer() const noexcept {
  return cornerpin::internal::hasOneHolder(buffer);
}

template class MGenVector<float>;
template class MGenVector<double>;
template class MGenVector<int>;
template class MGenVector<char*>;

#define CORNERPIN_INSTANTIATE_SET(T)                                     \
  template MGenVector<T>& MGenVector<T>::set(const MGenVector<float>&);  \
  template MGenVector<T>& MGenVector<T>::set(const MGenVector<double>&); \
  template MGenVector<T>& MGenVector<T>::set(const MGenVector<int>&)

CORNERPIN_INSTANTIATE_SET(float);
CORNERPIN_INSTANTIATE_SET(double);
CORNERPIN_INSTANTIATE_SET(int);
template MGenVector<char*>& MGenVector<char*>::set(const MGenVector<char*>&);
