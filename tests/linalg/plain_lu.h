// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_LINALG_PLAIN_LU_H
#define TESTS_LINALG_PLAIN_LU_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

#include "cornerpin/foundation/matrix.h"

// A second, plain factorisation, in extended precision.
namespace plain_lu {

using Wide = std::vector<std::vector<long double>>;

template <class T>
Wide widened(const MGenMatrix<T>& m) {
  Wide wide;
  for (int i = 0; i < m.rows; ++i) {
    wide.emplace_back();
    for (int j = 0; j < m.cols; ++j) wide.back().push_back(m(i, j));
  }
  return wide;
}

struct PlainFactors {
  Wide lu;                        // multipliers below the diagonal, U on and above it
  std::vector<std::size_t> rows;  // the row of the original that each row holds
};

inline PlainFactors plainFactors(Wide lu) {
  const std::size_t m = lu.size();
  const std::size_t n = lu[0].size();
  PlainFactors factors{std::move(lu), std::vector<std::size_t>(m)};
  for (std::size_t i = 0; i < m; ++i) factors.rows[i] = i;
  Wide& a = factors.lu;
  for (std::size_t k = 0; k < std::min(m, n); ++k) {
    std::size_t pivot = k;
    for (std::size_t i = k; i < m; ++i) {
      if (std::fabs(a[i][k]) > std::fabs(a[pivot][k])) pivot = i;
    }
    std::swap(a[k], a[pivot]);
    std::swap(factors.rows[k], factors.rows[pivot]);
    for (std::size_t i = k + 1; i < m; ++i) {
      a[i][k] /= a[k][k];
      for (std::size_t j = k + 1; j < n; ++j) a[i][j] -= a[i][k] * a[k][j];
    }
  }
  return factors;
}

// Solves for one column of the identity at a time.
inline Wide plainInverse(const Wide& a) {
  const PlainFactors f = plainFactors(a);
  const std::size_t n = a.size();
  Wide inverse(n, std::vector<long double>(n));
  for (std::size_t column = 0; column < n; ++column) {
    std::vector<long double> x(n);
    for (std::size_t i = 0; i < n; ++i) {
      x[i] = f.rows[i] == column ? 1 : 0;
      for (std::size_t j = 0; j < i; ++j) x[i] -= f.lu[i][j] * x[j];
    }
    for (std::size_t i = n; i-- > 0;) {
      for (std::size_t j = i + 1; j < n; ++j) x[i] -= f.lu[i][j] * x[j];
      x[i] /= f.lu[i][i];
    }
    for (std::size_t i = 0; i < n; ++i) inverse[i][column] = x[i];
  }
  return inverse;
}

inline long double norm1(const Wide& a) {
  long double largest = 0;
  for (std::size_t j = 0; j < a[0].size(); ++j) {
    long double sum = 0;
    for (const auto& row : a) sum += std::fabs(row[j]);
    largest = std::max(largest, sum);
  }
  return largest;
}

inline Wide minus(Wide a, const Wide& b) {
  for (std::size_t i = 0; i < a.size(); ++i) {
    for (std::size_t j = 0; j < a[0].size(); ++j) a[i][j] -= b[i][j];
  }
  return a;
}

inline Wide identityMinusProduct(const Wide& x, const Wide& a) {
  const std::size_t n = a.size();
  Wide result(n, std::vector<long double>(n));
  for (std::size_t i = 0; i < n; ++i) {
    result[i][i] = 1;
    for (std::size_t k = 0; k < n; ++k) {
      for (std::size_t j = 0; j < n; ++j) result[i][j] -= x[i][k] * a[k][j];
    }
  }
  return result;
}

}  // namespace plain_lu

#endif
