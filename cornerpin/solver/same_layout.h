// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_SOLVER_SAME_LAYOUT_H
#define CORNERPIN_SOLVER_SAME_LAYOUT_H

#include "cornerpin/foundation/matrix.h"

namespace cornerpin::internal {

// Private. Resizes within the present layout. A matrix whose column stride is 1 counts as
// row-major, so an empty one becomes row-major.
inline void resizeKeepingLayout(MGenMatrix<float>& m, int rows, int cols) {
  m.resize(rows, cols,
           m.colStride == 1 ? MGenMatrix<float>::RowMajor : MGenMatrix<float>::ColumnMajor);
}

}  // namespace cornerpin::internal

#endif
