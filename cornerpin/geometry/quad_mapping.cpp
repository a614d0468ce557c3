// SPDX-License-Identifier: BSD-3-Clause
#include <cmath>

#include "cornerpin/geometry/MGeometry.h"

// The order of every sum and product belongs to the results.
namespace {

using Point = LvVector2<double>;
using Matrix = LvMatrix44Tmpl<double>;

// [[a, b, c], [d, e, f], [g, h, i]]
struct Homography {
  double a, b, c, d, e, f, g, h, i;
};

Homography squareToQuad(const Point& p0, const Point& p1, const Point& p2, const Point& p3) {
  const double sumX = p0._x - p1._x + p2._x - p3._x;
  const double sumY = p0._y - p1._y + p2._y - p3._y;
  if (sumX == 0 && sumY == 0) {  // a parallelogram
    return {p1._x - p0._x, p2._x - p1._x, p0._x, p1._y - p0._y, p2._y - p1._y, p0._y, 0, 0, 1};
  }
  const double dx1 = p1._x - p2._x;
  const double dx2 = p3._x - p2._x;
  const double dy1 = p1._y - p2._y;
  const double dy2 = p3._y - p2._y;
  const double den = dx1 * dy2 - dx2 * dy1;
  const double g = (sumX * dy2 - dx2 * sumY) / den;
  const double h = (dx1 * sumY - sumX * dy1) / den;
  return {p1._x - p0._x + g * p1._x,
          p3._x - p0._x + h * p3._x,
          p0._x,
          p1._y - p0._y + g * p1._y,
          p3._y - p0._y + h * p3._y,
          p0._y,
          g,
          h,
          1};
}

// The inverse times the determinant, for i = 1.
Homography adjugate(const Homography& m) {
  return {m.e - m.f * m.h,       m.c * m.h - m.b,       m.b * m.f - m.c * m.e,
          m.f * m.g - m.d,       m.a - m.c * m.g,       m.c * m.d - m.a * m.f,
          m.d * m.h - m.e * m.g, m.b * m.g - m.a * m.h, m.a * m.e - m.b * m.d};
}

void fill(const Homography& m, Matrix& out) {
  const double elements[] = {m.a, m.b, 0,   m.c,  //
                             m.d, m.e, 0,   m.f,  //
                             0,   0,   m.i, 0,    //
                             m.g, m.h, 0,   m.i};
  for (int k = 0; k < 16; ++k) out(k / 4, k % 4) = elements[k];
}

}  // namespace

void MComputeSquareToQuadProjectionMatrix(const Point& p0, const Point& p1, const Point& p2,
                                          const Point& p3, Matrix& out) {
  fill(squareToQuad(p0, p1, p2, p3), out);
}

void MComputeQuadToSquareProjectionMatrix(const Point& p0, const Point& p1, const Point& p2,
                                          const Point& p3, Matrix& out) {
  fill(adjugate(squareToQuad(p0, p1, p2, p3)), out);
}

void MComputeQuadToQuadProjectionMatrix(const Point& s0, const Point& s1, const Point& s2,
                                        const Point& s3, const Point& t0, const Point& t1,
                                        const Point& t2, const Point& t3, Matrix& out) {
  Matrix toSquare;
  MComputeQuadToSquareProjectionMatrix(s0, s1, s2, s3, toSquare);
  MComputeSquareToQuadProjectionMatrix(t0, t1, t2, t3, out);
  out.rightMult(toSquare);
  const double length = std::sqrt(out(3, 0) * out(3, 0) + out(3, 1) * out(3, 1) +
                                  out(3, 2) * out(3, 2) + out(3, 3) * out(3, 3));
  if (length < 1e-7) return;
  const double reciprocal = 1 / length;
  for (int k = 0; k < 16; ++k) out(k / 4, k % 4) *= reciprocal;
}

void MProjectionMapSquareToQuad(const Point& p0, const Point& p1, const Point& p2, const Point& p3,
                                const Point& uv, Point& out) {
  const Homography m = squareToQuad(p0, p1, p2, p3);
  const double w = m.g * uv._x + m.h * uv._y + 1;
  out = Point((m.a * uv._x + m.b * uv._y + m.c) / w, (m.d * uv._x + m.e * uv._y + m.f) / w);
}

void MProjectionMapQuadToSquare(const Point& p0, const Point& p1, const Point& p2, const Point& p3,
                                const Point& xy, Point& out) {
  const Homography m = adjugate(squareToQuad(p0, p1, p2, p3));
  // Here the constant term comes first.
  const double w = m.i + m.g * xy._x + m.h * xy._y;
  out = Point((m.c + m.a * xy._x + m.b * xy._y) / w, (m.f + m.d * xy._x + m.e * xy._y) / w);
}
