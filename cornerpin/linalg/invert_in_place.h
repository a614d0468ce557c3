// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_LINALG_INVERT_IN_PLACE_H
#define CORNERPIN_LINALG_INVERT_IN_PLACE_H

#include "cornerpin/foundation/matrix.h"
#include "cornerpin/foundation/vector.h"

namespace cornerpin::internal {

// Private. Replaces `a`, square, ColumnMajor and contiguous, by its inverse: the same bits and
// reports as `inverse`. `pivots` and `work` are replaced when they are too short, so that many
// inversions share one allocation. False when something was reported, and a handler returned.
bool invertInPlace(MGenMatrix<float>& a, MGenVector<int>& pivots, MGenVector<float>& work);

}  // namespace cornerpin::internal

#endif
