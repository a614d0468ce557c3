// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_FOUNDATION_LV_QUAT_H
#define CORNERPIN_FOUNDATION_LV_QUAT_H

#include <iosfwd>

#include "cornerpin/export.h"
#include "cornerpin/foundation/lv_vector.h"

/// A quaternion: a scalar part w and a vector part (x, y, z). The rotation by an angle about a
/// unit axis is (cos(angle / 2), sin(angle / 2) * axis). Built for `double` and `MDeriv<double>`.
///
/// A plain value without storage of its own. Nothing is reported: a zero divisor gives infinities
/// or NaNs.
template <class T>
class CORNERPIN_API LvQuat {
 public:
  /// The rotation by nothing: (1, 0, 0, 0).
  LvQuat() : scalar_(1.0) {}
  LvQuat(const T& w, const T& x, const T& y, const T& z) : scalar_(w), vector_(x, y, z) {}
  LvQuat(const T& w, const LvVector3<T>& vector) : scalar_(w), vector_(vector) {}

  /// The stored scalar part.
  T& scalar() { return scalar_; }
  const T& scalar() const { return scalar_; }
  /// The stored vector part.
  LvVector3<T>& vector() { return vector_; }
  const LvVector3<T>& vector() const { return vector_; }

  /// Replaces this quaternion p by the Hamilton product p * o, the rotation by o followed by that
  /// by p.
  ///
  /// `q *= q` leaves q as it is: it does not square. Multiply by a copy for that.
  LvQuat& operator*=(const LvQuat& o);

  /// Becomes the rotation about `axis` by `angle` in radians, counter-clockwise seen against the
  /// axis. The axis is normalised here; a zero axis is not checked and gives NaNs.
  LvQuat& setAxisAngle(const LvVector3<T>& axis, T angle);

 private:
  T scalar_;
  LvVector3<T> vector_;
};

extern template class LvQuat<double>;

/// Writes "(w x y z)" with the stream's formatting: the identity rotation is (1 0 0 0).
CORNERPIN_API std::ostream& operator<<(std::ostream& os, const LvQuat<double>& q);

namespace LvMath {

/// True when a and b, or a and -b, are the same rotation: all four differences, or all four sums,
/// are below 1e-7 in magnitude. The tolerance is absolute and belongs to unit quaternions. False
/// with any NaN or infinite element.
CORNERPIN_API bool equal(const LvQuat<double>& a, const LvQuat<double>& b);

}  // namespace LvMath

#endif
