// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/positive_definite.h"

#include <algorithm>

#include "shot/fit/lanes.inc"

namespace cornerpin {

namespace {

constexpr std::size_t kSize = 8;

// By how much more than alone a parameter may vary beside the others: from there on, no more than
// three digits of the inverse are left.
constexpr double kMostInflation = 1e12;

// Exchanges parameter k of y = A x for the value that the others make of it. Done with all of them,
// A has turned into -inv(A). What the diagonal holds before an exchange is the pivot that
// eliminating the parameters before it leaves.
bool exchange(SquareMatrix<kSize>& a, std::size_t k) {
  std::array<double, kSize> column;
  std::copy_n(a.begin() + static_cast<std::ptrdiff_t>(k * kSize), kSize, column.begin());
  const double pivot = column[k];
  if (!(pivot > 0.0)) return false;
  const double part = 1.0 / pivot;
  std::array<double, kSize> share = column;
  for (double& element : share) element *= part;
  Lanes upper, lower;
  load(share.data(), upper);
  load(share.data() + 4, lower);
  for (std::size_t j = 0; j < kSize; ++j) {
    double* const other = a.data() + j * kSize;
    Lanes first, second;
    load(other, first);
    load(other + 4, second);
    store(first - column[j] * upper, other);
    store(second - column[j] * lower, other + 4);
  }
  for (std::size_t i = 0; i < kSize; ++i) a[k * kSize + i] = a[i * kSize + k] = share[i];
  a[k * kSize + k] = -part;
  return true;
}

}  // namespace

bool invertPositiveDefinite(SquareMatrix<8>& matrix, double* determinant) {
  for (std::size_t j = 0; j < kSize; ++j) {
    for (std::size_t i = 0; i < j; ++i) matrix[i * kSize + j] = matrix[j * kSize + i];
  }
  double product = 1.0;
  for (std::size_t k = 0; k < kSize; ++k) {
    product *= matrix[k * kSize + k];
    if (!exchange(matrix, k)) return false;
  }
  if (determinant) *determinant = product;
  for (std::size_t j = 0; j < kSize; ++j) {
    for (std::size_t i = 0; i <= j; ++i) {
      matrix[i * kSize + j] = matrix[j * kSize + i] = -matrix[j * kSize + i];
    }
  }
  return true;
}

bool invertDetermined(SquareMatrix<8>& matrix, double* determinant) {
  std::array<double, kSize> diagonal;
  for (std::size_t i = 0; i < kSize; ++i) diagonal[i] = matrix[i * kSize + i];
  if (!invertPositiveDefinite(matrix, determinant)) return false;
  for (std::size_t i = 0; i < kSize; ++i) {
    if (!(matrix[i * kSize + i] * diagonal[i] < kMostInflation)) return false;
  }
  return true;
}

}  // namespace cornerpin
