// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_FOUNDATION_LV_MATRIX44_IMPL_H
#define CORNERPIN_FOUNDATION_LV_MATRIX44_IMPL_H

#include <algorithm>

#include "cornerpin/foundation/lv_matrix44.h"

// Private: the arithmetic of the matrices, compiled inside the library only. All sums run from
// left to right, which belongs to the results. The transforms write when all is computed, because
// `out` may be `in`.

template <class T>
LvMatrix44Tmpl<T>::LvMatrix44Tmpl() {
  setIdentity();
}

template <class T>
LvMatrix44Tmpl<T>& LvMatrix44Tmpl<T>::rightMult(const LvMatrix44Tmpl& b) {
  for (int r = 0; r < 4; ++r) {
    T* const row = elements_ + 4 * r;
    T product[4];
    for (int c = 0; c < 4; ++c) {
      product[c] = row[0] * b(0, c) + row[1] * b(1, c) + row[2] * b(2, c) + row[3] * b(3, c);
    }
    std::copy(product, product + 4, row);
  }
  return *this;
}

template <class T>
template <class U>
void LvMatrix44Tmpl<T>::transform(const LvVector3<U>& in, LvVector3<U>& out) const {
  const LvMatrix44Tmpl& m = *this;
  const auto row = [&](int r) {
    return m(r, 0) * in._x + m(r, 1) * in._y + m(r, 2) * in._z + m(r, 3);
  };
  const U w = row(3);
  const U x = row(0) / w;
  const U y = row(1) / w;
  const U z = row(2) / w;
  out._x = x;
  out._y = y;
  out._z = z;
}

template <class T>
template <class U>
void LvMatrix44Tmpl<T>::transform(const LvVector2<U>& in, LvVector2<U>& out) const {
  const LvMatrix44Tmpl& m = *this;
  const auto row = [&](int r) { return m(r, 0) * in._x + m(r, 1) * in._y + m(r, 3); };
  const U w = row(3);
  const U x = row(0) / w;
  const U y = row(1) / w;
  out._x = x;
  out._y = y;
}

template <class T>
template <class U>
void LvMatrix44Tmpl<T>::transform(const LvVector4<U>& in, LvVector4<U>& out) const {
  const LvMatrix44Tmpl& m = *this;
  const auto row = [&](int r) {
    return m(r, 0) * in._x + m(r, 1) * in._y + m(r, 2) * in._z + m(r, 3) * in._w;
  };
  const U x = row(0);
  const U y = row(1);
  const U z = row(2);
  const U w = row(3);
  out._x = x;
  out._y = y;
  out._z = z;
  out._w = w;
}

template <class T>
void LvMatrix44Tmpl<T>::setIdentity() {
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c) (*this)(r, c) = T(r == c ? 1.0 : 0.0);
  }
}

template <class T>
void LvMatrix44Tmpl<T>::setRotationFromQuaternion(const LvQuat<T>& q) {
  const T& w = q.scalar();
  const T& x = q.vector()._x;
  const T& y = q.vector()._y;
  const T& z = q.vector()._z;
  const T one(1.0);
  const T n = w * w + x * x + y * y + z * z;
  const T s = T(2.0) / n;
  const T xs = x * s, ys = y * s, zs = z * s;
  const T wx = w * xs, wy = w * ys, wz = w * zs;
  const T xx = x * xs, xy = x * ys, xz = x * zs;
  const T yy = y * ys, yz = y * zs, zz = z * zs;
  setIdentity();
  (*this)(0, 0) = one - (yy + zz);
  (*this)(0, 1) = xy - wz;
  (*this)(0, 2) = xz + wy;
  (*this)(1, 0) = xy + wz;
  (*this)(1, 1) = one - (xx + zz);
  (*this)(1, 2) = yz - wx;
  (*this)(2, 0) = xz - wy;
  (*this)(2, 1) = yz + wx;
  (*this)(2, 2) = one - (xx + yy);
}

template <class T>
void LvMatrix44Tmpl<T>::leftRotate(const LvQuat<T>& q) {
  LvMatrix44Tmpl rotated;
  rotated.setRotationFromQuaternion(q);
  rotated.rightMult(*this);
  *this = rotated;
}

#endif
