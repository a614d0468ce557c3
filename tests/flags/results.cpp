// SPDX-License-Identifier: BSD-3-Clause
#include "tests/flags/results.h"

#include "cornerpin/cornerpin.h"

namespace CORNERPIN_TEST_FLAGS {
namespace {

using Number = MDeriv<double>;

void append(Results& out, const Number& a) {
  out.push_back(a.x());
  for (int i = 0; i < a.nd(); ++i) out.push_back(a.d(i));
}

void append(Results& out, const LvMatrix44Tmpl<double>& m) {
  for (int k = 0; k < 16; ++k) out.push_back(m(k / 4, k % 4));
}

void append(Results& out, const LvMatrix44Tmpl<Number>& m) {
  for (int k = 0; k < 16; ++k) append(out, m(k / 4, k % 4));
}

template <class T>
void append(Results& out, const LvVector2<T>& v) {
  out.push_back(v._x);
  out.push_back(v._y);
}

template <class T>
void append(Results& out, const LvVector3<T>& v) {
  out.push_back(v._x);
  out.push_back(v._y);
  out.push_back(v._z);
}

LvMatrix44Tmpl<double> matrixOf(const double* in) {
  LvMatrix44Tmpl<double> m;
  for (int k = 0; k < 16; ++k) m(k / 4, k % 4) = in[k];
  return m;
}

Number numberOf(const double* in, int count) {
  double d[] = {in[1], in[2], in[3]};
  return Number(in[0], d, count, true);
}

void appendNumbers(Results& out, const double* in) {
  const Number a = numberOf(in, 3);
  const Number b = numberOf(in + 4, 2);
  append(out, a + b);
  append(out, a - b);
  append(out, a * b);
  append(out, a / b);
  append(out, b / a);
  append(out, 2.0 * a - 1.0);
  Number c = a;
  c += b;
  c *= a;
  c -= b;
  c /= a;
  append(out, c);
  const Number p = sqr(a) + 0.5;
  append(out, sqrt(p));
  append(out, log(p));
  append(out, exp(a));
  append(out, pow(p, 3.5));
  append(out, sin(a));
  append(out, cos(a));
  append(out, tan(a));
  append(out, asin(a));
  append(out, acos(a));
  append(out, atan(a));
}

void appendFixedSize(Results& out, const double* in) {
  LvMatrix44Tmpl<double> m = matrixOf(in);
  m.rightMult(matrixOf(in + 16));
  append(out, m);
  LvVector2<double> p2(in[0], in[1]);
  LvVector3<double> p3(in[2], in[3], in[4]);
  LvVector4<double> p4(in[5], in[6], in[7], in[8]);
  m.transform(p2, p2);
  m.transform(p3, p3);
  m.transform(p4, p4);
  append(out, p2);
  append(out, p3);
  append(out, p4.reduce());
  LvQuat<double> q(in[9], in[10], in[11], in[12]);
  LvQuat<double> r;
  r.setAxisAngle(p3, in[13]);
  q *= r;
  m.leftRotate(q);
  append(out, m);
  LvMatrix44Tmpl<Number> n;
  n(0, 1) = numberOf(in, 3);
  LvQuat<Number> rotation;
  rotation.setAxisAngle(LvVector3<Number>(numberOf(in + 4, 1), in[1], in[2]), numberOf(in + 8, 2));
  n.leftRotate(rotation);
  append(out, n);
}

void appendGeometry(Results& out, const double* in) {
  const auto corner = [in](int k) { return LvVector2<double>(in[2 * k], in[2 * k + 1]); };
  LvMatrix44Tmpl<double> m;
  MComputeSquareToQuadProjectionMatrix(corner(0), corner(1), corner(2), corner(3), m);
  append(out, m);
  MComputeQuadToSquareProjectionMatrix(corner(0), corner(1), corner(2), corner(3), m);
  append(out, m);
  MComputeQuadToQuadProjectionMatrix(corner(0), corner(1), corner(2), corner(3), corner(4),
                                     corner(5), corner(6), corner(7), m);
  append(out, m);
  LvVector2<double> q;
  MProjectionMapSquareToQuad(corner(0), corner(1), corner(2), corner(3), corner(4), q);
  append(out, q);
  MProjectionMapQuadToSquare(corner(0), corner(1), corner(2), corner(3), corner(4), q);
  append(out, q);
  const LvVector3<double> p(in[20], in[21], in[22]);
  LvMatrix44Tmpl<double> affine;
  projectionJacobian(p, m, affine);
  append(out, affine);
  perspectiveToAffine(m, p, &affine);
  append(out, affine);
  LvVector3<double> scale, translate;
  getScaleTranslate(m, p, LvVector3<double>(in[23], in[24], in[25]), &scale, &translate);
  append(out, scale);
  append(out, translate);
  append(out, MMatrixInterpolator(m, affine)(0.3));
}

void appendLeastSquares(Results& out, const double* in) {
  MGenMatrix<double> a(6, 4, MGenMatrix<double>::RowMajor);
  MGenVector<double> b(6);
  for (int i = 0; i < 6; ++i) {
    for (int j = 0; j < 4; ++j) a(i, j) = in[4 * i + j];
    b[i] = in[24 + i];
  }
  MSvd<double> svd;
  _svdCall(svd, a, b);
  for (int i = 0; i < 4; ++i) out.push_back(svd.x[i]);
}

}  // namespace

Results results(const double* in) {
  Results out;
  appendNumbers(out, in);
  appendFixedSize(out, in);
  appendGeometry(out, in);
  appendLeastSquares(out, in);
  return out;
}

double arithmeticOfTheIncluder(const double* in) {
  double sum = 0;
  for (int k = 0; k < 32; ++k) sum += in[k] / 49.0 + in[k] * in[31 - k];
  return sum;
}

}  // namespace CORNERPIN_TEST_FLAGS
