// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/geometry/roots.h"

#include <math.h>  // powf

#include <cmath>

// Every product and sum below is taken from left to right as it stands: 3 * b * b is (3b)b. The
// rounding of each step belongs to the result.

namespace {

constexpr double kTwoPi = 6.283185307179586;
constexpr double kFourPi = 12.566370614359172;

// x^3 + A x^2 + ..., carried in the widest type.
struct ReducedCubic {
  long double Q;
  long double R;
  double D;      // the only one of the three that is rounded
  double shift;  // A / 3
};

ReducedCubic reduced(double a, double b, double c, double d) {
  const long double A = static_cast<long double>(b) / a;
  const long double B = static_cast<long double>(c) / a;
  const long double C = static_cast<long double>(d) / a;
  const long double Q = (A * A - 3 * B) / 9;
  const long double R = (2 * A * A * A - 9 * A * B + 27 * C) / 54;
  return {Q, R, static_cast<double>(R * R - Q * Q * Q), static_cast<double>(A / 3)};
}

// The ratio handed to acos is not clamped: rounded past 1 it makes all three roots NaN.
void threeRoots(const ReducedCubic& k, double* roots) {
  const double length = std::sqrt(static_cast<double>(k.Q * k.Q * k.Q));
  const long double angle = std::acos(static_cast<double>(k.R / length));
  const long double m = -2 * std::sqrt(static_cast<double>(k.Q));
  const double turns[3] = {0, kTwoPi, kFourPi};
  for (int i = 0; i < 3; ++i) {
    const double third = static_cast<double>((angle + turns[i]) / 3);
    roots[i] = static_cast<double>(m * std::cos(third) - k.shift);
  }
}

// The cube root is a single precision one, so the root is good to seven digits.
double oneRoot(const ReducedCubic& k) {
  const long double sum = std::sqrt(k.D) + std::fabs(k.R);
  const float S = powf(static_cast<float>(sum), 0.33333334f);
  const long double T = k.Q / S;
  const long double root = S + T;
  return static_cast<double>((k.R < 0 ? root : -root) - k.shift);
}

// u^4 + p u^2 + q u + r.
struct DepressedQuartic {
  double p;
  double q;
  double r;
};

DepressedQuartic depressed(double a, double b, double c, double d, double e) {
  return {(8 * a * c - 3 * b * b) / (8 * a * a),
          (b * b * b - 4 * a * b * c + 8 * a * a * d) / (8 * a * a * a),
          (-3 * b * b * b * b + 16 * a * b * b * c - 64 * a * a * b * d + 256 * a * a * a * e) /
              (256 * a * a * a * a)};
}

double largestResolventRoot(const DepressedQuartic& k) {
  int count = 0;
  double roots[3];
  solveCubic(8, -4 * k.p, -8 * k.r, 4 * k.p * k.r - k.q * k.q, &count, roots);
  double largest = -1e99;
  for (int i = 0; i < count; ++i) {
    if (roots[i] > largest) largest = roots[i];
  }
  return largest;
}

// Splits into two quadratics with sums s and -s and the discriminants e1 and e2. Slots past the
// count take the real parts of the complex pairs. A NaN discriminant writes nothing.
void solveFactors(double s, double e1, double e2, int* count, double* roots) {
  if (e1 >= 0 && e2 >= 0) {
    *count = 4;
    roots[0] = (s + std::sqrt(e1)) / 2;
    roots[1] = (s - std::sqrt(e1)) / 2;
    roots[2] = (std::sqrt(e2) - s) / 2;
    roots[3] = (-s - std::sqrt(e2)) / 2;
  } else if (e1 >= 0 && e2 < 0) {
    *count = 2;
    roots[0] = (s + std::sqrt(e1)) / 2;
    roots[1] = (s - std::sqrt(e1)) / 2;
    roots[2] = roots[3] = -s / 2;
  } else if (e1 < 0 && e2 >= 0) {
    *count = 2;
    roots[0] = (std::sqrt(e2) - s) / 2;
    roots[1] = (-s - std::sqrt(e2)) / 2;
    roots[2] = roots[3] = s / 2;
  } else if (e1 < 0 && e2 < 0) {
    roots[0] = roots[1] = -s / 2;
    roots[2] = roots[3] = s / 2;
  }
}

}  // namespace

void solveQuadratic(double a, double b, double c, int* count, double* roots) {
  const double D = b * b + (a * -4) * c;
  if (D < 0) {
    *count = 0;
    return;
  }
  *count = 2;
  roots[0] = (std::sqrt(D) - b) / (a + a);
  roots[1] = (-b - std::sqrt(D)) / (a + a);
}

void solveCubic(double a, double b, double c, double d, int* count, double* roots) {
  if (a == 0) {
    solveQuadratic(b, c, d, count, roots);
    return;
  }
  const ReducedCubic k = reduced(a, b, c, d);
  if (k.D <= 0) {
    *count = 3;
    threeRoots(k, roots);
  } else {  // a NaN discriminant ends here too
    *count = 1;
    roots[0] = oneRoot(k);
  }
}

void solveQuartic(double a, double b, double c, double d, double e, int* count, double* roots) {
  if (a == 0 || std::fabs(a) / std::fabs(b) < 1e-5) {
    solveCubic(b, c, d, e, count, roots);
    return;
  }
  *count = 0;
  const DepressedQuartic k = depressed(a, b, c, d, e);
  const double y = largestResolventRoot(k);
  const double W = 2 * y - k.p;
  const double s = std::sqrt(W);
  const double h = k.q / (2 * s);
  solveFactors(s, W - 4 * (y + h), W - 4 * (y - h), count, roots);
  for (int i = 0; i < 4; ++i) roots[i] += b / (-4 * a);
}
