// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_INTERNAL_DOUBLE_DOUBLE_H
#define CORNERPIN_INTERNAL_DOUBLE_DOUBLE_H

#include <cmath>

// Private: numbers of about 32 digits as the unevaluated sum of two doubles (T. J. Dekker, "A
// floating-point technique for extending the available precision", 1971; Y. Hida, X. S. Li and
// D. H. Bailey, "Algorithms for quad-double precision floating point arithmetic", 2001).
//
// Each operation is right to about 2^-104 of its result as long as nothing overflows and no
// product falls below 2^-960. Callers scale by powers of two to stay clear of both.
namespace cornerpin::internal {

struct DoubleDouble {
  double high = 0;
  double low = 0;  // at most half a unit in the last place of `high`

  DoubleDouble() = default;
  DoubleDouble(double value) : high(value) {}  // NOLINT(google-explicit-constructor): exact
  DoubleDouble(double high, double low) : high(high), low(low) {}
};

// The exact a + b.
inline DoubleDouble exactSum(double a, double b) {
  const double sum = a + b;
  const double bShare = sum - a;
  return {sum, (a - (sum - bShare)) + (b - bShare)};
}

// The same for |a| >= |b|.
inline DoubleDouble exactSumOrdered(double a, double b) {
  const double sum = a + b;
  return {sum, b - (sum - a)};
}

// The exact a * b.
inline DoubleDouble exactProduct(double a, double b) {
  const double product = a * b;
  return {product, std::fma(a, b, -product)};
}

inline DoubleDouble operator-(const DoubleDouble& a) { return {-a.high, -a.low}; }

inline DoubleDouble operator+(const DoubleDouble& a, const DoubleDouble& b) {
  const DoubleDouble high = exactSum(a.high, b.high);
  const DoubleDouble low = exactSum(a.low, b.low);
  const DoubleDouble partial = exactSumOrdered(high.high, high.low + low.high);
  return exactSumOrdered(partial.high, partial.low + low.low);
}

inline DoubleDouble operator-(const DoubleDouble& a, const DoubleDouble& b) { return a + -b; }

inline DoubleDouble operator*(const DoubleDouble& a, const DoubleDouble& b) {
  const DoubleDouble product = exactProduct(a.high, b.high);
  return exactSumOrdered(product.high, product.low + (a.high * b.low + a.low * b.high));
}

inline DoubleDouble operator/(const DoubleDouble& a, const DoubleDouble& b) {
  const double first = a.high / b.high;
  const DoubleDouble rest = a - b * first;
  const double second = rest.high / b.high;
  const double third = (rest - b * second).high / b.high;
  return exactSumOrdered(first, second) + third;
}

inline bool operator<(const DoubleDouble& a, const DoubleDouble& b) {
  return a.high < b.high || (a.high == b.high && a.low < b.low);
}

inline DoubleDouble abs(const DoubleDouble& a) { return a.high < 0 ? -a : a; }

// For a >= 0.
inline DoubleDouble sqrt(const DoubleDouble& a) {
  if (a.high <= 0) return {};
  const double root = std::sqrt(a.high);
  const DoubleDouble rest = a - exactProduct(root, root);
  return exactSumOrdered(root, rest.high / (2 * root));
}

// a * 2^exponent.
inline DoubleDouble scaled(const DoubleDouble& a, int exponent) {
  return {std::ldexp(a.high, exponent), std::ldexp(a.low, exponent)};
}

}  // namespace cornerpin::internal

#endif
