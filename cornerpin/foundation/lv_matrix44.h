// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_FOUNDATION_LV_MATRIX44_H
#define CORNERPIN_FOUNDATION_LV_MATRIX44_H

#include "cornerpin/export.h"
#include "cornerpin/foundation/lv_quat.h"
#include "cornerpin/foundation/lv_vector.h"

/// A 4 x 4 matrix that acts on points as columns: the translation is column 3, the projective row
/// is row 3. Stored row by row. Built for `double` and `MDeriv<double>`.
///
/// A plain value without storage of its own. Nothing is reported: a point on the plane w = 0 and
/// a zero quaternion give infinities or NaNs.
template <class T>
class CORNERPIN_API LvMatrix44Tmpl {
 public:
  /// The identity.
  LvMatrix44Tmpl();

  /// Element (row, col), each 0 .. 3, which is not checked.
  T& operator()(int row, int col) { return elements_[4 * row + col]; }
  const T& operator()(int row, int col) const { return elements_[4 * row + col]; }

  /// Replaces this matrix A by A * b: a point then goes through b first.
  ///
  /// Each element is summed from column 0 to column 3. The rows are replaced one after the other,
  /// so b must be another matrix: `a.rightMult(a)` is not a * a, because its later rows are
  /// multiplied by rows that are already replaced.
  LvMatrix44Tmpl& rightMult(const LvMatrix44Tmpl& b);

  /// The point `in` through this matrix, divided by w. `in` and `out` may be the same.
  ///
  /// A `double` matrix also takes points of derivative numbers.
  template <class U>
  void transform(const LvVector3<U>& in, LvVector3<U>& out) const;
  /// The same for the point (x, y, 0) of the plane: column 2 and row 2 do not enter.
  template <class U>
  void transform(const LvVector2<U>& in, LvVector2<U>& out) const;
  /// The product with a homogeneous point, not divided. `in` and `out` may be the same.
  template <class U>
  void transform(const LvVector4<U>& in, LvVector4<U>& out) const;

  /// Derivative numbers become constants.
  void setIdentity();

  /// Becomes the rotation by q, right-handed. The length of q is divided out; a zero q is not
  /// checked and gives NaNs.
  void setRotationFromQuaternion(const LvQuat<T>& q);

  /// Replaces this matrix A by R * A with R the rotation by q: a point is rotated last.
  void leftRotate(const LvQuat<T>& q);

 private:
  T elements_[16]{};
};

extern template class LvMatrix44Tmpl<double>;

#endif
