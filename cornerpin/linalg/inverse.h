// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_LINALG_INVERSE_H
#define CORNERPIN_LINALG_INVERSE_H

/// \file
/// Inverse and determinant by LU factorisation.

#include "cornerpin/export.h"
#include "cornerpin/foundation/matrix.h"

/// Inverts a square matrix by LU factorisation with partial pivoting (LAPACK sgetrf, sgetri).
///
/// \param a   n x n, any layout and strides. Left unchanged.
/// \return    n x n, ColumnMajor, in a buffer of its own.
///
/// Reports through MMatrixError::err "inverse: singular matrix" on an exactly zero pivot, and the
/// LAPACK routine's name when that routine refuses its arguments: "sgetrf" for a matrix without
/// rows, "sgetri" for more columns than rows and for rows without columns. A refused routine is
/// not called, so LAPACK prints nothing and the process lives. With a handler installed the
/// remaining steps are taken on what the factorisation left.
///
/// More rows than columns (m x n, m > n) is not refused. The result is m x n: on top the n x n
/// inverse of the factorised top block, with its columns interchanged as the pivots say (an
/// interchange with a column beyond n brings in zeros), below it the factorisation's multipliers.
///
/// Accuracy: norm1(I - X*a) <= 30 * n * eps * norm1(X) * norm1(a), as tested.
/// Cost: one copy of a, n pivots, a work array unless n is small, about 2n^3 operations. More rows
/// than columns take two to three copies.
CORNERPIN_API MGenMatrix<float> inverse(const MGenMatrix<float>& a);

/// The same in double precision (LAPACK dgetrf, dgetri), with "dgetrf" and "dgetri" as names.
CORNERPIN_API MGenMatrix<double> inverse(const MGenMatrix<double>& a);

/// Determinant from the same factorisation: the product of U's diagonal times (-1)^n.
///
/// Row exchanges do not enter, so the 2 x 2 identity gives 1 and the 3 x 3 identity -1. Without
/// columns the result is 1. Reports "inverse: singular matrix" on an exactly zero pivot, so
/// singular input is never returned as 0; "dgetrf" for columns without rows; and "MMatrix row %d
/// out of range 0..%d" for every column beyond the rows. With a handler installed the product is
/// that of the diagonal that is there.
CORNERPIN_API double determinant(const MGenMatrix<double>& a);

#endif
