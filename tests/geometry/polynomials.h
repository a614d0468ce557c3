// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_GEOMETRY_POLYNOMIALS_H
#define TESTS_GEOMETRY_POLYNOMIALS_H

#include <cstdio>
#include <string>
#include <vector>

namespace polynomials {

using Coefficients = std::vector<double>;  // highest power first

inline std::string text(const Coefficients& k) {
  std::string s;
  char number[40];
  for (double c : k) std::snprintf(number, sizeof number, "%a ", c), s += number;
  return s;
}

}  // namespace polynomials

#endif
