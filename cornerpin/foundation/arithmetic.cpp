// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/foundation/arithmetic.h"

#include "cornerpin/foundation/elementwise.h"

using cornerpin::internal::forEachElement;

MGenVector<float> operator+(const MGenVector<float>& a, const MGenVector<float>& b) {
  static const auto op = [](float x, float y) { return y + x; };
  MGenVector<float> result(a.length);
  forEachElement(result, a, b, op);
  return result;
}

MGenVector<float> operator-(const MGenVector<float>& a, const MGenVector<float>& b) {
  static const auto op = [](float x, float y) { return x - y; };
  MGenVector<float> result(a.length);
  forEachElement(result, a, b, op);
  return result;
}

MGenVector<float> operator/(const MGenVector<float>& v, float s) {
  static const auto op = [](float x, float divisor) { return x / divisor; };
  MGenVector<float> result(v.length);
  forEachElement(result, v, s, op);
  return result;
}

template <>
MGenVector<float>& MGenVector<float>::operator*=(const MGenVector<float>& w) {
  static const auto op = [](float x, float y) { return x * y; };
  forEachElement(*this, *this, w, op);
  return *this;
}

template <>
MGenVector<float>& MGenVector<float>::operator/=(float s) {
  static const auto op = [](float x, float divisor) { return x / divisor; };
  forEachElement(*this, *this, s, op);
  return *this;
}
