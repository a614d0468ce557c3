// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_FOUNDATION_KERNELS_SUM_SQUARES_H
#define CORNERPIN_FOUNDATION_KERNELS_SUM_SQUARES_H

#include "cornerpin/internal/kernel_variants.h"

// Private: `scalar` is the definition; every other variant returns the same bits.
namespace cornerpin::kernels {

// Sum of squares of n contiguous floats; n is a power of two, at least 4. The order of additions
// belongs to the result: neighbours, then pairs of pairs.
using SumSquares = float (*)(const float* p, int n);

struct SumSquaresKernel {
  const char* name;
  SumSquares run;
};

// What the variants call of each other.
float sumSquaresScalar(const float* p, int n);
float sumSquaresAvx2(const float* p, int n);

internal::KernelVariants<SumSquaresKernel>& sumSquaresVariants();

// The variant in use.
SumSquares sumSquares();

}  // namespace cornerpin::kernels

#endif
