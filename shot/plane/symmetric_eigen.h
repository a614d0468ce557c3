// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_PLANE_SYMMETRIC_EIGEN_H
#define SHOT_PLANE_SYMMETRIC_EIGEN_H

#include <array>
#include <cstddef>

extern "C" void dsyev_(const char* job, const char* triangle, const int* n, double* a,
                       const int* lda, double* eigenvalues, double* work, const int* lwork,
                       int* info, std::size_t jobLength, std::size_t triangleLength);

namespace cornerpin {

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
  /// first of them in the first N elements. False when LAPACK finds none.
  bool decompose() {
    const int n = static_cast<int>(N);
    std::array<double, 34 * N> work{};
    const int workSize = static_cast<int>(work.size());
    int info = 0;
    dsyev_("V", "U", &n, elements.data(), &n, eigenvalues.data(), work.data(), &workSize, &info, 1,
           1);
    return info == 0;
  }

  std::array<double, N * N> elements{};
  Row eigenvalues{};
};

}  // namespace cornerpin

#endif
