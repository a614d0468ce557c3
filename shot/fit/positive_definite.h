// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FIT_POSITIVE_DEFINITE_H
#define SHOT_FIT_POSITIVE_DEFINITE_H

#include "shot/fit/lapack.h"

namespace cornerpin {

/// Inverts a symmetric positive definite matrix, of which the upper triangle is read and both are
/// written. False when a pivot of its elimination is not above 0; the rest then means nothing.
bool invertPositiveDefinite(SquareMatrix<8>& matrix);

}  // namespace cornerpin

#endif
