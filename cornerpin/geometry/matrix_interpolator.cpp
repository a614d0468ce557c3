// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/geometry/matrix_interpolator.h"

namespace {

// The order of the comparisons sends NaN to 1.
double clamped(double t) {
  if (!(t < 1)) return 1;
  return t > 0 ? t : 0;
}

}  // namespace

MMatrixInterpolator::MMatrixInterpolator(const LvMatrix44Tmpl<double>& a,
                                         const LvMatrix44Tmpl<double>& b)
    : A(a), B(b) {}

MMatrixInterpolator& MMatrixInterpolator::operator=(const MMatrixInterpolator& other) {
  setA(other.A);
  setB(other.B);
  return *this;
}

void MMatrixInterpolator::setA(const LvMatrix44Tmpl<double>& a) {
  if (&a != &A) A = a;
}

void MMatrixInterpolator::setB(const LvMatrix44Tmpl<double>& b) {
  if (&b != &B) B = b;
}

LvMatrix44Tmpl<double> MMatrixInterpolator::operator()(double t) const {
  const double u = clamped(t);
  LvMatrix44Tmpl<double> result;
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c) result(r, c) = (1 - u) * A(r, c) + u * B(r, c);
  }
  return result;
}
