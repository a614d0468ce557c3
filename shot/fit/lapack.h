// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FIT_LAPACK_H
#define SHOT_FIT_LAPACK_H

#include <array>
#include <cstddef>

namespace cornerpin {

/// An N x N matrix, column by column.
template <std::size_t N>
using SquareMatrix = std::array<double, N * N>;

/// The sum of row' * row over the rows of a linear system with N columns, and its eigenvalues: the
/// squares of the system's singular values.
template <std::size_t N>
struct NormalMatrix {
  using Row = std::array<double, N>;

  void add(const Row& row) {
    for (std::size_t j = 0; j < N; ++j) {
      for (std::size_t i = 0; i < N; ++i) elements[j * N + i] += row[i] * row[j];
    }
  }

  /// Fills `eigenvalues` in increasing order and replaces `elements` by the eigenvectors, the
  /// first of them in the first N elements. False when LAPACK finds none. For N of 8 and 9.
  bool decompose();

  SquareMatrix<N> elements{};
  Row eigenvalues{};
};

}  // namespace cornerpin

#endif
