// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_FOUNDATION_LV_VECTOR_H
#define CORNERPIN_FOUNDATION_LV_VECTOR_H

#include "cornerpin/export.h"

/// \file
/// Vectors of two, three and four components: plain values without storage of their own. Default
/// construction gives zeros. Built for `double` and `MDeriv<double>`; a `LvVector2` also for
/// `float`.

/// A point or direction in the plane.
template <class T>
struct CORNERPIN_API LvVector2 {
  LvVector2() = default;
  LvVector2(const T& x, const T& y) : _x(x), _y(y) {}

  T _x{};
  T _y{};
};

/// A point or direction in space.
template <class T>
struct CORNERPIN_API LvVector3 {
  LvVector3() = default;
  LvVector3(const T& x, const T& y, const T& z) : _x(x), _y(y), _z(z) {}

  T _x{};
  T _y{};
  T _z{};
};

/// A point in homogeneous coordinates.
template <class T>
struct CORNERPIN_API LvVector4 {
  LvVector4() = default;
  LvVector4(const T& x, const T& y, const T& z, const T& w) : _x(x), _y(y), _z(z), _w(w) {}

  /// The point in space: x, y and z, each times the reciprocal r = 1 / w. That is two roundings,
  /// so the last bit may differ from x / w.
  ///
  /// w is not checked: 0 gives infinities or NaNs.
  LvVector3<T> reduce() const;

  T _x{};
  T _y{};
  T _z{};
  T _w{};  ///< homogeneous weight
};

extern template struct LvVector2<float>;
extern template struct LvVector2<double>;
extern template struct LvVector3<double>;
extern template struct LvVector4<double>;

#endif
