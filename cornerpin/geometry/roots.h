// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_GEOMETRY_ROOTS_H
#define CORNERPIN_GEOMETRY_ROOTS_H

#include "cornerpin/export.h"

/// \file
/// Real roots of polynomials of degree two to four. Coefficients come first, highest power first.
///
/// Two families. `solveQuadratic`, `solveCubic` and `solveQuartic` evaluate closed forms: fast, no
/// iteration, the same bits whatever flags the caller is built with, and wrong or silent on some
/// inputs, as listed with each. `cornerpin::realRoots` finds every root to the last place, about
/// fifty times slower.
///
/// The closed forms never throw, allocate or check their input: infinities and NaNs go through.
/// They report a count and fill an array of the caller's; only the first `count` slots hold roots.
/// Roots are not sorted, and a double root comes twice.
///
/// Rates below: 20000 random inputs a line, measured by closed_form_survey. Errors are relative to
/// the largest root.

/// The roots of a x^2 + b x + c: none, or two, (sqrt(D) - b) / 2a first.
///
/// \param roots  room for 2.
///
/// a = 0 is not looked for: it gives two infinities or NaNs, as does a NaN coefficient. Where b^2
/// is much larger than 4ac the root next to 0 cancels: with b^2 / 4ac = 10^k it has lost k digits.
CORNERPIN_API void solveQuadratic(double a, double b, double c, int* count, double* roots);

/// The roots of a x^3 + b x^2 + c x + d: one or three; those of the quadratic when a is 0.
///
/// \param roots  room for 3.
///
/// Where it fails:
/// - A single real root comes from a cube root in single precision: error 1e-8 in the median,
///   6e-7 in the 99th percentile, 2e-4 at worst for coefficients in [-1, 1].
/// - A double root may vanish, or come with a NaN: of the cubics with one double and one simple
///   integer root up to 10, 56 % report the simple root alone.
/// - A triple root: NaN three times (for x^3 itself as well).
/// - Two roots 1e-4 apart: 1e-11 at worst; 1e-6 apart: 2e-6. Three roots spread over [-1, 1] are
///   right to 1e-13.
///
/// Intermediate values are `long double`, so the last bits depend on what that type is.
/// Method: G. Cardano's formula ("Ars Magna", 1545) for one real root, F. Viete's trigonometric
/// form for three.
CORNERPIN_API void solveCubic(double a, double b, double c, double d, int* count, double* roots);

/// The roots of a x^4 + b x^3 + c x^2 + d x + e: none, two or four; those of the cubic
/// b x^3 + c x^2 + d x + e when a is 0 or |a| / |b| < 1e-5.
///
/// \param roots  room for 4, always. Slots past the count hold the real parts of the complex
///               roots; when a NaN turns up (count 0), what they held before, shifted.
///
/// Where it fails:
/// - x^4 + p x^2 + r with two real roots, and whatever is that after a shift of x, always loses
///   them: `solveQuartic(1, 0, 0, 0, -1)` reports none. With four it is right.
/// - Of the quartics with one double and two simple integer roots 36 % report a wrong count.
/// - Two roots: error 2e-8 in the median, 4e-5 in the 99th percentile, 0.1 at worst for
///   coefficients in [-1, 1], from the cube root in single precision.
/// - Four roots over [-1, 1]: 3e-16 in the median, 5e-10 at worst; two of them 1e-4 apart: 4e-13
///   and 2e-5; 1e-6 apart: 4e-11 and 3e-6, with a wrong count in 0.1 %.
///
/// Method: L. Ferrari's, through a resolvent cubic (in "Ars Magna", 1545).
CORNERPIN_API void solveQuartic(double a, double b, double c, double d, double e, int* count,
                                double* roots);

/// What stands beside the closed forms: right for every finite input.
namespace cornerpin {

/// A real root of a polynomial.
struct RealRoot {
  double value = 0;      ///< the root itself, always finite
  int multiplicity = 0;  ///< 1 for a simple root, up to the degree
};

/// Up to four roots, ascending; a range for `for`.
struct RealRoots {
  RealRoot root[4];  ///< the first `count` are valid
  int count = 0;     ///< of distinct roots

  /// \{
  /// The valid roots as a range.
  const RealRoot* begin() const { return root; }
  const RealRoot* end() const { return root + count; }
  /// \}
  /// Root i, 0 .. count - 1, which is not checked.
  const RealRoot& operator[](int i) const { return root[i]; }
};

/// Every real root of a x^2 + b x + c, sorted, with multiplicities.
///
/// Leading zeros lower the degree, down to a constant, which has no roots. Roots beyond the range
/// of `double` are left out, and roots that round to the same `double`, such as 0 and 1e-400, are
/// one entry. Coefficients may be of any size: nothing overflows on the way.
///
/// A root is multiple when the coefficients cannot tell it from one: at a root x of the derivative
/// the polynomial is no larger than 8 eps (eps = 2^-52) times the sum of its absolute terms, so
/// that changing each coefficient by that part makes x a root. Roots of a quadratic count as one
/// when they lie within about 2e-7 of their size; so x^2 - 0.2 x + 0.01 has the double root 0.1
/// although its rounded coefficients give none. A root at exactly 0 is told by zero coefficients at
/// the end of the list.
///
/// Throws `LvIllegalArgumentException` "NaN" or "infinite number" for such a coefficient, and
/// "realRoots: every number is a root" when all are 0.
///
/// Accuracy: a simple root is one of the two doubles next to the true one, a multiple one is that
/// for the derivative in which it is simple. Cost: no allocation; about 80 evaluations in
/// double-double arithmetic for a quartic, 5 to 10 microseconds.
///
/// Method: the roots of the derivative split the line into stretches on which the polynomial is
/// monotone; a bracketed Newton iteration in each.
CORNERPIN_API RealRoots realRoots(double a, double b, double c);
/// The same for a x^3 + b x^2 + c x + d.
CORNERPIN_API RealRoots realRoots(double a, double b, double c, double d);
/// The same for a x^4 + b x^3 + c x^2 + d x + e.
CORNERPIN_API RealRoots realRoots(double a, double b, double c, double d, double e);

}  // namespace cornerpin

#endif
