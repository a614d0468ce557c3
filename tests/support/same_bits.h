// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SUPPORT_SAME_BITS_H
#define TESTS_SUPPORT_SAME_BITS_H

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>

// Equal to the last bit, the sign of zero included. All NaNs are taken for equal: which operand's
// payload a NaN keeps is the processor's choice.
template <class T>
::testing::AssertionResult sameBits(T a, T b) {
  if (std::isnan(a) && std::isnan(b)) return ::testing::AssertionSuccess();
  if (std::memcmp(&a, &b, sizeof a) == 0) return ::testing::AssertionSuccess();
  char text[100];
  std::snprintf(text, sizeof text, "%a and %a", static_cast<double>(a), static_cast<double>(b));
  return ::testing::AssertionFailure() << text;
}

#endif
