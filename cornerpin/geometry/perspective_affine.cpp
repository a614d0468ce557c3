// SPDX-License-Identifier: BSD-3-Clause
#include <cmath>

#include "cornerpin/deriv/projection_jacobian.h"
#include "cornerpin/geometry/MGeometry.h"

namespace {

using Point = LvVector3<double>;
using Matrix = LvMatrix44Tmpl<double>;

// m * T(-p). A zero component is skipped: its column may hold infinities.
void translateBefore(Matrix& m, const Point& p) {
  const double t[] = {-p._x, -p._y, -p._z};
  for (int k = 0; k < 3; ++k) {
    if (t[k] == 0) continue;
    for (int r = 0; r < 4; ++r) m(r, 3) += t[k] * m(r, k);
  }
}

// T(q) * m. A zero component is skipped.
void translateAfter(Matrix& m, const Point& q) {
  const double t[] = {q._x, q._y, q._z};
  for (int k = 0; k < 3; ++k) {
    if (t[k] == 0) continue;
    for (int c = 0; c < 4; ++c) m(k, c) += t[k] * m(3, c);
  }
}

// The length of a column of the Jacobian after its rows are weighted.
double columnLength(const Matrix& jacobian, int column, const Point& weights) {
  const double x = jacobian(0, column) * weights._x;
  const double y = jacobian(1, column) * weights._y;
  const double z = jacobian(2, column) * weights._z;
  return std::sqrt(x * x + y * y + z * z);
}

}  // namespace

void perspectiveToAffine(const Matrix& m, const Point& p, Matrix* aff) {
  Point q;
  m.transform(p, q);  // before *aff is written, which may be m
  projectionJacobian(p, m, *aff);
  translateBefore(*aff, p);
  translateAfter(*aff, q);
}

void getScaleTranslate(const Matrix& m, const Point& p, const Point& weights, Point* scale,
                       Point* translate) {
  Matrix jacobian;
  projectionJacobian(p, m, jacobian);
  Point q;
  m.transform(p, q);
  const Point moved(q._x - p._x, q._y - p._y, q._z - p._z);
  // The outputs may be the inputs, so they are written last.
  *scale = Point(columnLength(jacobian, 0, weights), columnLength(jacobian, 1, weights),
                 columnLength(jacobian, 2, weights));
  *translate = moved;
}

void getScaleTranslate(const Matrix& m, const Point& p, Point* scale, Point* translate) {
  getScaleTranslate(m, p, Point(1, 1, 1), scale, translate);
}

void getScaleTranslate(const Matrix& m, Point* scale, Point* translate) {
  getScaleTranslate(m, Point(0, 0, 0), scale, translate);
}
