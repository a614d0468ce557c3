// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/foundation/norm.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "cornerpin/foundation/kernels/sum_squares.h"

namespace {

template <class T>
T square(T x) {
  return x * x;
}

// The squares of 0 to 8 elements. The grouping belongs to the result: neighbours, then pairs of
// pairs, with the odd element joining last.
template <class T>
T sumOfUpToEight(const T* p, int n, std::ptrdiff_t stride) {
  const auto q = [p, stride](std::ptrdiff_t i) { return square(p[i * stride]); };
  switch (n) {
    case 1:
      return q(0);
    case 2:
      return q(0) + q(1);
    case 3:
      return (q(0) + q(1)) + q(2);
    case 4:
      return (q(0) + q(1)) + (q(2) + q(3));
    case 5:
      return ((q(0) + q(1)) + (q(2) + q(3))) + q(4);
    case 6:
      return ((q(0) + q(1)) + (q(2) + q(3))) + (q(4) + q(5));
    case 7:
      return ((q(0) + q(1)) + (q(2) + q(3))) + ((q(4) + q(5)) + q(6));
    case 8:
      return ((q(0) + q(1)) + (q(2) + q(3))) + ((q(4) + q(5)) + (q(6) + q(7)));
    default:
      return T{0};
  }
}

int largestPowerOfTwoNotAbove(int n) {
  unsigned bits = static_cast<unsigned>(n);
  for (const unsigned shift : {1u, 2u, 4u, 8u, 16u}) bits |= bits >> shift;
  return static_cast<int>(bits & ~(bits >> 1));
}

// Adding one to the exponent carries into the sign bit where it is that of infinity and NaN.
std::uint64_t exponentCarry(const double& element) {
  constexpr std::uint64_t exponent = 0x7ff0000000000000;
  constexpr std::uint64_t exponentOne = 0x0010000000000000;
  std::uint64_t bits;
  std::memcpy(&bits, &element, sizeof bits);
  return (bits & exponent) + exponentOne;
}

// Integers alone and no early exit: compilers turn the loop into vector instructions.
bool allFinite(const double* p, int n, std::ptrdiff_t stride) {
  std::uint64_t carries = 0;
  if (stride == 1) {
    for (std::ptrdiff_t i = 0; i < n; ++i) carries |= exponentCarry(p[i]);
  } else {
    for (std::ptrdiff_t i = 0; i < n; ++i) carries |= exponentCarry(p[i * stride]);
  }
  return carries >> 63 == 0;
}

}  // namespace

template <class T>
T _vector_norm2_2(const T* p, int n) {
  return cornerpin::kernels::sumSquares()(p, n);
}

template <class T>
T _vector_norm2(const T* p, int n) {
  if (n <= 8) return sumOfUpToEight(p, n, 1);
  const int k = largestPowerOfTwoNotAbove(n);
  const T leading = _vector_norm2_2(p, k);
  return k < n ? leading + _vector_norm2(p + k, n - k) : leading;
}

template <class T>
T _vector_norm2(const T* p, int n, int stride) {
  if (n <= 8) return sumOfUpToEight(p, n, stride);
  const int k = largestPowerOfTwoNotAbove(n);
  // Contiguous whatever the stride; only the tail steps by it.
  const T leading = _vector_norm2_2(p, k);
  if (k == n) return leading;
  return leading + _vector_norm2(p + static_cast<std::ptrdiff_t>(k) * stride, n - k, stride);
}

template float _vector_norm2(const float* p, int n);
template float _vector_norm2(const float* p, int n, int stride);
template float _vector_norm2_2(const float* p, int n);

bool finite(const MGenMatrix<double>& m) {
  // Along the shorter stride; the order of the tests does not show.
  const bool byRows = m.colStride <= m.rowStride;
  const int lines = byRows ? m.rows : m.cols;
  const int length = byRows ? m.cols : m.rows;
  const std::ptrdiff_t line = byRows ? m.rowStride : m.colStride;
  const std::ptrdiff_t step = byRows ? m.colStride : m.rowStride;
  for (std::ptrdiff_t i = 0; length > 0 && i < lines; ++i) {
    if (!allFinite(m.data + i * line, length, step)) return false;
  }
  return true;
}

bool finite(const MGenVector<double>& v) { return allFinite(v.data, v.length, v.stride); }
