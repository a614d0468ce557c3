// SPDX-License-Identifier: BSD-3-Clause
#include <cmath>
#include <limits>

#include "cornerpin/foundation/exception.h"
#include "cornerpin/geometry/MGeometry.h"
#include "cornerpin/geometry/roots.h"

// Points and vectors are handled in single precision, the quartic and the choice between mirror
// points in double. Products and sums are taken from left to right as they stand; their rounding
// belongs to the result.

namespace {

using Point = LvVector2<float>;

Point operator+(const Point& a, const Point& b) { return {a._x + b._x, a._y + b._y}; }
Point operator-(const Point& a, const Point& b) { return {a._x - b._x, a._y - b._y}; }

float dot(const Point& a, const Point& b) { return a._x * b._x + a._y * b._y; }

// An ellipse with the unit vectors of its axes as a frame.
struct Frame {
  Point c;
  Point u;  // along the first axis
  Point v;  // along the second axis
  float a;
  float b;

  Point toWorld(float x, float y) const {
    return {x * u._x + y * v._x + c._x, x * u._y + y * v._y + c._y};
  }
};

// The matrix with columns u, v, c and the bottom row (0, 0, 1), inverted by cofactors and applied
// to p. With a determinant of exactly 0 the matrix itself is applied.
Point toLocal(const Frame& f, const Point& p) {
  const float determinant = f.u._x * f.v._y - f.v._x * f.u._y;
  if (determinant == 0) return f.toWorld(p._x, p._y);
  const float xShift = f.v._x * f.c._y - f.c._x * f.v._y;
  const float yShift = f.c._x * f.u._y - f.u._x * f.c._y;
  return {f.v._y / determinant * p._x + -f.v._x / determinant * p._y + xShift / determinant,
          -f.u._y / determinant * p._x + f.u._x / determinant * p._y + yShift / determinant};
}

// The quartic in the x of the foot points of (x0, y0) on x^2 / alpha + y^2 / beta = 1.
void solveFootPoints(double alpha, double beta, double x0, double y0, int* count, double* roots) {
  const double k4 = 2 * alpha * beta - alpha * alpha - beta * beta;
  const double k3 = 2 * alpha * alpha * x0 - 2 * alpha * beta * x0;
  const double k2 = alpha * alpha * alpha - 2 * alpha * alpha * beta + alpha * beta * beta -
                    x0 * x0 * alpha * alpha - y0 * y0 * alpha * beta;
  const double k1 = -2 * alpha * alpha * alpha * x0 + 2 * alpha * alpha * beta * x0;
  const double k0 = alpha * alpha * alpha * x0 * x0;
  solveQuartic(k4, k3, k2, k1, k0, count, roots);
}

// The cross product of the ellipse's normal at (x, y) with the vector from (x0, y0) to there.
double misalignment(double alpha, double beta, const Point& local, double x, double y) {
  return std::fabs((2 * y / beta) * (x - local._x) - (y - local._y) * (2 * x / alpha));
}

// The y of the k-th foot point, whose x is known up to the side. On an exact tie even k take the
// lower side and odd k the upper one, so a double root reported twice yields both mirror points.
float footY(const Frame& f, double alpha, double beta, const Point& local, float x, int k) {
  const float ratio = x / f.a;
  const float upper = f.b * std::sqrt(1 - ratio * ratio);
  const double difference =
      misalignment(alpha, beta, local, x, upper) - misalignment(alpha, beta, local, x, -upper);
  if (difference > 0) return -upper;
  if (difference == 0) return k % 2 == 0 ? -upper : upper;
  return upper;  // a NaN difference included
}

float squaredDistance(const Point& p, const Point& q) {
  const Point d = p - q;
  return dot(d, d);
}

}  // namespace

LvVector2<float> nearestPointOnSegment(const LvVector2<float>& s0, const LvVector2<float>& s1,
                                       const LvVector2<float>& p) {
  const Point d = s1 - s0;
  const float t = dot(p - s0, d) / dot(d, d);
  if (t >= 1) return s1;
  if (t <= 0) return s0;
  return {s0._x + t * d._x, s0._y + t * d._y};  // NaN for s0 == s1
}

void normalPointsOnEllipse(const LvVector2<float>& c, const LvVector2<float>& A,
                           const LvVector2<float>& B, const LvVector2<float>& p,
                           MArray<LvVector2<float>>& out) {
  const float a = std::sqrt(dot(A, A));
  const float b = std::sqrt(dot(B, B));
  if (b == 0 || static_cast<double>(b / a) < 1e-8) {
    const Point nearest = nearestPointOnSegment(c + A, c - A, p);
    out.resize(1);
    out[0] = nearest;
    return;
  }
  const Frame frame{c, {A._x / a, A._y / a}, {B._x / b, B._y / b}, a, b};
  const Point local = toLocal(frame, p);
  const double alpha = static_cast<double>(a) * a;
  const double beta = static_cast<double>(b) * b;
  int count = 0;
  double roots[4] = {};
  solveFootPoints(alpha, beta, local._x, local._y, &count, roots);
  out.resize(count);  // c, A, B and p may be elements of out: not used from here on
  for (int k = 0; k < count; ++k) {
    const float x = static_cast<float>(roots[k]);
    out[k] = frame.toWorld(x, footY(frame, alpha, beta, local, x, k));
  }
}

LvVector2<float> closestPointOnEllipse(const LvVector2<float>& c, const LvVector2<float>& A,
                                       const LvVector2<float>& B, const LvVector2<float>& p) {
  MArray<Point> candidates;
  normalPointsOnEllipse(c, A, B, p, candidates);
  if (candidates.size() == 0) throw LvException("malformed ellipse");
  // The first candidate starts at an infinite distance: when its own is NaN, any number beats it.
  Point best = candidates[0];
  float bestDistance = std::numeric_limits<float>::infinity();
  for (int k = 0; k < candidates.size(); ++k) {
    const float distance = squaredDistance(p, candidates[k]);
    if (distance < bestDistance) {
      best = candidates[k];
      bestDistance = distance;
    }
  }
  return best;
}
