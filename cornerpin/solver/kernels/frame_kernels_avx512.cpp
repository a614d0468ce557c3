// SPDX-License-Identifier: BSD-3-Clause
#include <immintrin.h>

#include <cstddef>

#include "cornerpin/solver/kernels/frame_kernels_avx2.h"

// The frame's system with both rows of a track in one register; everything else is the AVX2
// variant's.
//
// The nonzero elements of a row are linear p and q, translation r, perspective c and d: the
// elements 0, 3, 6, 2 and 5 in the rows of x, 1, 4, 7, 2 and 5 in those of y. A register `rows`
// holds
//   xp yp xq yq xr yr xc xd   0 0 0 0 0 0 yc yd
namespace cornerpin::kernels {
namespace {

constexpr int kXp = 0, kYp = 1, kXq = 2, kYq = 3, kXr = 4, kYr = 5, kXc = 6, kXd = 7;
constexpr int kYc = 14, kYd = 15;

// A pair of numbers, of x and of y, in the lanes of that coordinate.
__m512 spread(const float* pair) {
  const __m512i coordinate = _mm512_setr_epi32(0, 1, 0, 1, 0, 1, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1);
  const __m128i both = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(pair));
  return _mm512_permutexvar_ps(coordinate, _mm512_castsi512_ps(_mm512_castsi128_si512(both)));
}

// The transforms whose projections the differences take, one per lane: element p, q, r, c or d is
// shifted, or none.
struct Shifted {
  Shifted(const float* h, float step) {
    const auto shift = [step](__m512 element, int first, int second) {
      const auto lanes = static_cast<__mmask16>(1 << first | 1 << second);
      return _mm512_mask_add_ps(element, lanes, element, _mm512_set1_ps(step));
    };
    p = shift(spread(h), kXp, kYp);
    q = shift(spread(h + 3), kXq, kYq);
    r = shift(spread(h + 6), kXr, kYr);
    c = shift(_mm512_set1_ps(h[2]), kXc, kYc);
    d = shift(_mm512_set1_ps(h[5]), kXd, kYd);
    last = _mm512_set1_ps(h[8]);
  }
  __m512 project(float trackX, float trackY, float weight) const {
    const __m512 x = _mm512_set1_ps(trackX);
    const __m512 y = _mm512_set1_ps(trackY);
    const __m512 u = affine(x, p, y, q, r);
    const __m512 s = affine(x, c, y, d, last);
    return _mm512_div_ps(_mm512_mul_ps(_mm512_set1_ps(weight), u), s);
  }

 private:
  // (x * a + y * b) + e
  static __m512 affine(__m512 x, __m512 a, __m512 y, __m512 b, __m512 e) {
    return _mm512_add_ps(_mm512_add_ps(_mm512_mul_ps(x, a), _mm512_mul_ps(y, b)), e);
  }
  __m512 p, q, r, c, d, last;
};

// Eight gradients that round to float after every row. A fused multiply-add rounds the exact sum
// to float at once; the definition rounds it to double and then to float, which is nearly always
// the same, and in any case known at the end: `defined` is the definition's step from the same g.
struct Gradient {
  __m256 g = _mm256_setzero_ps();  // of p p q q r r c d
  __m256i deviations = _mm256_setzero_si256();

  void add(__m256 row, __m256 difference) {
    // The product of two floats is exact in double.
    const __m512d sum =
        _mm512_fmadd_pd(_mm512_cvtps_pd(row), _mm512_cvtps_pd(difference), _mm512_cvtps_pd(g));
    const __m256 defined = _mm512_cvtpd_ps(sum);
    g = _mm256_fmadd_ps(row, difference, g);
    const __m256i deviation =
        _mm256_xor_si256(_mm256_castps_si256(defined), _mm256_castps_si256(g));
    deviations = _mm256_or_si256(deviations, deviation);
  }
  bool isDefined() const { return _mm256_testz_si256(deviations, deviations) != 0; }
  void store(float* to) const {
    _mm256_storeu_ps(to, _mm256_permutevar8x32_ps(g, _mm256_setr_epi32(0, 1, 6, 2, 3, 7, 4, 5)));
  }
};

struct Sums {
  __m512d x = _mm512_setzero_pd();       // pp pq pr pc pd qq qr qc of x
  __m512d y = _mm512_setzero_pd();       // the same of y
  __m512d rest = _mm512_setzero_pd();    // qd rr rc rd of x, then of y
  __m256d shared = _mm256_setzero_pd();  // cc cd dd, x before y

  void add(__m512 rows) {
    const __m512 a = products(rows,
                              _mm512_setr_epi32(kXp, kXp, kXp, kXp, kXp, kXq, kXq, kXq,  //
                                                kYp, kYp, kYp, kYp, kYp, kYq, kYq, kYq),
                              _mm512_setr_epi32(kXp, kXq, kXr, kXc, kXd, kXq, kXr, kXc,  //
                                                kYp, kYq, kYr, kYc, kYd, kYq, kYr, kYc));
    const __m512 b = products(rows,
                              _mm512_setr_epi32(kXq, kXr, kXr, kXr, kYq, kYr, kYr, kYr,  //
                                                kXc, kXc, kXd, kXd, kYc, kYc, kYd, kYd),
                              _mm512_setr_epi32(kXd, kXr, kXc, kXd, kYd, kYr, kYc, kYd,  //
                                                kXc, kXd, kXd, kXd, kYc, kYd, kYd, kYd));
    alignas(64) float product[32];
    _mm512_store_ps(product, a);
    _mm512_store_ps(product + 16, b);
    x = _mm512_add_pd(x, _mm512_cvtps_pd(_mm256_load_ps(product)));
    y = _mm512_add_pd(y, _mm512_cvtps_pd(_mm256_load_ps(product + 8)));
    rest = _mm512_add_pd(rest, _mm512_cvtps_pd(_mm256_load_ps(product + 16)));
    shared = _mm256_add_pd(shared, _mm256_cvtps_pd(_mm_load_ps(product + 24)));
    shared = _mm256_add_pd(shared, _mm256_cvtps_pd(_mm_load_ps(product + 28)));
  }

  // Writes the lower triangle.
  void store(double* to) const {
    // Row and column of every lane, in the order of the members.
    constexpr int kRow[27] = {0, 3, 6, 2, 5, 3, 6, 3, 1, 4, 7, 2, 5, 4,
                              7, 4, 5, 6, 6, 6, 5, 7, 7, 7, 2, 5, 5};
    constexpr int kColumn[27] = {0, 0, 0, 0, 0, 3, 3, 2, 1, 1, 1, 1, 1, 4,
                                 4, 2, 3, 6, 2, 5, 4, 7, 2, 5, 2, 2, 5};
    double lanes[28];
    _mm512_storeu_pd(lanes, x);
    _mm512_storeu_pd(lanes + 8, y);
    _mm512_storeu_pd(lanes + 16, rest);
    _mm256_storeu_pd(lanes + 24, shared);
    for (std::ptrdiff_t i = 0; i < kParameters; ++i) {
      _mm512_storeu_pd(to + i * kParameters, _mm512_setzero_pd());
    }
    for (int e = 0; e < 27; ++e) to[kRow[e] * kParameters + kColumn[e]] = lanes[e];
  }

 private:
  static __m512 products(__m512 rows, __m512i first, __m512i second) {
    return _mm512_mul_ps(_mm512_permutexvar_ps(first, rows), _mm512_permutexvar_ps(second, rows));
  }
};

void frameSystem(const float* h, const ActiveTracks& tracks, const float* values, const float* goal,
                 float step, double* a, float* g) {
  const Shifted shifted(h, step);
  const __m512 steps = _mm512_set1_ps(step);
  Sums sums;
  Gradient gradient;
  for (std::ptrdiff_t i = 0; i < tracks.count; ++i) {
    const __m512 value = spread(values + 2 * i);
    const __m512 moved = shifted.project(tracks.x[i], tracks.y[i], tracks.weight[i]);
    const __m512 rows = _mm512_div_ps(_mm512_sub_ps(moved, value), steps);
    const __m512 difference = _mm512_sub_ps(spread(goal + 2 * i), value);
    sums.add(rows);
    gradient.add(_mm512_castps512_ps256(rows), _mm512_castps512_ps256(difference));
    gradient.add(_mm512_extractf32x8_ps(rows, 1), _mm512_extractf32x8_ps(difference, 1));
  }
  if (!gradient.isDefined()) {
    avx2::frameSystem(h, tracks, values, goal, step, a, g);
    return;
  }
  sums.store(a);
  gradient.store(g);
}

}  // namespace

extern const FrameKernels avx512FrameKernels = {"avx512", avx2::project, avx2::differences,
                                                avx2::normalSystem, frameSystem};

}  // namespace cornerpin::kernels
