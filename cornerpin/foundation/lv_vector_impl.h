// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_FOUNDATION_LV_VECTOR_IMPL_H
#define CORNERPIN_FOUNDATION_LV_VECTOR_IMPL_H

#include "cornerpin/foundation/lv_vector.h"

// Private: the arithmetic of the vectors. It is compiled inside the library only, so that its
// rounding does not depend on the flags of the including program.

template <class T>
LvVector3<T> LvVector4<T>::reduce() const {
  const T r = T(1.0) / _w;
  return LvVector3<T>(_x * r, _y * r, _z * r);
}

#endif
