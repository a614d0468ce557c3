// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_LINALG_SVD_H
#define CORNERPIN_LINALG_SVD_H

#include "cornerpin/export.h"
#include "cornerpin/foundation/matrix.h"
#include "cornerpin/foundation/vector.h"

/// A singular value decomposition A = U * diag(S) * V^T of an m x n matrix, and the solution of a
/// least-squares problem through it. Filled by `_svdCall`. Built for `float` and `double`.
///
/// Copying a record shares its factors. A decomposition of a matrix of the same shape then
/// overwrites them in both, because factors of the right shape are kept and written anew.
template <class T>
struct MSvd {
  MGenVector<T> b;  ///< right-hand side of the last solve, a copy
  MGenMatrix<T> U;  ///< m x n, ColumnMajor: left singular vectors as columns; zero beyond column m
  MGenMatrix<T> V;  ///< n x n, RowMajor: right singular vectors as columns
  MGenVector<T> S;  ///< n singular values, largest first; zero beyond the first m
  MGenVector<T> x;  ///< n: the solution; zero after a decomposition alone
  MGenVector<T> spare;  ///< emptied by every decomposition
  /// A solve leaves out singular values that are not above tolerance * S[0]. A negative one lets
  /// zeros in, which gives infinities or NaNs.
  T tolerance = 0;
  bool ok = false;  ///< the last decomposition converged; unchanged by a rejected input
};

/// Decomposes `a` (LAPACK sgesvd).
///
/// \param a  m x n, any layout and strides. Left unchanged. May be a matrix of the record.
/// \return   `svd.ok`. False when the iteration did not converge; the record then holds what
///           LAPACK left in it.
///
/// Throws `LvIllegalArgumentException` "NaN" or "infinite number" for the first such element,
/// column by column, and `LvException` "sgesvd: bad parameter %d" for an argument that LAPACK
/// refuses: parameter 6 for a matrix without rows, 11 for rows without columns. A refused call is
/// not made, so LAPACK prints nothing and the process lives. Rejected and refused inputs leave
/// zeros in U, V, S and x, shaped for that input.
///
/// Accuracy: norm(A - U * diag(S) * V^T) and the departures of U^T * U and V^T * V from the
/// identity stay within 10 * max(m, n) * eps (relative to S[0] for A), as tested.
/// Cost: one copy of a, one work array of max(10 * max(m, n), 2 * m * n) elements, and the factors
/// where their shape changes.
/// Method: Householder bidiagonalisation and implicit QR iteration (Golub and Reinsch 1970;
/// Demmel and Kahan 1990).
CORNERPIN_API bool _svdCall(MSvd<float>& svd, const MGenMatrix<float>& a);

/// The same in double precision (LAPACK dgesvd), with "dgesvd: bad parameter %d".
CORNERPIN_API bool _svdCall(MSvd<double>& svd, const MGenMatrix<double>& a);

/// Decomposes `a` and solves the least-squares problem a * x = b: `svd.x` is V * diag(w) * U^T * b,
/// with w[i] = 1 / S[i] where S[i] > tolerance * S[0] and 0 elsewhere. That is the shortest of the
/// best solutions. All sums run from left to right in the element type.
///
/// \param b  m elements. May be a vector of the record. Fewer are reported by MMatrixError::err as
///           "MVector index %d out of range %d"; with a handler installed the missing terms are
///           left out. Further ones are ignored.
/// \return   as above; when it is false, or an exception passes, x is zero.
CORNERPIN_API bool _svdCall(MSvd<float>& svd, const MGenMatrix<float>& a,
                            const MGenVector<float>& b);

/// The same in double precision.
CORNERPIN_API bool _svdCall(MSvd<double>& svd, const MGenMatrix<double>& a,
                            const MGenVector<double>& b);

#endif
