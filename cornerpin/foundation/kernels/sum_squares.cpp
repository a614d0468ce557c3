// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/foundation/kernels/sum_squares.h"

#include "cornerpin/internal/cpu.h"

namespace cornerpin::kernels {

extern const SumSquaresKernel avx2SumSquares;
extern const SumSquaresKernel avx512SumSquares;

float sumSquaresScalar(const float* p, int n) {
  if (n == 4) return (p[0] * p[0] + p[1] * p[1]) + (p[2] * p[2] + p[3] * p[3]);
  return sumSquaresScalar(p, n / 2) + sumSquaresScalar(p + n / 2, n / 2);
}

static const SumSquaresKernel scalarSumSquares = {"scalar", sumSquaresScalar};

internal::KernelVariants<SumSquaresKernel>& sumSquaresVariants() {
  static internal::KernelVariants<SumSquaresKernel> variants = {
      {scalarSumSquares, true},
#ifdef CORNERPIN_HAVE_AVX2
      {avx2SumSquares, internal::hasAvx2()},
#endif
#ifdef CORNERPIN_HAVE_AVX512
      {avx512SumSquares, internal::hasAvx512()},
#endif
  };
  return variants;
}

SumSquares sumSquares() { return sumSquaresVariants().inUse().run; }

}  // namespace cornerpin::kernels
