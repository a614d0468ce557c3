// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_FOUNDATION_KERNELS_SUM_SQUARES_H
#define CORNERPIN_FOUNDATION_KERNELS_SUM_SQUARES_H

#include "cornerpin/export.h"

// Private: `scalar` is the definition; every other variant returns the same bits.
namespace cornerpin::kernels {

// Sum of squares of n contiguous floats; n is a power of two, at least 4. The order of additions
// belongs to the result: neighbours, then pairs of pairs.
using SumSquares = float (*)(const float* p, int n);

struct SumSquaresVariant {
  const char* name;
  SumSquares run;
};

float sumSquaresScalar(const float* p, int n);
float sumSquaresAvx2(const float* p, int n);
float sumSquaresAvx512(const float* p, int n);

// Every variant that this processor runs, the definition first and the best one last; returns how
// many.
CORNERPIN_API int sumSquaresVariants(SumSquaresVariant variants[3]);

// The variant in use: the best one, unless a test has chosen another.
SumSquares sumSquares();

// For tests: the variant to use from now on; null goes back to the best one.
CORNERPIN_API void useSumSquares(SumSquares variant);

}  // namespace cornerpin::kernels

#endif
