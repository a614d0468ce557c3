// SPDX-License-Identifier: BSD-3-Clause
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "cornerpin/foundation/exception.h"
#include "cornerpin/geometry/MGeometry.h"
#include "cornerpin/internal/double_double.h"

// With perpendicular axes A and B, |A| >= |B|, and D = p - c, write the foot point as
// c + u A + v B. The normal condition gives u = P / (1 + t) and v = M / t with
//   P = A.D / delta,  M = B.D / delta,  delta = |A|^2 - |B|^2,
// and u^2 + v^2 = 1 has exactly one solution t > 0 for P, M > 0: the nearest point. It is solved
// in the form
//   t^2 (t + w) (1 + t + P) = M^2 (1 + t)^2,  w = 1 - P = (delta - A.D) / delta,
// whose factors are sums of positive terms when t + w is the unknown for a negative w. So the
// solution keeps its relative accuracy at the evolute too. Rounding that the frame brings in is
// kept below notice by double-double arithmetic. (The equation is that of D. Eberly, "Distance
// from a point to an ellipse, an ellipsoid, or a hyperellipsoid", 2013, free of cancellation.)

namespace cornerpin {
namespace {

using internal::DoubleDouble;

struct Vector {
  DoubleDouble x;
  DoubleDouble y;
};

Vector operator*(const Vector& a, const DoubleDouble& s) { return {a.x * s, a.y * s}; }

DoubleDouble dot(const Vector& a, const Vector& b) { return a.x * b.x + a.y * b.y; }

DoubleDouble length(const Vector& a) { return sqrt(dot(a, a)); }

Vector quarterTurn(const Vector& a) { return {-a.y, a.x}; }

Vector scaled(const Vector& a, int exponent) {
  return {internal::scaled(a.x, exponent), internal::scaled(a.y, exponent)};
}

// The exponent that brings the larger component into [1/2, 1); 0 for the zero vector.
int exponentOf(const Vector& a) {
  int exponent = 0;
  std::frexp(std::max(std::fabs(a.x.high), std::fabs(a.y.high)), &exponent);
  return exponent;
}

struct Axes {
  Vector major;
  Vector minor;
  DoubleDouble delta;  // |major|^2 - |minor|^2, right to its last digits however small
};

// The square root of a complex number of length 1.
Vector halfAngle(const Vector& z) {
  if (z.x.high >= 0) {
    const DoubleDouble x = sqrt((z.x + 1.0) * 0.5);
    return {x, z.y * 0.5 / x};
  }
  const DoubleDouble y = sqrt((-z.x + 1.0) * 0.5);
  return {z.y * 0.5 / y, y};
}

// Skewed axes: c + cos t A + sin t B is alpha e^(it) + beta e^(-it) in complex numbers, so the
// semi-axes are |alpha| + |beta| and ||alpha| - |beta||, and the major one halves the angle
// between alpha and beta. The minor one follows from the area.
Axes principalAxes(const Vector& A, const Vector& B) {
  const Vector alpha{(A.x + B.y) * 0.5, (A.y - B.x) * 0.5};
  const Vector beta{(A.x - B.y) * 0.5, (A.y + B.x) * 0.5};
  const DoubleDouble alphaLength = length(alpha);
  const DoubleDouble betaLength = length(beta);
  if (alphaLength.high == 0 || betaLength.high == 0) return {A, B, 0.0};  // a circle
  const Vector p = alpha * (1.0 / alphaLength);
  const Vector q = beta * (1.0 / betaLength);
  const Vector direction = halfAngle({p.x * q.x - p.y * q.y, p.x * q.y + p.y * q.x});
  const DoubleDouble major = alphaLength + betaLength;
  const DoubleDouble minor = dot(quarterTurn(A), B) / major;
  return {direction * major, quarterTurn(direction) * minor, alphaLength * betaLength * 4.0};
}

Axes perpendicularAxes(const Vector& A, const Vector& B) {
  const DoubleDouble delta = dot(A, A) - dot(B, B);
  return delta.high >= 0 ? Axes{A, B, delta} : Axes{B, A, -delta};
}

Axes axesOf(const Vector& A, const Vector& B) {
  return dot(A, B).high == 0 ? perpendicularAxes(A, B) : principalAxes(A, B);
}

// One unknown tau > 0 in t = tau + max(0, -w), where t + w = tau + max(0, w).
struct Equation {
  DoubleDouble P;
  DoubleDouble M;
  DoubleDouble w;

  DoubleDouble t(const DoubleDouble& tau) const { return w.high < 0 ? tau - w : tau; }
  DoubleDouble tPlusW(const DoubleDouble& tau) const { return w.high < 0 ? tau : tau + w; }

  // Left over right side: rises with tau, equals 1 at the solution.
  DoubleDouble ratio(const DoubleDouble& tau) const {
    const DoubleDouble s = t(tau);
    const DoubleDouble fraction = s / (s + 1.0);
    return fraction * fraction * (tPlusW(tau) / M) * ((s + 1.0 + P) / M);
  }

  // d log(ratio) / d log(tau): between about 0.9 and 4.
  double slope(double tau) const {
    const double s = t(tau).high;
    return 2 * tau / (s * (1 + s)) + tau / tPlusW(tau).high + tau / (1 + s + P.high);
  }
};

// Newton's method in the logarithms, where the slope hardly changes, closing in from above within
// a bracket; then two steps at full precision.
DoubleDouble solve(const Equation& equation) {
  double low = std::numeric_limits<double>::min();
  double high = equation.P.high + equation.M.high;
  double tau = high;
  for (int step = 0; step < 200; ++step) {
    const double excess = std::log(equation.ratio(tau).high);
    (excess > 0 ? high : low) = tau;
    double next = tau * std::exp(-excess / equation.slope(tau));
    const bool converged = std::fabs(next - tau) <= 1e-12 * tau;
    if (!converged && !(low < next && next < high)) next = std::sqrt(low) * std::sqrt(high);
    tau = next;
    if (converged) break;
  }
  DoubleDouble result = tau;
  for (int step = 0; step < 2; ++step) {
    const DoubleDouble excess = equation.ratio(result) - 1.0;
    result = result - result * (excess / equation.slope(result.high));
  }
  return result;
}

struct Foot {
  DoubleDouble u;
  DoubleDouble v;
};

constexpr double kFar = 0x1p200;      // seen from here the ellipse is a circle to 60 digits
constexpr double kOnAxis = 0x1p-300;  // M below this is 0 to 30 digits of the result

// For P, M >= 0, not both infinite.
Foot footInFirstQuadrant(const DoubleDouble& P, const DoubleDouble& M, const DoubleDouble& w) {
  if (M.high < kOnAxis) {
    if (w.high > 0) return {P, sqrt(w * (P + 1.0))};
    return {1.0, 0.0};
  }
  const Equation equation{P, M, w};
  const DoubleDouble tau = solve(equation);
  const DoubleDouble t = equation.t(tau);
  return {P / (t + 1.0), M / t};
}

// The nearest point c + u major + v minor for the offset 2^shift d from the centre.
Foot footOf(const Axes& axes, const Vector& d, int shift) {
  const DoubleDouble along = dot(axes.major, d);
  const DoubleDouble across = dot(axes.minor, d);
  const DoubleDouble p = abs(along);
  const DoubleDouble m = abs(across);
  const double larger = std::max(p.high, m.high);
  const bool circle = axes.delta.high == 0;
  Foot foot;
  if (larger > 0 && (circle || std::ldexp(larger, shift) > kFar * axes.delta.high)) {
    const DoubleDouble norm = length({p / larger, m / larger}) * larger;
    foot = {p / norm, m / norm};
  } else if (circle) {
    foot = {1.0, 0.0};
  } else {
    const DoubleDouble reach = internal::scaled(p, shift);
    foot = footInFirstQuadrant(reach / axes.delta, internal::scaled(m, shift) / axes.delta,
                               (axes.delta - reach) / axes.delta);
  }
  if (along.high < 0) foot.u = -foot.u;
  if (across.high < 0) foot.v = -foot.v;
  return foot;
}

void checkFinite(const LvVector2<double>& a) {
  if (std::isnan(a._x) || std::isnan(a._y)) throw LvIllegalArgumentException("NaN");
  if (std::isinf(a._x) || std::isinf(a._y)) throw LvIllegalArgumentException("infinite number");
}

Vector vectorOf(const LvVector2<double>& a, int exponent) {
  return {std::ldexp(a._x, exponent), std::ldexp(a._y, exponent)};
}

double largest(const LvVector2<double>& a) { return std::max(std::fabs(a._x), std::fabs(a._y)); }

// Values this large are handled in smaller units, so that no intermediate one overflows.
constexpr double kLarge = 0x1p1000;
constexpr int kUnits = 30;

// Axes of middling size stay as they are, so that a tiny one beside them is not rounded away.
int unitsOf(const LvVector2<double>& A, const LvVector2<double>& B) {
  int exponent = 0;
  std::frexp(std::max(largest(A), largest(B)), &exponent);
  return std::abs(exponent) <= 400 ? 0 : exponent;
}

// Offsets are brought to about 2^kHeadroom: products with the axes stay finite, and a coordinate
// far below the other one keeps its digits.
constexpr int kHeadroom = 500;

Vector offset(const LvVector2<double>& p, const LvVector2<double>& c, int* exponent) {
  *exponent = std::max(largest(p), largest(c)) > kLarge ? kUnits : 0;
  const Vector to = vectorOf(p, -*exponent);
  const Vector from = vectorOf(c, -*exponent);
  return {to.x - from.x, to.y - from.y};
}

// c + 2^exponent local, rounded once.
double sum(double c, const DoubleDouble& local, int exponent) {
  const double size = std::ldexp(std::fabs(local.high), exponent);
  const int units = std::max(std::fabs(c), size) > kLarge ? kUnits : 0;
  const DoubleDouble centre = std::ldexp(c, -units);
  return std::ldexp((centre + internal::scaled(local, exponent - units)).high, units);
}

}  // namespace

LvVector2<double> closestPointOnEllipse(const LvVector2<double>& c, const LvVector2<double>& A,
                                        const LvVector2<double>& B, const LvVector2<double>& p) {
  for (const LvVector2<double>* v : {&c, &A, &B, &p}) checkFinite(*v);
  const int size = unitsOf(A, B);  // the axes are handled in units of 2^size
  int units = 0;
  const Vector d = offset(p, c, &units);
  const int reach = exponentOf(d) - kHeadroom;
  const Axes axes = axesOf(vectorOf(A, -size), vectorOf(B, -size));
  const Foot foot = footOf(axes, scaled(d, -reach), reach + units - size);
  const DoubleDouble x = axes.major.x * foot.u + axes.minor.x * foot.v;
  const DoubleDouble y = axes.major.y * foot.u + axes.minor.y * foot.v;
  return {sum(c._x, x, size), sum(c._y, y, size)};
}

}  // namespace cornerpin
