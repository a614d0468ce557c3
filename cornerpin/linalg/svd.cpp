// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/linalg/svd.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "cornerpin/linalg/lapack.h"

namespace {

template <class T>
struct Lapack;

template <>
struct Lapack<float> {
  static constexpr const char* name = "sgesvd";
  static constexpr auto decompose = sgesvd_;
};

template <>
struct Lapack<double> {
  static constexpr const char* name = "dgesvd";
  static constexpr auto decompose = dgesvd_;
};

template <class T>
void setZero(MGenVector<T>& v) {
  for (int i = 0; i < v.length; ++i) v[i] = 0;
}

template <class T>
void setZero(MGenMatrix<T>& m) {
  for (int j = 0; j < m.cols; ++j) {
    for (int i = 0; i < m.rows; ++i) m(i, j) = 0;
  }
}

// Factors that have the right shape stay where they are, and other holders see the zeros.
template <class T>
void reset(MSvd<T>& svd, int m, int n) {
  svd.U.resize(m, n, MGenMatrix<T>::ColumnMajor);
  setZero(svd.U);
  svd.V.resize(n, n, MGenMatrix<T>::RowMajor);
  setZero(svd.V);
  svd.S.resize(n);
  setZero(svd.S);
  svd.x.resize(n);
  setZero(svd.x);
  svd.spare.resize(0);
}

template <class T>
void requireFinite(const MGenMatrix<T>& a) {
  for (int j = 0; j < a.cols; ++j) {
    for (int i = 0; i < a.rows; ++i) {
      if (std::isnan(a(i, j))) throw LvIllegalArgumentException("NaN");
      if (std::isinf(a(i, j))) throw LvIllegalArgumentException("infinite number");
    }
  }
}

// max(10 * max(m, n), 2 * m * n), both modulo 2^32: no matrix that fits its buffer makes the second
// one overflow, and it is enough where the first one does.
int workLength(std::int64_t m, std::int64_t n) {
  return std::max(static_cast<int>(10 * std::max(m, n)), static_cast<int>(2 * m * n));
}

// The position of the first argument that xgesvd refuses, in the order of its checks, or 0. Its own
// refusal would print, and may end the process, so a call that it refuses is not made.
int refusedArgument(int m, int n, int lwork) {
  if (m < 0) return 3;
  if (n < 0) return 4;
  if (m < 1) return 6;   // lda = m is at least max(1, m)
  if (n < 1) return 11;  // ldvt = n is at least 1; ldu = m has passed with lda
  const std::int64_t larger = std::max(m, n);
  const std::int64_t smaller = std::min(m, n);
  if (lwork < std::max(3 * smaller + larger, 5 * smaller)) return 13;
  return 0;
}

// Decomposes the m x n matrix in `copy` (leading dimension m), which is used up.
template <class T>
int decompose(MSvd<T>& svd, MGenMatrix<T>& copy, int m, int n) {
  const int lwork = workLength(m, n);
  MGenVector<T> work(lwork);
  const int refused = refusedArgument(m, n, lwork);
  if (refused != 0) return -refused;
  // LAPACK takes consecutive cells; a vector of the right length may still have a stride.
  const bool consecutive = svd.S.stride == 1;
  MGenVector<T> values = consecutive ? svd.S : svd.S.copy();
  int info = 0;
  // V^T by columns is V by rows, so LAPACK's V^T needs no transposition.
  Lapack<T>::decompose("S", "A", &m, &n, copy.data, &m, values.data, svd.U.data, &m, svd.V.data, &n,
                       work.data, &lwork, &info, 1, 1);
  if (!consecutive) svd.S.set(values);
  return info;
}

template <class T>
bool decompose(MSvd<T>& svd, const MGenMatrix<T>& a) {
  const int m = a.rows;
  const int n = a.cols;
  MGenMatrix<T> copy = a.copy(MGenMatrix<T>::ColumnMajor);
  reset(svd, m, n);
  requireFinite(copy);
  const int info = decompose(svd, copy, m, n);
  svd.ok = info == 0;
  if (info < 0)
    throw LvException(LvString::ssprintf("%s: bad parameter %d", Lapack<T>::name, -info));
  return svd.ok;
}

// Column i of U times b, from left to right.
template <class T>
T columnTimes(const MGenMatrix<T>& U, int i, const MGenVector<T>& b) {
  T sum = 0;
  for (int k = 0; k < U.rows; ++k) {
    if (k >= b.length) {
      MMatrixError::err("MVector index %d out of range %d", k, b.length - 1);
      break;
    }
    sum += U(k, i) * b[k];
  }
  return sum;
}

// Row i of V times w, from left to right.
template <class T>
T rowTimes(const MGenMatrix<T>& V, int i, const MGenVector<T>& w) {
  T sum = 0;
  for (int k = 0; k < V.cols; ++k) sum += V(i, k) * w[k];
  return sum;
}

template <class T>
bool solve(MSvd<T>& svd, const MGenMatrix<T>& a, const MGenVector<T>& b) {
  svd.b = b.copy();
  if (!decompose(svd, a)) return false;
  const int n = svd.S.length;
  T largest = 0;
  for (int i = 0; i < n; ++i) largest = std::max(largest, svd.S[i]);
  const T threshold = largest * svd.tolerance;
  MGenVector<T> w(n);
  for (int i = 0; i < n; ++i) {
    w[i] = svd.S[i] > threshold ? columnTimes(svd.U, i, svd.b) / svd.S[i] : T(0);
  }
  for (int i = 0; i < n; ++i) svd.x[i] = rowTimes(svd.V, i, w);
  return svd.ok;
}

}  // namespace

bool _svdCall(MSvd<float>& svd, const MGenMatrix<float>& a) { return decompose(svd, a); }

bool _svdCall(MSvd<double>& svd, const MGenMatrix<double>& a) { return decompose(svd, a); }

bool _svdCall(MSvd<float>& svd, const MGenMatrix<float>& a, const MGenVector<float>& b) {
  return solve(svd, a, b);
}

bool _svdCall(MSvd<double>& svd, const MGenMatrix<double>& a, const MGenVector<double>& b) {
  return solve(svd, a, b);
}
