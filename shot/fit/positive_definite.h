// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FIT_POSITIVE_DEFINITE_H
#define SHOT_FIT_POSITIVE_DEFINITE_H

#include "shot/fit/lapack.h"

namespace cornerpin {

/// Inverts a symmetric positive definite matrix, of which the upper triangle is read and both are
/// written. False when a pivot of its elimination is not above 0; the rest then means nothing.
/// \param determinant  gets the matrix's
bool invertPositiveDefinite(SquareMatrix<8>& matrix, double* determinant = nullptr);

/// False too where no digits are left of the inverse: a parameter may vary 1e12 times as much
/// beside the others as alone.
bool invertDetermined(SquareMatrix<8>& matrix, double* determinant = nullptr);

}  // namespace cornerpin

#endif
