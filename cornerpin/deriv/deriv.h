// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_DERIV_DERIV_H
#define CORNERPIN_DERIV_DERIV_H

#include <iosfwd>

#include "cornerpin/export.h"
#include "cornerpin/foundation/exception.h"

/// A forward-mode derivative number: a value with its partial derivatives with respect to
/// variables numbered from 0. A formula written over its number type gives, evaluated over these
/// numbers, its value and its gradient. Built for `double`.
///
/// A number stores the derivatives of the variables 0 .. nd() - 1; all further ones are zero. So
/// variable k is seeded by k zeros and a 1, and a constant stores none. Numbers with different
/// counts combine freely; the result has the larger count.
///
/// Each number owns its array: copies are deep, and numbers share nothing, so they may be used
/// from several threads. Derivatives at a pole, of a root of a negative number and the like are
/// infinite or NaN, unreported.
///
/// Allocations: one array per operation whose result has derivatives, none when it has none.
/// Assigning between equal counts reuses the target's array, and so does `/=` with a divisor of
/// no more derivatives. All results are exact to the forms given here, to the last bit.
///
/// Method: forward accumulation (R. E. Wengert, "A simple automatic derivative evaluation
/// program", Comm. ACM 7, 1964).
template <class T>
class CORNERPIN_API MDeriv {
 public:
  /// The constant 0.
  MDeriv() noexcept = default;
  /// A constant: no derivatives. Plain numbers in a formula become constants by themselves.
  MDeriv(const T& x) noexcept : _x(x) {}  // NOLINT(google-explicit-constructor)
  /// The value x with the nd derivatives at d; nd is 0 or more.
  ///
  /// With `copy` and nd above 0 the derivatives are copied and the caller keeps d. Otherwise, so
  /// for nd = 0 whatever `copy` says, the number takes d over and releases it with `delete[]`: d
  /// is then null or comes from `new T[]`.
  MDeriv(const T& x, T* d, int nd, bool copy);
  MDeriv(const MDeriv& other);
  /// Leaves a constant behind.
  MDeriv(MDeriv&& other) noexcept;
  /// Reuses this number's array when the counts are equal. When memory runs out, this number
  /// stays as it was.
  MDeriv& operator=(const MDeriv& other);
  ~MDeriv();

  /// The value.
  T x() const { return _x; }
  /// The number of stored derivatives.
  int nd() const noexcept { return nd_; }

  /// The derivative with respect to variable i.
  ///
  /// From nd() on that is one zero which every number shares: never write to it, because the
  /// write would show in all of them. Throws `LvBadIndexException` without a message for a
  /// negative i.
  T& d(int i);
  const T& d(int i) const;

  /// Writes the value, then, when there are derivatives, "{", the derivatives separated by "," and
  /// "}", all without blanks and with the stream's formatting: 3{1,0}, and a constant as 3.
  std::ostream& print(std::ostream& os) const;

  /// a = a + b, a = a - b and a = a * b: the operation allocates its result's array, and so does
  /// the assignment when b has more derivatives. An operand may be the number itself.
  MDeriv& operator+=(const MDeriv& b) { return *this = sum(*this, b); }
  MDeriv& operator-=(const MDeriv& b) { return *this = difference(*this, b); }
  MDeriv& operator*=(const MDeriv& b) { return *this = product(*this, b); }
  /// The same result as a / b, in place: allocates only when b has more derivatives.
  MDeriv& operator/=(const MDeriv& b);

  /// Derivatives: -a'.
  friend MDeriv operator-(const MDeriv& a) { return negative(a); }
  /// Derivatives: a' + b'.
  friend MDeriv operator+(const MDeriv& a, const MDeriv& b) { return sum(a, b); }
  /// Derivatives: a' - b'.
  friend MDeriv operator-(const MDeriv& a, const MDeriv& b) { return difference(a, b); }
  /// Derivatives: a' * b + a * b'; where only one of them has the derivative, that product alone.
  friend MDeriv operator*(const MDeriv& a, const MDeriv& b) { return product(a, b); }
  /// Derivatives: (a' * b - a * b') / (b * b); where only a has the derivative a' / b, where only b
  /// has it -a * b' / (b * b).
  friend MDeriv operator/(const MDeriv& a, const MDeriv& b) { return quotient(a, b); }

  T _x{};

 private:
  // The operators forward to these, which are compiled inside the library: the flags of the
  // including program do not reach the arithmetic.
  static MDeriv negative(const MDeriv& a);
  static MDeriv sum(const MDeriv& a, const MDeriv& b);
  static MDeriv difference(const MDeriv& a, const MDeriv& b);
  static MDeriv product(const MDeriv& a, const MDeriv& b);
  static MDeriv quotient(const MDeriv& a, const MDeriv& b);
  static T& sharedZero();

  T* d_ = nullptr;  // nd_ derivatives, owned
  int nd_ = 0;
};

/// Derivatives: a' / (s + s) with s = sqrt(a), a division. At 0 they are infinite (NaN where a'
/// is 0).
template <class T>
MDeriv<T> sqrt(const MDeriv<T>& a);
/// The square a * a. Derivatives: (a + a) * a'.
template <class T>
MDeriv<T> sqr(const MDeriv<T>& a);
/// Derivatives: exp(a) * a'.
template <class T>
MDeriv<T> exp(const MDeriv<T>& a);
/// The natural logarithm. Derivatives: a' / a, a division.
template <class T>
MDeriv<T> log(const MDeriv<T>& a);
/// a to a plain power. Derivatives: (pow(a, p - 1) * p) * a'; so they are NaN for a = p = 0.
template <class T>
MDeriv<T> pow(const MDeriv<T>& a, double p);
/// Radians. Derivatives: cos(a) * a'.
template <class T>
MDeriv<T> sin(const MDeriv<T>& a);
/// Radians. Derivatives: -sin(a) * a'.
template <class T>
MDeriv<T> cos(const MDeriv<T>& a);
/// Radians. Derivatives: (t * t + 1) * a' with t = tan(a).
template <class T>
MDeriv<T> tan(const MDeriv<T>& a);
/// Radians. Derivatives: (1 / sqrt(1 - a * a)) * a'.
template <class T>
MDeriv<T> asin(const MDeriv<T>& a);
/// Radians. Derivatives: (-1 / sqrt(1 - a * a)) * a'.
template <class T>
MDeriv<T> acos(const MDeriv<T>& a);
/// Radians. Derivatives: (1 / (a * a + 1)) * a'.
template <class T>
MDeriv<T> atan(const MDeriv<T>& a);

extern template class MDeriv<double>;
extern template CORNERPIN_API MDeriv<double> sqrt(const MDeriv<double>& a);
extern template CORNERPIN_API MDeriv<double> sqr(const MDeriv<double>& a);
extern template CORNERPIN_API MDeriv<double> exp(const MDeriv<double>& a);
extern template CORNERPIN_API MDeriv<double> log(const MDeriv<double>& a);
extern template CORNERPIN_API MDeriv<double> pow(const MDeriv<double>& a, double p);
extern template CORNERPIN_API MDeriv<double> sin(const MDeriv<double>& a);
extern template CORNERPIN_API MDeriv<double> cos(const MDeriv<double>& a);
extern template CORNERPIN_API MDeriv<double> tan(const MDeriv<double>& a);
extern template CORNERPIN_API MDeriv<double> asin(const MDeriv<double>& a);
extern template CORNERPIN_API MDeriv<double> acos(const MDeriv<double>& a);
extern template CORNERPIN_API MDeriv<double> atan(const MDeriv<double>& a);

#endif
