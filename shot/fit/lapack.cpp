// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/lapack.h"

extern "C" {
void dsyev_(const char* job, const char* triangle, const int* n, double* a, const int* lda,
            double* eigenvalues, double* work, const int* lwork, int* info, std::size_t jobLength,
            std::size_t triangleLength);
}

namespace cornerpin {

template <std::size_t N>
bool NormalMatrix<N>::decompose() {
  const int n = static_cast<int>(N);
  std::array<double, 34 * N> work{};  // what dsyev asks for at blocks of 32
  const int workSize = static_cast<int>(work.size());
  int info = 0;
  dsyev_("V", "U", &n, elements.data(), &n, eigenvalues.data(), work.data(), &workSize, &info, 1,
         1);
  return info == 0;
}

template struct NormalMatrix<8>;
template struct NormalMatrix<9>;

}  // namespace cornerpin
