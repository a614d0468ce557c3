// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/deriv/projection_jacobian.h"

#include "cornerpin/deriv/fixed_size.h"

template <class T>
void projectionJacobian(const LvVector3<T>& point, const LvMatrix44Tmpl<T>& m,
                        LvMatrix44Tmpl<T>& jacobian) {
  using Number = MDeriv<T>;
  // Coordinate k is variable k, with the shortest array that holds its 1.
  T seedX[] = {1};
  T seedY[] = {0, 1};
  T seedZ[] = {0, 0, 1};
  LvVector4<Number> v(Number(point._x, seedX, 1, true), Number(point._y, seedY, 2, true),
                      Number(point._z, seedZ, 3, true), Number(T(1)));
  m.transform(v, v);
  const LvVector3<Number> projected = v.reduce();
  const Number* const rows[] = {&projected._x, &projected._y, &projected._z};
  jacobian.setIdentity();
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) jacobian(i, j) = rows[i]->d(j);
  }
}

template void projectionJacobian(const LvVector3<double>& point, const LvMatrix44Tmpl<double>& m,
                                 LvMatrix44Tmpl<double>& jacobian);
