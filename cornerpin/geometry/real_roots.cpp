// SPDX-License-Identifier: BSD-3-Clause
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

#include "cornerpin/foundation/exception.h"
#include "cornerpin/geometry/roots.h"
#include "cornerpin/internal/double_double.h"

// The roots of f' cut the line into stretches on which f is monotone. Each stretch whose ends
// differ in sign holds one simple root, found by a bracketed Newton iteration; a root of f' at
// which f vanishes is a multiple root. Values of f are formed in double-double arithmetic, each
// term scaled against the largest one, so that neither overflow nor underflow can hide a sign.

namespace cornerpin {
namespace {

using internal::DoubleDouble;
using internal::scaled;

constexpr int kMaxDegree = 4;
constexpr double kLargest = std::numeric_limits<double>::max();

// |f(x)| up to this times the sum of the absolute terms counts as zero at a root of f'.
constexpr double kVanishing = 8 * std::numeric_limits<double>::epsilon();

// mantissa * 2^exponent, the mantissa in [1/2, 1) or 0.
struct Scaled {
  Scaled() = default;
  explicit Scaled(const DoubleDouble& value, int shift = 0) {
    std::frexp(value.high, &exponent);
    mantissa = scaled(value, -exponent);
    exponent += shift;
  }

  DoubleDouble mantissa;
  int exponent = 0;
};

struct Polynomial {
  int degree = 0;
  Scaled coefficient[kMaxDegree + 1];  // [i] belongs to x^i
};

// In units of the power of two that is next to the largest term.
struct Value {
  DoubleDouble sum;  // f(x)
  double size = 0;   // sum of the absolute terms
  double slope = 0;  // x f'(x)
};

Value evaluate(const Polynomial& f, double x) {
  int exponent = 0;
  const double mantissa = std::frexp(x, &exponent);
  Scaled term[kMaxDegree + 1];
  int top = std::numeric_limits<int>::min();
  DoubleDouble power = 1;
  for (int i = 0; i <= f.degree; ++i) {
    term[i].mantissa = f.coefficient[i].mantissa * power;
    term[i].exponent = f.coefficient[i].exponent + i * exponent;
    if (term[i].mantissa.high != 0) top = std::max(top, term[i].exponent);
    power = power * mantissa;
  }
  Value value;
  for (int i = 0; i <= f.degree; ++i) {
    if (term[i].mantissa.high == 0) continue;
    const double unit = std::ldexp(1.0, term[i].exponent - top);  // at most 1
    const DoubleDouble part(term[i].mantissa.high * unit, term[i].mantissa.low * unit);
    value.sum = value.sum + part;
    value.size += std::fabs(part.high);
    value.slope += i * part.high;
  }
  return value;
}

int signOf(double x) { return (x > 0) - (x < 0); }

int signOf(const Value& value) { return signOf(value.sum.high); }

bool vanishes(const Value& value) { return std::fabs(value.sum.high) <= kVanishing * value.size; }

// Numbers the doubles in ascending order, -0 and 0 alike; and back.
std::int64_t rankOf(double x) {
  std::int64_t bits = 0;
  std::memcpy(&bits, &x, sizeof bits);
  return bits >= 0 ? bits : std::numeric_limits<std::int64_t>::min() - bits;
}

double ofRank(std::int64_t rank) {
  const std::int64_t bits = rank >= 0 ? rank : std::numeric_limits<std::int64_t>::min() - rank;
  double x = 0;
  std::memcpy(&x, &bits, sizeof x);
  return x;
}

// The middle one of the doubles between two.
double middle(double low, double high) {
  const std::int64_t a = rankOf(low);
  const std::int64_t b = rankOf(high);
  return ofRank((a & b) + ((a ^ b) >> 1));
}

// One end of the interval that holds a root.
struct End {
  double x;
  Value value;

  double error() const { return std::fabs(value.sum.high) / value.size; }
};

// A Newton step from the better end. One of less than a unit in the last place goes to the next
// double. May leave the interval.
double newtonProbe(const End& low, const End& high) {
  const bool fromLow = low.error() <= high.error();
  const End& from = fromLow ? low : high;
  const double next = from.x - from.x * (from.value.sum.high / from.value.slope);
  return next != from.x ? next : std::nextafter(from.x, fromLow ? high.x : low.x);
}

// f is monotone on [low, high] and its values there have opposite signs: closes in until the ends
// are neighbouring doubles and returns the better one. Newton's method does the work; now and then
// the interval is halved, by length and by the number of doubles in it, so that the probes stay
// below 600 whatever f is; eight are usual.
double rootBetween(const Polynomial& f, double lowX, double highX) {
  End low{lowX, evaluate(f, lowX)};
  End high{highX, evaluate(f, highX)};
  for (int probe = 0; std::nextafter(low.x, high.x) < high.x; ++probe) {
    const auto isInside = [&](double x) { return low.x < x && x < high.x; };
    double x = newtonProbe(low, high);
    if (probe % 4 == 0 || !isInside(x)) x = low.x / 2 + high.x / 2;
    if (probe % 8 == 4 || !isInside(x)) x = middle(low.x, high.x);
    const Value value = evaluate(f, x);
    if (signOf(value) == 0) return x;
    (signOf(value) == signOf(low.value) ? low : high) = {x, value};
  }
  return low.error() <= high.error() ? low.x : high.x;
}

// A power of two beyond every root, from the exponents alone (M. Fujiwara, "Ueber die obere
// Schranke des absoluten Betrages der Wurzeln einer algebraischen Gleichung", 1916).
double rootBound(const Polynomial& f) {
  const int leading = f.coefficient[f.degree].exponent;
  int exponent = -1100;
  for (int i = 0; i < f.degree; ++i) {
    if (f.coefficient[i].mantissa.high == 0) continue;
    const int ratio = f.coefficient[i].exponent - leading + 1;  // |c_i / c_n| < 2^ratio
    exponent = std::max(exponent, static_cast<int>(std::ceil(double(ratio) / (f.degree - i))) + 1);
  }
  return exponent > 1023 ? kLargest : std::ldexp(1.0, std::max(exponent, -1074));
}

Polynomial derivative(const Polynomial& f) {
  Polynomial result;
  result.degree = f.degree - 1;
  for (int i = 1; i <= f.degree; ++i) {
    const Scaled& c = f.coefficient[i];
    result.coefficient[i - 1] = Scaled(c.mantissa * double(i), c.exponent);
  }
  return result;
}

// Distinct roots that round to the same double are one entry.
void append(RealRoots& roots, double value, int multiplicity) {
  if (roots.count > 0 && roots.root[roots.count - 1].value == value) {
    roots.root[roots.count - 1].multiplicity += multiplicity;
    return;
  }
  roots.root[roots.count++] = {value, multiplicity};
}

RealRoots rootsOf(const Polynomial& f) {
  RealRoots roots;
  if (f.degree == 0) return roots;
  const RealRoots turns = rootsOf(derivative(f));
  const double bound = rootBound(f);
  double left = -bound;
  int leftSign = signOf(evaluate(f, left));  // 0 behind a multiple root
  RealRoot cluster;                          // neighbouring turns on the axis
  for (int i = 0; i <= turns.count; ++i) {
    const bool isTurn = i < turns.count;
    const double x = isTurn ? turns[i].value : bound;
    const Value value = evaluate(f, x);
    if (isTurn && vanishes(value)) {
      cluster.multiplicity += turns[i].multiplicity;
      const double share = double(turns[i].multiplicity) / cluster.multiplicity;
      cluster.value += (x - cluster.value) * share;
      leftSign = 0;
    } else {
      if (cluster.multiplicity > 0) append(roots, cluster.value, cluster.multiplicity + 1);
      if (leftSign * signOf(value) < 0) append(roots, rootBetween(f, left, x), 1);
      cluster = {};
      leftSign = signOf(value);
    }
    left = x;
  }
  return roots;
}

// Highest power first. Zeros at the end of the list are roots at 0; they are split off, so that
// the other roots keep their relative accuracy.
RealRoots solve(const double* coefficients, int degree) {
  for (int i = 0; i <= degree; ++i) {
    if (std::isnan(coefficients[i])) throw LvIllegalArgumentException("NaN");
    if (std::isinf(coefficients[i])) throw LvIllegalArgumentException("infinite number");
  }
  for (; degree >= 0 && coefficients[0] == 0; --degree) ++coefficients;
  if (degree < 0) throw LvIllegalArgumentException("realRoots: every number is a root");
  int zeros = 0;
  for (; coefficients[degree] == 0; --degree) ++zeros;
  Polynomial f;
  f.degree = degree;
  for (int i = 0; i <= degree; ++i) f.coefficient[i] = Scaled(coefficients[degree - i]);
  const RealRoots others = rootsOf(f);
  RealRoots roots;
  for (const RealRoot& root : others) {
    if (root.value < 0) append(roots, root.value, root.multiplicity);
  }
  if (zeros > 0) append(roots, 0, zeros);
  for (const RealRoot& root : others) {
    if (root.value >= 0) append(roots, root.value + 0.0, root.multiplicity);
  }
  return roots;
}

}  // namespace

RealRoots realRoots(double a, double b, double c) {
  const double coefficients[] = {a, b, c};
  return solve(coefficients, 2);
}

RealRoots realRoots(double a, double b, double c, double d) {
  const double coefficients[] = {a, b, c, d};
  return solve(coefficients, 3);
}

RealRoots realRoots(double a, double b, double c, double d, double e) {
  const double coefficients[] = {a, b, c, d, e};
  return solve(coefficients, 4);
}

}  // namespace cornerpin
