// SPDX-License-Identifier: BSD-3-Clause
#include <immintrin.h>

#include "cornerpin/foundation/kernels/sum_squares.h"

namespace cornerpin::kernels {
namespace {

__m512 squares(const float* p) {
  const __m512 v = _mm512_loadu_ps(p);
  return _mm512_mul_ps(v, v);
}

// Adds neighbours within each quarter: two sums of a's quarter, then two of b's.
__m512 neighbours(__m512 a, __m512 b) {
  return _mm512_add_ps(_mm512_shuffle_ps(a, b, 0x88), _mm512_shuffle_ps(a, b, 0xdd));
}

float sumOf64(const float* p) {
  // Quarter q holds the sums of elements 4q .. 4q + 3 of each sixteen.
  const __m512 fours = neighbours(neighbours(squares(p), squares(p + 16)),
                                  neighbours(squares(p + 32), squares(p + 48)));
  const __m512 eights = _mm512_add_ps(fours, _mm512_shuffle_f32x4(fours, fours, 0xb1));
  const __m128 sixteens =
      _mm_add_ps(_mm512_castps512_ps128(eights), _mm512_extractf32x4_ps(eights, 2));
  const __m128 halves = _mm_hadd_ps(sixteens, sixteens);
  return _mm_cvtss_f32(_mm_hadd_ps(halves, halves));
}

float sumSquaresAvx512(const float* p, int n) {
  if (n < 64) return sumSquaresAvx2(p, n);
  if (n == 64) return sumOf64(p);
  return sumSquaresAvx512(p, n / 2) + sumSquaresAvx512(p + n / 2, n / 2);
}

}  // namespace

extern const SumSquaresKernel avx512SumSquares = {"avx512", sumSquaresAvx512};

}  // namespace cornerpin::kernels
