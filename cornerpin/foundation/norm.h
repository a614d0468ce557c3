// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_FOUNDATION_NORM_H
#define CORNERPIN_FOUNDATION_NORM_H

/// \file
/// Sums of squares with a fixed order of additions, and a test for infinities and NaNs.

#include "cornerpin/export.h"
#include "cornerpin/foundation/matrix.h"
#include "cornerpin/foundation/vector.h"

/// Sum of squares of n contiguous elements, in single precision; 0 for n <= 0. The square root is
/// the Euclidean norm. Built for `float`.
///
/// Summed in pairs: the largest power of two of leading elements as a balanced tree, then the
/// tail likewise. Error: about log2(n) roundings rather than n.
///
/// Method: pairwise summation (N. J. Higham, "The accuracy of floating point summation", SIAM J.
/// Sci. Comput. 14, 1993).
template <class T>
T _vector_norm2(const T* p, int n);

/// The same over n elements that lie `stride` apart, exact to that description for n <= 8.
///
/// For n > 8 only the tail steps by the stride: with k the largest power of two not above n, the
/// result is the sum of squares of the k consecutive cells p[0] .. p[k - 1], plus that of the
/// n - k elements p[k * stride], p[(k + 1) * stride], ... treated the same way. So 9 elements 2
/// apart give the squares of p[0] .. p[7] and p[16].
template <class T>
T _vector_norm2(const T* p, int n, int stride);

/// Sum of squares of n contiguous elements as a balanced tree; n is a power of two, at least 4.
template <class T>
T _vector_norm2_2(const T* p, int n);

extern template CORNERPIN_API float _vector_norm2(const float* p, int n);
extern template CORNERPIN_API float _vector_norm2(const float* p, int n, int stride);
extern template CORNERPIN_API float _vector_norm2_2(const float* p, int n);

/// True when no element is infinite or NaN; so for an empty matrix.
CORNERPIN_API bool finite(const MGenMatrix<double>& m);
/// True when no element is infinite or NaN; so for an empty vector.
CORNERPIN_API bool finite(const MGenVector<double>& v);

#endif
