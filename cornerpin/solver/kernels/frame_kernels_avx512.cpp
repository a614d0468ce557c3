// SPDX-License-Identifier: BSD-3-Clause
#include <immintrin.h>

#include <cstddef>

#include "cornerpin/solver/kernels/frame_kernels_avx2.h"

// The frame's system with twice the lanes; everything else is the AVX2 variant's.
namespace cornerpin::kernels {
namespace {

// Eight gradients that round to float after every row. A fused multiply-add rounds the exact sum
// to float at once; the definition rounds it to double and then to float, which is nearly always
// the same, and in any case known at the end: `defined` is the definition's step from the same g.
struct Gradient {
  __m256 g = _mm256_setzero_ps();
  __m256i deviations = _mm256_setzero_si256();

  void add(__m256 row, float difference) {
    // The product of two floats is exact in double.
    const __m512d sum = _mm512_fmadd_pd(
        _mm512_cvtps_pd(row), _mm512_set1_pd(static_cast<double>(difference)), _mm512_cvtps_pd(g));
    const __m256 defined = _mm512_cvtpd_ps(sum);
    g = _mm256_fmadd_ps(row, _mm256_set1_ps(difference), g);
    const __m256i deviation =
        _mm256_xor_si256(_mm256_castps_si256(defined), _mm256_castps_si256(g));
    deviations = _mm256_or_si256(deviations, deviation);
  }
  bool isDefined() const { return _mm256_testz_si256(deviations, deviations) != 0; }
};

// The nonzero elements of a row: linear p and q, translation r, perspective c and d. In the rows of
// x they are the elements 0, 3, 6, 2 and 5, in those of y 1, 4, 7, 2 and 5.
struct Sums {
  __m512d x = _mm512_setzero_pd();       // pp pq pr pc dp dq dr qq of x
  __m512d y = _mm512_setzero_pd();       // the same of y
  __m512d rest = _mm512_setzero_pd();    // qr qc rr rc of x, then of y
  __m256d shared = _mm256_setzero_pd();  // cc cd dd, x before y

  void add(__m256 rowX, __m256 rowY) {
    const __m256 px = _mm256_permutevar8x32_ps(rowX, _mm256_setr_epi32(0, 0, 0, 0, 5, 5, 5, 3));
    const __m256 qx = _mm256_permutevar8x32_ps(rowX, _mm256_setr_epi32(0, 3, 6, 2, 0, 3, 6, 3));
    const __m256 py = _mm256_permutevar8x32_ps(rowY, _mm256_setr_epi32(1, 1, 1, 1, 5, 5, 5, 4));
    const __m256 qy = _mm256_permutevar8x32_ps(rowY, _mm256_setr_epi32(1, 4, 7, 2, 1, 4, 7, 4));
    x = _mm512_add_pd(x, _mm512_cvtps_pd(_mm256_mul_ps(px, qx)));
    y = _mm512_add_pd(y, _mm512_cvtps_pd(_mm256_mul_ps(py, qy)));
    // From 8 on, an index means rowY.
    const __m256i a = _mm256_setr_epi32(3, 3, 6, 6, 12, 12, 15, 15);
    const __m256i b = _mm256_setr_epi32(6, 2, 6, 2, 15, 10, 15, 10);
    rest =
        _mm512_add_pd(rest, _mm512_cvtps_pd(_mm256_mul_ps(_mm256_permutex2var_ps(rowX, a, rowY),
                                                          _mm256_permutex2var_ps(rowX, b, rowY))));
    const __m256i c = _mm256_setr_epi32(2, 2, 5, 5, 10, 10, 13, 13);
    const __m256i d = _mm256_setr_epi32(2, 5, 5, 5, 10, 13, 13, 13);
    const __m256 both =
        _mm256_mul_ps(_mm256_permutex2var_ps(rowX, c, rowY), _mm256_permutex2var_ps(rowX, d, rowY));
    shared = _mm256_add_pd(shared, _mm256_cvtps_pd(_mm256_castps256_ps128(both)));
    shared = _mm256_add_pd(shared, _mm256_cvtps_pd(_mm256_extractf128_ps(both, 1)));
  }

  // Writes the lower triangle.
  void store(double* a) const {
    // Row and column of every lane, in the order of the members.
    constexpr int kRow[27] = {0, 3, 6, 2, 5, 5, 6, 3, 1, 4, 7, 2, 5, 5,
                              7, 4, 6, 3, 6, 6, 7, 4, 7, 7, 2, 5, 5};
    constexpr int kColumn[27] = {0, 0, 0, 0, 0, 3, 5, 3, 1, 1, 1, 1, 1, 4,
                                 5, 4, 3, 2, 6, 2, 4, 2, 7, 2, 2, 2, 5};
    double lanes[28];
    _mm512_storeu_pd(lanes, x);
    _mm512_storeu_pd(lanes + 8, y);
    _mm512_storeu_pd(lanes + 16, rest);
    _mm256_storeu_pd(lanes + 24, shared);
    for (int e = 0; e < kParameters * kParameters; ++e) a[e] = 0.0;
    for (int e = 0; e < 27; ++e) a[kRow[e] * kParameters + kColumn[e]] = lanes[e];
  }
};

void frameSystem(const float* h, const ActiveTracks& tracks, const float* values, const float* goal,
                 float step, double* a, float* g) {
  alignas(64) float rows[2 * kTracksPerBlock * kParameters];
  Sums sums;
  Gradient gradient;
  for (std::ptrdiff_t first = 0; first < tracks.count; first += kTracksPerBlock) {
    const ActiveTracks block = blockOf(tracks, first);
    const float* blockValues = values + 2 * first;
    const float* blockGoal = goal + 2 * first;
    avx2::differences(h, block, blockValues, step, rows);
    for (std::ptrdiff_t k = 0; k < 2 * std::ptrdiff_t{block.count}; k += 2) {
      const __m256 x = _mm256_load_ps(rows + k * kParameters);
      const __m256 y = _mm256_load_ps(rows + (k + 1) * kParameters);
      sums.add(x, y);
      gradient.add(x, blockGoal[k] - blockValues[k]);
      gradient.add(y, blockGoal[k + 1] - blockValues[k + 1]);
    }
  }
  if (!gradient.isDefined()) {
    avx2::frameSystem(h, tracks, values, goal, step, a, g);
    return;
  }
  sums.store(a);
  _mm256_storeu_ps(g, gradient.g);
}

}  // namespace

extern const FrameKernels avx512FrameKernels = {"avx512", avx2::project, avx2::differences,
                                                avx2::normalSystem, frameSystem};

}  // namespace cornerpin::kernels
