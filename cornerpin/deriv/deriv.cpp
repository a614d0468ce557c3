// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/deriv/deriv.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <ostream>
#include <utility>

namespace {

// An array of n derivatives to be filled in; null for none.
template <class T>
std::unique_ptr<T[]> newDerivatives(int n) {
  return std::unique_ptr<T[]>(n == 0 ? nullptr : new T[static_cast<std::size_t>(n)]);
}

// The number with this value and derivatives derivative(0) .. derivative(n - 1).
template <class T, class Derivative>
MDeriv<T> filled(const T& value, int n, const Derivative& derivative) {
  std::unique_ptr<T[]> d = newDerivatives<T>(n);
  for (int i = 0; i < n; ++i) d[static_cast<std::size_t>(i)] = derivative(i);
  return MDeriv<T>(value, d.release(), n, false);
}

// f(a) by the chain rule with the factor f'(a).
template <class T>
MDeriv<T> chained(const T& value, const T& factor, const MDeriv<T>& a) {
  return filled(value, a.nd(), [&](int i) { return factor * a.d(i); });
}

// The derivatives of a / b. Each case has a form of its own, and the forms fix the last bit: where
// only the numerator varies it is one division, not the whole quotient rule.
template <class T>
T quotientRule(const T& ax, const T& da, const T& bx, const T& db) {
  return (da * bx - ax * db) / (bx * bx);
}
template <class T>
T quotientRuleNumeratorOnly(const T& da, const T& bx) {
  return da / bx;
}
template <class T>
T quotientRuleDenominatorOnly(const T& ax, const T& bx, const T& db) {
  return -ax * db / (bx * bx);
}

}  // namespace

template <class T>
MDeriv<T>::MDeriv(const T& x, T* d, int nd, bool copy) : _x(x), d_(d), nd_(nd) {
  if (!copy || nd == 0) return;
  d_ = newDerivatives<T>(nd).release();
  std::copy(d, d + nd, d_);
}

template <class T>
MDeriv<T>::MDeriv(const MDeriv& other)
    : _x(other._x), d_(newDerivatives<T>(other.nd_).release()), nd_(other.nd_) {
  std::copy(other.d_, other.d_ + nd_, d_);
}

template <class T>
MDeriv<T>::MDeriv(MDeriv&& other) noexcept : _x(other._x), d_(other.d_), nd_(other.nd_) {
  other.d_ = nullptr;
  other.nd_ = 0;
}

template <class T>
MDeriv<T>& MDeriv<T>::operator=(const MDeriv& other) {
  if (this == &other) return *this;
  if (nd_ != other.nd_) {
    std::unique_ptr<T[]> d = newDerivatives<T>(other.nd_);
    delete[] d_;
    d_ = d.release();
    nd_ = other.nd_;
  }
  _x = other._x;
  std::copy(other.d_, other.d_ + nd_, d_);
  return *this;
}

template <class T>
MDeriv<T>::~MDeriv() {
  delete[] d_;
}

template <class T>
T& MDeriv<T>::sharedZero() {
  static T zero{};
  return zero;
}

template <class T>
T& MDeriv<T>::d(int i) {
  if (i < 0) throw LvBadIndexException("");
  return i < nd_ ? d_[i] : sharedZero();
}

template <class T>
const T& MDeriv<T>::d(int i) const {
  if (i < 0) throw LvBadIndexException("");
  return i < nd_ ? d_[i] : sharedZero();
}

template <class T>
std::ostream& MDeriv<T>::print(std::ostream& os) const {
  os << _x;
  for (int i = 0; i < nd_; ++i) os << (i == 0 ? "{" : ",") << d_[i];
  if (nd_ != 0) os << "}";
  return os;
}

template <class T>
MDeriv<T> MDeriv<T>::negative(const MDeriv& a) {
  return filled(-a._x, a.nd_, [&](int i) { return -a.d_[i]; });
}

template <class T>
MDeriv<T> MDeriv<T>::sum(const MDeriv& a, const MDeriv& b) {
  return filled(a._x + b._x, std::max(a.nd_, b.nd_), [&](int i) {
    if (i >= b.nd_) return a.d_[i];
    if (i >= a.nd_) return b.d_[i];
    return a.d_[i] + b.d_[i];
  });
}

template <class T>
MDeriv<T> MDeriv<T>::difference(const MDeriv& a, const MDeriv& b) {
  return filled(a._x - b._x, std::max(a.nd_, b.nd_), [&](int i) {
    if (i >= b.nd_) return a.d_[i];
    if (i >= a.nd_) return -b.d_[i];
    return a.d_[i] - b.d_[i];
  });
}

template <class T>
MDeriv<T> MDeriv<T>::product(const MDeriv& a, const MDeriv& b) {
  return filled(a._x * b._x, std::max(a.nd_, b.nd_), [&](int i) {
    if (i >= b.nd_) return a.d_[i] * b._x;
    if (i >= a.nd_) return a._x * b.d_[i];
    return a.d_[i] * b._x + a._x * b.d_[i];
  });
}

template <class T>
MDeriv<T> MDeriv<T>::quotient(const MDeriv& a, const MDeriv& b) {
  return filled(a._x / b._x, std::max(a.nd_, b.nd_), [&](int i) {
    if (i >= b.nd_) return quotientRuleNumeratorOnly(a.d_[i], b._x);
    if (i >= a.nd_) return quotientRuleDenominatorOnly(a._x, b._x, b.d_[i]);
    return quotientRule(a._x, a.d_[i], b._x, b.d_[i]);
  });
}

template <class T>
MDeriv<T>& MDeriv<T>::operator/=(const MDeriv& b) {
  if (nd_ < b.nd_) {
    MDeriv result = quotient(*this, b);
    std::swap(d_, result.d_);
    std::swap(nd_, result.nd_);
    _x = result._x;
    return *this;
  }
  for (int i = b.nd_; i < nd_; ++i) d_[i] = quotientRuleNumeratorOnly(d_[i], b._x);
  for (int i = 0; i < b.nd_; ++i) d_[i] = quotientRule(_x, d_[i], b._x, b.d_[i]);
  _x = _x / b._x;  // last: the derivatives need the old value, and b may be this number
  return *this;
}

template <class T>
MDeriv<T> sqrt(const MDeriv<T>& a) {
  const T s = std::sqrt(a._x);
  return filled(s, a.nd(), [&](int i) { return a.d(i) / (s + s); });
}

template <class T>
MDeriv<T> sqr(const MDeriv<T>& a) {
  return chained<T>(a._x * a._x, a._x + a._x, a);
}

template <class T>
MDeriv<T> exp(const MDeriv<T>& a) {
  const T e = std::exp(a._x);
  return chained(e, e, a);
}

template <class T>
MDeriv<T> log(const MDeriv<T>& a) {
  const T value = std::log(a._x);
  return filled(value, a.nd(), [&](int i) { return a.d(i) / a._x; });
}

template <class T>
MDeriv<T> pow(const MDeriv<T>& a, double p) {
  return chained<T>(std::pow(a._x, p), std::pow(a._x, p - 1) * p, a);
}

template <class T>
MDeriv<T> sin(const MDeriv<T>& a) {
  return chained<T>(std::sin(a._x), std::cos(a._x), a);
}

template <class T>
MDeriv<T> cos(const MDeriv<T>& a) {
  return chained<T>(std::cos(a._x), -std::sin(a._x), a);
}

template <class T>
MDeriv<T> tan(const MDeriv<T>& a) {
  const T t = std::tan(a._x);
  return chained<T>(t, t * t + 1.0, a);
}

template <class T>
MDeriv<T> asin(const MDeriv<T>& a) {
  return chained<T>(std::asin(a._x), 1.0 / std::sqrt(1.0 - a._x * a._x), a);
}

template <class T>
MDeriv<T> acos(const MDeriv<T>& a) {
  return chained<T>(std::acos(a._x), -1.0 / std::sqrt(1.0 - a._x * a._x), a);
}

template <class T>
MDeriv<T> atan(const MDeriv<T>& a) {
  return chained<T>(std::atan(a._x), 1.0 / (a._x * a._x + 1.0), a);
}

template class MDeriv<double>;
template MDeriv<double> sqrt(const MDeriv<double>& a);
template MDeriv<double> sqr(const MDeriv<double>& a);
template MDeriv<double> exp(const MDeriv<double>& a);
template MDeriv<double> log(const MDeriv<double>& a);
template MDeriv<double> pow(const MDeriv<double>& a, double p);
template MDeriv<double> sin(const MDeriv<double>& a);
template MDeriv<double> cos(const MDeriv<double>& a);
template MDeriv<double> tan(const MDeriv<double>& a);
template MDeriv<double> asin(const MDeriv<double>& a);
template MDeriv<double> acos(const MDeriv<double>& a);
template MDeriv<double> atan(const MDeriv<double>& a);
