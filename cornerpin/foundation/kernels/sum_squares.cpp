// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/foundation/kernels/sum_squares.h"

#include "cornerpin/internal/cpu.h"

namespace cornerpin::kernels {

float sumSquaresScalar(const float* p, int n) {
  if (n == 4) return (p[0] * p[0] + p[1] * p[1]) + (p[2] * p[2] + p[3] * p[3]);
  return sumSquaresScalar(p, n / 2) + sumSquaresScalar(p + n / 2, n / 2);
}

int sumSquaresVariants(SumSquaresVariant variants[3]) {
  int count = 0;
  variants[count++] = {"scalar", sumSquaresScalar};
#ifdef CORNERPIN_HAVE_AVX2
  if (internal::hasAvx2()) variants[count++] = {"avx2", sumSquaresAvx2};
#endif
#ifdef CORNERPIN_HAVE_AVX512
  if (internal::hasAvx512()) variants[count++] = {"avx512", sumSquaresAvx512};
#endif
  return count;
}

namespace {

SumSquares best() {
  SumSquaresVariant variants[3];
  return variants[sumSquaresVariants(variants) - 1].run;
}

SumSquares& chosen() {
  static SumSquares variant = best();
  return variant;
}

}  // namespace

SumSquares sumSquares() { return chosen(); }

void useSumSquares(SumSquares variant) { chosen() = variant != nullptr ? variant : best(); }

}  // namespace cornerpin::kernels
