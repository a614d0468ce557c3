// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/variance_ratio.h"

namespace cornerpin {

// With a and b pairs below and above the line and x = a / (a + b ratio) the tail is the incomplete
// beta function I_x(a, b) = x^a times the sum over j < b of (a + j - 1 over j) (1 - x)^j.
double chanceOfRatio(double ratio, std::size_t above, std::size_t below) {
  const double a = static_cast<double>(below);
  const double x = a / (a + static_cast<double>(above) * ratio);
  double term = 1.0;
  for (std::size_t i = 0; i < below; ++i) term *= x;
  double sum = 0.0;
  for (std::size_t j = 0; j < above; ++j) {
    sum += term;
    term *= (a + static_cast<double>(j)) / static_cast<double>(j + 1) * (1.0 - x);
  }
  return sum;
}

}  // namespace cornerpin
