// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SUPPORT_DERIV_NUMBERS_H
#define TESTS_SUPPORT_DERIV_NUMBERS_H

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "cornerpin/deriv/deriv.h"
#include "tests/support/allocations.h"
#include "tests/support/same_bits.h"

// Derivative numbers that are easy to write down and to compare.
using Number = MDeriv<double>;
using Numbers = std::vector<double>;

inline Number number(double x, Numbers d = {}) {
  return Number(x, d.data(), static_cast<int>(d.size()), true);
}

inline Numbers derivatives(const Number& a) {
  Numbers d;
  for (int i = 0; i < a.nd(); ++i) d.push_back(a.d(i));
  return d;
}

inline ::testing::AssertionResult same(const Number& a, double x, const Numbers& d) {
  if (!sameBits(a.x(), x)) return sameBits(a.x(), x) << " as values";
  const Numbers stored = derivatives(a);
  if (stored.size() != d.size()) {
    return ::testing::AssertionFailure() << stored.size() << " derivatives, not " << d.size();
  }
  for (std::size_t i = 0; i < d.size(); ++i) {
    if (!sameBits(stored[i], d[i])) return sameBits(stored[i], d[i]) << " as derivative " << i;
  }
  return ::testing::AssertionSuccess();
}

inline ::testing::AssertionResult same(const Number& a, const Number& b) {
  return same(a, b.x(), derivatives(b));
}

inline std::string printed(const Number& a) {
  std::ostringstream os;
  a.print(os);
  return os.str();
}

inline std::size_t allocationsOf(const std::function<void()>& action) {
  const std::size_t before = allocations::made();
  action();
  return allocations::made() - before;
}

#endif
