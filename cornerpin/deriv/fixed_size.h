// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_DERIV_FIXED_SIZE_H
#define CORNERPIN_DERIV_FIXED_SIZE_H

#include "cornerpin/deriv/deriv.h"
#include "cornerpin/foundation/lv_matrix44.h"
#include "cornerpin/foundation/lv_quat.h"
#include "cornerpin/foundation/lv_vector.h"

/// \file
/// The fixed-size types over derivative numbers: formulas over points, matrices and rotations that
/// carry their derivatives along. A `double` matrix transforms points of derivative numbers as
/// well. Elements own their derivative arrays, so copies are deep.

extern template struct LvVector2<MDeriv<double>>;
extern template struct LvVector3<MDeriv<double>>;
extern template struct LvVector4<MDeriv<double>>;
extern template class LvMatrix44Tmpl<MDeriv<double>>;
extern template class LvQuat<MDeriv<double>>;

#endif
