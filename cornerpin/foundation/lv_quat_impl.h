// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_FOUNDATION_LV_QUAT_IMPL_H
#define CORNERPIN_FOUNDATION_LV_QUAT_IMPL_H

#include <cmath>

#include "cornerpin/foundation/lv_quat.h"

// Private: the arithmetic of the quaternions, compiled inside the library only. The order of the
// operations belongs to the results; derivative numbers follow the same formulas.

template <class T>
LvQuat<T>& LvQuat<T>::operator*=(const LvQuat& o) {
  if (this == &o) return *this;  // a product with itself changes nothing
  const T w = scalar_;
  const LvVector3<T> p = vector_;
  const T& ow = o.scalar_;
  const LvVector3<T>& q = o.vector_;
  scalar_ = w * ow - (p._x * q._x + p._y * q._y + p._z * q._z);
  // The two scaled vectors first, then the cross product p x q.
  vector_._x = w * q._x + ow * p._x + (p._y * q._z - p._z * q._y);
  vector_._y = w * q._y + ow * p._y + (p._z * q._x - p._x * q._z);
  vector_._z = w * q._z + ow * p._z + (p._x * q._y - p._y * q._x);
  return *this;
}

template <class T>
LvQuat<T>& LvQuat<T>::setAxisAngle(const LvVector3<T>& axis, T angle) {
  using std::cos;
  using std::sin;
  using std::sqrt;
  const T h = angle / T(2.0);
  const T s = sin(h);
  const T length = sqrt(axis._x * axis._x + axis._y * axis._y + axis._z * axis._z);
  // Divided by the length first, then scaled. `axis` may be this quaternion's own vector part.
  vector_ = LvVector3<T>((axis._x / length) * s, (axis._y / length) * s, (axis._z / length) * s);
  scalar_ = cos(h);
  return *this;
}

#endif
