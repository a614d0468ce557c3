// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/foundation/kernels/sum_squares.h"

#include <immintrin.h>

namespace cornerpin::kernels {
namespace {

__m256 squares(const float* p) {
  const __m256 v = _mm256_loadu_ps(p);
  return _mm256_mul_ps(v, v);
}

// A horizontal addition adds neighbours; halves of a register are 4 elements apart.

float sumOf16(const float* p) {
  const __m256 pairs = _mm256_hadd_ps(squares(p), squares(p + 8));
  const __m256 fours = _mm256_hadd_ps(pairs, pairs);
  const __m128 eights = _mm_add_ps(_mm256_castps256_ps128(fours), _mm256_extractf128_ps(fours, 1));
  return _mm_cvtss_f32(_mm_hadd_ps(eights, eights));
}

float sumOf32(const float* p) {
  const __m256 first = _mm256_hadd_ps(squares(p), squares(p + 8));
  const __m256 second = _mm256_hadd_ps(squares(p + 16), squares(p + 24));
  const __m256 fours = _mm256_hadd_ps(first, second);
  const __m128 eights = _mm_add_ps(_mm256_castps256_ps128(fours), _mm256_extractf128_ps(fours, 1));
  const __m128 sixteens = _mm_hadd_ps(eights, eights);
  return _mm_cvtss_f32(_mm_hadd_ps(sixteens, sixteens));
}

}  // namespace

float sumSquaresAvx2(const float* p, int n) {
  if (n < 16) return sumSquaresScalar(p, n);
  if (n == 16) return sumOf16(p);
  if (n == 32) return sumOf32(p);
  return sumSquaresAvx2(p, n / 2) + sumSquaresAvx2(p + n / 2, n / 2);
}

extern const SumSquaresKernel avx2SumSquares = {"avx2", sumSquaresAvx2};

}  // namespace cornerpin::kernels
