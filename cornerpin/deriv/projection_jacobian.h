// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_DERIV_PROJECTION_JACOBIAN_H
#define CORNERPIN_DERIV_PROJECTION_JACOBIAN_H

#include "cornerpin/export.h"
#include "cornerpin/foundation/lv_matrix44.h"
#include "cornerpin/foundation/lv_vector.h"

/// How the projected point moves when the point moves: the Jacobian of `m.transform(point)` with
/// its division by w. Built for `double`.
///
/// \param jacobian  overwritten whole: element (i, j) of its upper-left 3 x 3 block is the
///                  derivative of the projected coordinate i with respect to coordinate j, the
///                  rest is that of the identity. May be `m` itself.
///
/// A point on the plane w = 0 gives infinite or NaN derivatives, unreported.
///
/// Accuracy: exact derivatives, not finite differences. Element (i, j) is the product rule over
/// a_i * (1 / w), with a = m * (point, 1) and w its last component, so a zero of the mathematical
/// Jacobian may come out as a rounding error.
/// Cost: one transform over derivative numbers; their arrays, of up to three elements each, are
/// released before it returns.
template <class T>
CORNERPIN_API void projectionJacobian(const LvVector3<T>& point, const LvMatrix44Tmpl<T>& m,
                                      LvMatrix44Tmpl<T>& jacobian);

extern template CORNERPIN_API void projectionJacobian(const LvVector3<double>& point,
                                                      const LvMatrix44Tmpl<double>& m,
                                                      LvMatrix44Tmpl<double>& jacobian);

#endif
