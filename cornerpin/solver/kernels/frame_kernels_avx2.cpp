// SPDX-License-Identifier: BSD-3-Clause
#include <immintrin.h>

#include <cstddef>

#include "cornerpin/solver/kernels/frame_kernels_avx2.h"

// Every lane does what the definition does for one track, one parameter or one entry of the normal
// matrix, in the definition's order.
namespace cornerpin::kernels {
namespace {

__m256 multiplied(__m256 a, __m256 b) { return _mm256_mul_ps(a, b); }
__m256 added(__m256 a, __m256 b) { return _mm256_add_ps(a, b); }
__m256d widened(__m128 v) { return _mm256_cvtps_pd(v); }
__m128 low(__m256 v) { return _mm256_castps256_ps128(v); }
__m128 high(__m256 v) { return _mm256_extractf128_ps(v, 1); }

// (x * a + y * b) + c
__m256 affine(__m256 x, __m256 y, __m256 a, __m256 b, __m256 c) {
  return added(added(multiplied(x, a), multiplied(y, b)), c);
}

ActiveTracks without(const ActiveTracks& tracks, std::ptrdiff_t first) {
  return {tracks.x + first, tracks.y + first, tracks.weight + first,
          tracks.count - static_cast<int>(first)};
}

// Calls `use` with the index and the values k .. k + 7 of every eight, and returns the number of
// tracks in whole eights.
template <class Use>
std::ptrdiff_t projectEights(const float* h, const ActiveTracks& tracks, const Use& use) {
  __m256 element[9];
  for (int e = 0; e < 9; ++e) element[e] = _mm256_set1_ps(h[e]);
  std::ptrdiff_t i = 0;
  for (; i + 8 <= tracks.count; i += 8) {
    const __m256 x = _mm256_loadu_ps(tracks.x + i);
    const __m256 y = _mm256_loadu_ps(tracks.y + i);
    const __m256 w = _mm256_loadu_ps(tracks.weight + i);
    const __m256 u = affine(x, y, element[0], element[3], element[6]);
    const __m256 v = affine(x, y, element[1], element[4], element[7]);
    const __m256 s = affine(x, y, element[2], element[5], element[8]);
    const __m256 px = _mm256_div_ps(multiplied(w, u), s);
    const __m256 py = _mm256_div_ps(multiplied(w, v), s);
    const __m256 first = _mm256_unpacklo_ps(px, py);   // tracks 0, 1 and 4, 5
    const __m256 second = _mm256_unpackhi_ps(px, py);  // tracks 2, 3 and 6, 7
    use(2 * i, _mm256_permute2f128_ps(first, second, 0x20));
    use(2 * i + 8, _mm256_permute2f128_ps(first, second, 0x31));
  }
  return i;
}

}  // namespace

// Eight tracks at a time.
void avx2::project(const float* h, const ActiveTracks& tracks, float* values) {
  const std::ptrdiff_t done = projectEights(
      h, tracks, [values](std::ptrdiff_t k, __m256 value) { _mm256_storeu_ps(values + k, value); });
  scalarFrameKernels.project(h, without(tracks, done), values + 2 * done);
}

void avx2::residuals(const float* h, const ActiveTracks& tracks, const float* goal, float* values,
                     float* residuals) {
  const std::ptrdiff_t done =
      projectEights(h, tracks, [goal, values, residuals](std::ptrdiff_t k, __m256 value) {
        _mm256_storeu_ps(values + k, value);
        _mm256_storeu_ps(residuals + k, _mm256_sub_ps(value, _mm256_loadu_ps(goal + k)));
      });
  scalarFrameKernels.residuals(h, without(tracks, done), goal + 2 * done, values + 2 * done,
                               residuals + 2 * done);
}

namespace {

// The rows of a track: it goes through all eight shifted transforms at a time, lane p has element
// p shifted.
class ShiftedTransforms {
 public:
  explicit ShiftedTransforms(const float* h) {
    const __m256i lane = _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7);
    for (int e = 0; e < 9; ++e) {
      const __m256 isElement = _mm256_castsi256_ps(_mm256_cmpeq_epi32(lane, _mm256_set1_epi32(e)));
      shifted_[e] =
          _mm256_blendv_ps(_mm256_set1_ps(h[e]), _mm256_set1_ps(h[e] + kDifferenceStep), isElement);
    }
  }

  struct Rows {
    __m256 x, y;
  };
  Rows differences(const ActiveTracks& tracks, std::ptrdiff_t i, const float* values) const {
    const __m256 x = _mm256_set1_ps(tracks.x[i]);
    const __m256 y = _mm256_set1_ps(tracks.y[i]);
    const __m256 w = _mm256_set1_ps(tracks.weight[i]);
    const __m256 u = affine(x, y, shifted_[0], shifted_[3], shifted_[6]);
    const __m256 v = affine(x, y, shifted_[1], shifted_[4], shifted_[7]);
    const __m256 s = affine(x, y, shifted_[2], shifted_[5], shifted_[8]);
    const __m256 px = _mm256_div_ps(multiplied(w, u), s);
    const __m256 py = _mm256_div_ps(multiplied(w, v), s);
    const __m256 steps = _mm256_set1_ps(kDifferenceStep);
    return {_mm256_div_ps(_mm256_sub_ps(px, _mm256_set1_ps(values[2 * i])), steps),
            _mm256_div_ps(_mm256_sub_ps(py, _mm256_set1_ps(values[2 * i + 1])), steps)};
  }

 private:
  __m256 shifted_[9];
};

}  // namespace

void avx2::differences(const float* h, const ActiveTracks& tracks, const float* values,
                       float* rows) {
  const ShiftedTransforms shifted(h);
  for (std::ptrdiff_t i = 0; i < tracks.count; ++i) {
    const ShiftedTransforms::Rows row = shifted.differences(tracks, i, values);
    _mm256_storeu_ps(rows + 2 * i * kParameters, row.x);
    _mm256_storeu_ps(rows + (2 * i + 1) * kParameters, row.y);
  }
}

// One lane per entry of the lower triangle: its first four rows need columns 0 to 3 only. The
// accumulators are separate variables, because compilers keep arrays of them in memory.
void avx2::normalSums(const float* rows, const float* goal, const float* values, int m, double* a,
                      float* g) {
  const __m256d zero = _mm256_setzero_pd();
  __m256d l0 = zero, l1 = zero, l2 = zero, l3 = zero;  // row i, columns 0 to 3
  __m256d l4 = zero, l5 = zero, l6 = zero, l7 = zero;
  __m256d r4 = zero, r5 = zero, r6 = zero, r7 = zero;  // row i, columns 4 to 7
  __m128 gLow = _mm_setzero_ps();
  __m128 gHigh = _mm_setzero_ps();
  const auto addHalf = [](__m256d& l, __m128 row, const float* element) {
    l = _mm256_add_pd(l, widened(_mm_mul_ps(row, _mm_set1_ps(*element))));
  };
  const auto addWhole = [](__m256d& l, __m256d& r, __m256 row, const float* element) {
    const __m256 products = multiplied(row, _mm256_set1_ps(*element));
    l = _mm256_add_pd(l, widened(low(products)));
    r = _mm256_add_pd(r, widened(high(products)));
  };
  for (std::ptrdiff_t k = 0; k < m; ++k) {
    const float* elements = rows + k * kParameters;
    const __m256 row = _mm256_loadu_ps(elements);
    addHalf(l0, low(row), elements);
    addHalf(l1, low(row), elements + 1);
    addHalf(l2, low(row), elements + 2);
    addHalf(l3, low(row), elements + 3);
    addWhole(l4, r4, row, elements + 4);
    addWhole(l5, r5, row, elements + 5);
    addWhole(l6, r6, row, elements + 6);
    addWhole(l7, r7, row, elements + 7);
    const __m256d difference = _mm256_set1_pd(static_cast<double>(goal[k] - values[k]));
    const __m256d termLow = _mm256_mul_pd(widened(low(row)), difference);
    const __m256d termHigh = _mm256_mul_pd(widened(high(row)), difference);
    gLow = _mm256_cvtpd_ps(_mm256_add_pd(widened(gLow), termLow));
    gHigh = _mm256_cvtpd_ps(_mm256_add_pd(widened(gHigh), termHigh));
  }
  const __m256d triangle[] = {l0, zero, l1, zero, l2, zero, l3, zero,
                              l4, r4,   l5, r5,   l6, r6,   l7, r7};
  for (std::ptrdiff_t q = 0; q < 16; ++q) _mm256_storeu_pd(a + 4 * q, triangle[q]);
  _mm_storeu_ps(g, gLow);
  _mm_storeu_ps(g + 4, gHigh);
}

namespace {

// The nonzero elements of a row: linear p and q, translation r, perspective c and d.
struct Columns {
  int p, q, r, c, d;
};
constexpr Columns kOfX = {0, 3, 6, 2, 5};
constexpr Columns kOfY = {1, 4, 7, 2, 5};

// The 15 products of a row's nonzero elements, in four quads: pp pq pr pc, dp dq dr qq, qr qc rr
// rc, and cc cd dd; and the elements themselves.
struct RowProducts {
  RowProducts(__m256 v, const Columns& of) {
    const auto pick = [v](int a0, int a1, int a2, int a3, int b0, int b1, int b2, int b3) {
      return _mm256_permutevar8x32_ps(v, _mm256_setr_epi32(a0, a1, a2, a3, b0, b1, b2, b3));
    };
    const __m256 a = pick(of.p, of.p, of.p, of.p, of.d, of.d, of.d, of.q);
    const __m256 b = pick(of.p, of.q, of.r, of.c, of.p, of.q, of.r, of.q);
    const __m256 e = pick(of.q, of.q, of.r, of.r, of.c, of.c, of.d, of.d);
    const __m256 f = pick(of.r, of.c, of.r, of.c, of.c, of.d, of.d, of.d);
    withP = low(multiplied(a, b));
    withD = high(multiplied(a, b));
    withQ = low(multiplied(e, f));
    perspective = high(multiplied(e, f));
    own = low(b);
    shared = high(f);
  }
  __m128 withP, withD, withQ, perspective;
  __m128 own;     // p q r c
  __m128 shared;  // c d d d
};

// What the rows of one coordinate sum to by themselves.
struct CoordinateSums {
  __m256d withP = _mm256_setzero_pd();
  __m256d withD = _mm256_setzero_pd();
  __m256d withQ = _mm256_setzero_pd();
  __m128 gradient = _mm_setzero_ps();  // p q r; the fourth lane is not used

  void add(const RowProducts& row, double difference) {
    withP = _mm256_add_pd(withP, widened(row.withP));
    withD = _mm256_add_pd(withD, widened(row.withD));
    withQ = _mm256_add_pd(withQ, widened(row.withQ));
    const __m256d term = _mm256_mul_pd(widened(row.own), _mm256_set1_pd(difference));
    gradient = _mm256_cvtpd_ps(_mm256_add_pd(widened(gradient), term));
  }
  void store(const Columns& of, double* a, float* g) const {
    double s[12];
    _mm256_storeu_pd(s, withP);
    _mm256_storeu_pd(s + 4, withD);
    _mm256_storeu_pd(s + 8, withQ);
    const int pairs[12][2] = {{of.p, of.p}, {of.q, of.p}, {of.r, of.p}, {of.p, of.c},
                              {of.d, of.p}, {of.d, of.q}, {of.d, of.r}, {of.q, of.q},
                              {of.r, of.q}, {of.q, of.c}, {of.r, of.r}, {of.r, of.c}};
    for (int e = 0; e < 12; ++e) {
      const int i = pairs[e][0] > pairs[e][1] ? pairs[e][0] : pairs[e][1];
      const int j = pairs[e][0] > pairs[e][1] ? pairs[e][1] : pairs[e][0];
      a[i * kParameters + j] = s[e];
    }
    float pqr[4];
    _mm_storeu_ps(pqr, gradient);
    g[of.p] = pqr[0];
    g[of.q] = pqr[1];
    g[of.r] = pqr[2];
  }
};

}  // namespace

// Products with an element that is zero add nothing, so each coordinate has sums of its own; the
// perspective elements meet in both, x before y. The sums wait for each other; the divisions of the
// tracks to come fill the time.
void avx2::frameSums(const float* h, const ActiveTracks& tracks, const float* values,
                     const float* goal, double* a, float* g) {
  const ShiftedTransforms shifted(h);
  CoordinateSums ofX, ofY;
  __m256d perspective = _mm256_setzero_pd();  // cc cd dd
  __m128 gradient = _mm_setzero_ps();         // c d
  for (std::ptrdiff_t i = 0; i < tracks.count; ++i) {
    const ShiftedTransforms::Rows rows = shifted.differences(tracks, i, values);
    const double dx = static_cast<double>(goal[2 * i] - values[2 * i]);
    const double dy = static_cast<double>(goal[2 * i + 1] - values[2 * i + 1]);
    const RowProducts x(rows.x, kOfX);
    const RowProducts y(rows.y, kOfY);
    ofX.add(x, dx);
    ofY.add(y, dy);
    perspective = _mm256_add_pd(perspective, widened(x.perspective));
    perspective = _mm256_add_pd(perspective, widened(y.perspective));
    const __m128d termX = _mm_mul_pd(_mm_cvtps_pd(x.shared), _mm_set1_pd(dx));
    const __m128d termY = _mm_mul_pd(_mm_cvtps_pd(y.shared), _mm_set1_pd(dy));
    gradient = _mm_cvtpd_ps(_mm_add_pd(_mm_cvtps_pd(gradient), termX));
    gradient = _mm_cvtpd_ps(_mm_add_pd(_mm_cvtps_pd(gradient), termY));
  }
  for (int e = 0; e < kParameters * kParameters; ++e) a[e] = 0.0;
  ofX.store(kOfX, a, g);
  ofY.store(kOfY, a, g);
  double s[4];
  _mm256_storeu_pd(s, perspective);
  a[kOfX.c * kParameters + kOfX.c] = s[0];
  a[kOfX.d * kParameters + kOfX.c] = s[1];
  a[kOfX.d * kParameters + kOfX.d] = s[2];
  float cd[4];
  _mm_storeu_ps(cd, gradient);
  g[kOfX.c] = cd[0];
  g[kOfX.d] = cd[1];
}

extern const FrameKernels avx2FrameKernels = {
    "avx2", avx2::project, avx2::residuals, avx2::differences, avx2::normalSums, avx2::frameSums};

}  // namespace cornerpin::kernels
