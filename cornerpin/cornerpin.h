// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_CORNERPIN_H
#define CORNERPIN_CORNERPIN_H

/// \file
/// Every public header of the library.

#include "cornerpin/deriv/deriv.h"
#include "cornerpin/deriv/fixed_size.h"
#include "cornerpin/deriv/projection_jacobian.h"
#include "cornerpin/export.h"
#include "cornerpin/foundation/arithmetic.h"
#include "cornerpin/foundation/array.h"
#include "cornerpin/foundation/exception.h"
#include "cornerpin/foundation/lv_matrix44.h"
#include "cornerpin/foundation/lv_quat.h"
#include "cornerpin/foundation/lv_string.h"
#include "cornerpin/foundation/lv_vector.h"
#include "cornerpin/foundation/matrix.h"
#include "cornerpin/foundation/norm.h"
#include "cornerpin/foundation/vector.h"
#include "cornerpin/geometry/MGeometry.h"
#include "cornerpin/geometry/matrix_interpolator.h"
#include "cornerpin/linalg/inverse.h"
#include "cornerpin/linalg/svd.h"
#include "cornerpin/solver/lm_solver.h"
#include "cornerpin/solver/matchmove.h"
#include "cornerpin/solver/matchmove_problem.h"

#endif
