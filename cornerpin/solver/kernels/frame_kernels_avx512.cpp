// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/solver/kernels/frame_kernels_avx512.h"

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

#include "cornerpin/solver/kernels/frame_kernels_avx2.h"

// The frame's system, sixteen tracks at a time; everything else is the AVX2 variant's.
//
// The nonzero elements of a row are linear p and q, translation r, perspective c and d: the
// elements 0, 3, 6, 2 and 5 in the rows of x, 1, 4, 7, 2 and 5 in those of y. They are formed with
// one lane per track, then turned so that the sums can have one lane per entry and add one track
// after the other.
//
// The sums of the gradient are what takes time. The definition rounds each to float before the next
// row, by way of double: a row waits for an addition and two conversions of the row before. A fused
// multiply-add of floats takes a third of that:
//
//   here            g' = float(g + row * difference)
//   the definition  g' = float(double(g + row * difference))
//
// The two differ only where the double in between lies half way between two floats and is not the
// exact sum. So the definition's g' is formed as well, of the same g, and compared. Nothing waits
// for it. Where all steps agree, every g was the definition's, and so is the last; where one does
// not, the AVX2 variant forms the system.
//
// On an AMD EPYC (Zen 5) a solve of 100 tracks takes 5 to 7 % longer with the definition's gradient
// in these loops and one of 300 tracks 10 to 14 %; with AVX2 it takes 36 and 72 % longer.
namespace cornerpin::kernels {
namespace {

constexpr std::ptrdiff_t kTracks = 16;

__m512 multiplied(__m512 a, __m512 b) { return _mm512_mul_ps(a, b); }
__m512 added(__m512 a, __m512 b) { return _mm512_add_ps(a, b); }
__m512 everywhere(float value) { return _mm512_set1_ps(value); }
__m512d widened(__m256 v) { return _mm512_cvtps_pd(v); }

// Numbers of x and of y.
struct Both {
  __m512 x, y;
};

// x y x y ... of sixteen tracks.
struct Alternating {
  __m512 low, high;

  static Alternating of(const Both& both) {
    const __m512i first = _mm512_setr_epi32(0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
    const __m512i second =
        _mm512_setr_epi32(8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
    return {_mm512_permutex2var_ps(both.x, first, both.y),
            _mm512_permutex2var_ps(both.x, second, both.y)};
  }
  Both separated() const {
    const __m512i x = _mm512_setr_epi32(0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
    const __m512i y = _mm512_setr_epi32(1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25, 27, 29, 31);
    return {_mm512_permutex2var_ps(low, x, high), _mm512_permutex2var_ps(low, y, high)};
  }
  void store(float* to) const {
    _mm512_store_ps(to, low);
    _mm512_store_ps(to + kTracks, high);
  }
};

// What a block of tracks adds to the system, one track after the other.
struct Rows {
  // Track t's xc xd xp yp xq yq xr yr.
  const float* row(std::ptrdiff_t t) const { return rows + 8 * (4 * (t % 4) + t / 4); }

  std::ptrdiff_t count;
  alignas(64) float rows[8 * kTracks];
  alignas(64) float perspectiveOfY[2 * kTracks];  // yc yd
  alignas(64) float differences[2 * kTracks];     // goal minus value, of x and of y
};

// The nonzero elements of one coordinate's rows.
struct Columns {
  __m512 p, q, r, c, d;
};

// Up to sixteen tracks, from `first` on. Lanes without a track repeat the first one.
class Block {
 public:
  Block(const ActiveTracks& tracks, std::ptrdiff_t first)
      : count_(tracks.count - first < kTracks ? tracks.count - first : kTracks),
        mask_(static_cast<__mmask16>((1u << count_) - 1)),
        x_(load(tracks.x + first)),
        y_(load(tracks.y + first)),
        weight_(load(tracks.weight + first)) {}

  void form(const float* h, const float* values, const float* goal, Rows& rows) const {
    const Alternating valuePairs = loadPairs(values);
    const Alternating goalPairs = loadPairs(goal);
    const Alternating differences = {_mm512_sub_ps(goalPairs.low, valuePairs.low),
                                     _mm512_sub_ps(goalPairs.high, valuePairs.high)};
    differences.store(rows.differences);
    const Both value = valuePairs.separated();
    const Columns x = columns(h, 0, value.x);
    const Columns y = columns(h, 1, value.y);
    Alternating::of({y.c, y.d}).store(rows.perspectiveOfY);
    turn(x, y, rows.rows);
    rows.count = count_;
  }

 private:
  __m512 load(const float* numbers) const {
    return _mm512_mask_loadu_ps(everywhere(numbers[0]), mask_, numbers);
  }
  Alternating loadPairs(const float* pairs) const {
    const std::uint64_t mask = (std::uint64_t{1} << (2 * count_)) - 1;
    return {_mm512_maskz_loadu_ps(static_cast<__mmask16>(mask), pairs),
            _mm512_maskz_loadu_ps(static_cast<__mmask16>(mask >> kTracks), pairs + kTracks)};
  }

  // `row` is 0 for x, 1 for y.
  Columns columns(const float* h, int row, __m512 value) const {
    const float p = h[row], q = h[row + 3], r = h[row + 6];
    const auto difference = [&](__m512 u, __m512 s) {
      const __m512 projected = _mm512_div_ps(multiplied(weight_, u), s);
      return _mm512_div_ps(_mm512_sub_ps(projected, value), everywhere(kDifferenceStep));
    };
    const __m512 u = affine(p, q, r);
    const __m512 s = affine(h[2], h[5], h[8]);
    return {difference(affine(p + kDifferenceStep, q, r), s),
            difference(affine(p, q + kDifferenceStep, r), s),
            difference(affine(p, q, r + kDifferenceStep), s),
            difference(u, affine(h[2] + kDifferenceStep, h[5], h[8])),
            difference(u, affine(h[2], h[5] + kDifferenceStep, h[8]))};
  }

  // (x * a + y * b) + c
  __m512 affine(float a, float b, float c) const {
    return added(added(multiplied(x_, everywhere(a)), multiplied(y_, everywhere(b))),
                 everywhere(c));
  }

  // From one register per column to half a register per track.
  static void turn(const Columns& x, const Columns& y, float* rows) {
    const auto low = [](__m512 a, __m512 b) { return _mm512_castps_pd(_mm512_unpacklo_ps(a, b)); };
    const auto high = [](__m512 a, __m512 b) { return _mm512_castps_pd(_mm512_unpackhi_ps(a, b)); };
    // Quarters of the rows of tracks 0 1 4 5 8 9 12 13, then of the others.
    const __m512d quarters[2][4] = {
        {low(x.c, x.d), low(x.p, y.p), low(x.q, y.q), low(x.r, y.r)},
        {high(x.c, x.d), high(x.p, y.p), high(x.q, y.q), high(x.r, y.r)}};
    const __m512i first = _mm512_setr_epi64(0, 1, 8, 9, 2, 3, 10, 11);
    const __m512i second = _mm512_setr_epi64(4, 5, 12, 13, 6, 7, 14, 15);
    // Of tracks t, t + 4, t + 8 and t + 12, from their halves.
    const auto store = [first, second](__m512d left, __m512d right, float* to) {
      _mm512_store_pd(to, _mm512_permutex2var_pd(left, first, right));
      _mm512_store_pd(to + 16, _mm512_permutex2var_pd(left, second, right));
    };
    for (const auto& q : quarters) {
      store(_mm512_unpacklo_pd(q[0], q[1]), _mm512_unpacklo_pd(q[2], q[3]), rows);
      store(_mm512_unpackhi_pd(q[0], q[1]), _mm512_unpackhi_pd(q[2], q[3]), rows + 32);
      rows += 64;
    }
  }

  std::ptrdiff_t count_;
  __mmask16 mask_;
  __m512 x_, y_, weight_;
};

// Places in a row and, from 16 on, in the perspective of y.
constexpr int kXc = 0, kXd = 1, kXp = 2, kYp = 3, kXq = 4, kYq = 5, kXr = 6, kYr = 7;
constexpr int kYc = 16, kYd = 17;

// Two floats, then zeros.
__m256 pair(const float* p) {
  return _mm256_castpd_ps(_mm256_zextpd128_pd256(_mm_load_sd(reinterpret_cast<const double*>(p))));
}
// Two floats, four times.
__m256 pairs(const float* p) {
  return _mm256_castpd_ps(_mm256_broadcast_sd(reinterpret_cast<const double*>(p)));
}

// The products that the triangle sums, 32 a track: pp pq pr pc pd qq qr qc of x, the same of y, qd
// rr rc rd of x, of y, cc cd dd dd of x, of y.
void multiply(const Rows& rows, float* products) {
  const __m512i first1 = _mm512_setr_epi32(kXp, kXp, kXp, kXp, kXp, kXq, kXq, kXq,  //
                                           kYp, kYp, kYp, kYp, kYp, kYq, kYq, kYq);
  const __m512i second1 = _mm512_setr_epi32(kXp, kXq, kXr, kXc, kXd, kXq, kXr, kXc,  //
                                            kYp, kYq, kYr, kYc, kYd, kYq, kYr, kYc);
  const __m512i first2 = _mm512_setr_epi32(kXq, kXr, kXr, kXr, kYq, kYr, kYr, kYr,  //
                                           kXc, kXc, kXd, kXd, kYc, kYc, kYd, kYd);
  const __m512i second2 = _mm512_setr_epi32(kXd, kXr, kXc, kXd, kYd, kYr, kYc, kYd,  //
                                            kXc, kXd, kXd, kXd, kYc, kYd, kYd, kYd);
  for (std::ptrdiff_t t = 0; t < rows.count; ++t) {
    const __m512 ofX = _mm512_castps256_ps512(_mm256_load_ps(rows.row(t)));
    const __m512 ofY = _mm512_castps256_ps512(pairs(rows.perspectiveOfY + 2 * t));
    _mm512_store_ps(products + 32 * t, multiplied(_mm512_permutex2var_ps(ofX, first1, ofY),
                                                  _mm512_permutex2var_ps(ofX, second1, ofY)));
    _mm512_store_ps(products + 32 * t + 16, multiplied(_mm512_permutex2var_ps(ofX, first2, ofY),
                                                       _mm512_permutex2var_ps(ofX, second2, ofY)));
  }
}

// The sums of the triangle, in the order of the products.
struct Triangle {
  __m512d x = _mm512_setzero_pd();
  __m512d y = _mm512_setzero_pd();
  __m512d rest = _mm512_setzero_pd();
  __m256d shared = _mm256_setzero_pd();  // x before y

  void add(const float* product) {
    x = _mm512_add_pd(x, widened(_mm256_load_ps(product)));
    y = _mm512_add_pd(y, widened(_mm256_load_ps(product + 8)));
    rest = _mm512_add_pd(rest, widened(_mm256_load_ps(product + 16)));
    shared = _mm256_add_pd(shared, _mm256_cvtps_pd(_mm_load_ps(product + 24)));
    shared = _mm256_add_pd(shared, _mm256_cvtps_pd(_mm_load_ps(product + 28)));
  }

  void store(double* to) const {
    // Row and column of every lane.
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
};

// The gradient's c d p p q q r r, the first of a pair of x, and the bits in which a step was not
// the definition's.
struct Gradient {
  __m256 g = _mm256_setzero_ps();
  __m256i deviations = _mm256_setzero_si256();

  // The product of two floats is exact in double: the sum rounds once to double, as the
  // definition's does.
  void add(__m256 row, __m256 difference) {
    const __m512d sum = _mm512_fmadd_pd(widened(row), widened(difference), widened(g));
    g = _mm256_fmadd_ps(row, difference, g);
    const __m256 deviation = _mm256_xor_ps(_mm512_cvtpd_ps(sum), g);
    deviations = _mm256_or_si256(deviations, _mm256_castps_si256(deviation));
  }

  bool isDefined() const { return _mm256_testz_si256(deviations, deviations) != 0; }

  void store(float* to) const {
    _mm256_storeu_ps(to, _mm256_permutevar8x32_ps(g, _mm256_setr_epi32(2, 3, 0, 4, 5, 1, 6, 7)));
  }
};

struct System {
  Triangle triangle;
  Gradient gradient;
};

void add(const Rows& rows, System& to) {
  alignas(64) float products[32 * kTracks];
  multiply(rows, products);
  const __m256i ofElement = _mm256_setr_epi32(0, 0, 0, 1, 0, 1, 0, 1);
  System system = to;  // a copy of its own stays in registers
  for (std::ptrdiff_t t = 0; t < rows.count; ++t) {
    system.triangle.add(products + 32 * t);
    const __m256 difference = pairs(rows.differences + 2 * t);
    system.gradient.add(_mm256_load_ps(rows.row(t)),
                        _mm256_permutevar8x32_ps(difference, ofElement));
    // The elements that x and y share, and nothing for the others.
    system.gradient.add(pair(rows.perspectiveOfY + 2 * t), _mm256_movehdup_ps(difference));
  }
  to = system;
}

}  // namespace

// A block's rows are formed before those of the block before are added: the sums fill the time of
// the divisions.
bool avx512::formSystem(const float* h, const ActiveTracks& tracks, const float* values,
                        const float* goal, double* a, float* g) {
  Rows rows[2];
  Rows* here = &rows[0];
  Rows* before = &rows[1];
  before->count = 0;
  System system;
  for (std::ptrdiff_t i = 0; i < tracks.count; i += kTracks) {
    Block(tracks, i).form(h, values + 2 * i, goal + 2 * i, *here);
    add(*before, system);
    Rows* const next = before;
    before = here;
    here = next;
  }
  add(*before, system);
  system.triangle.store(a);
  system.gradient.store(g);
  return system.gradient.isDefined();
}

namespace {

void frameSums(const float* h, const ActiveTracks& tracks, const float* values, const float* goal,
               double* a, float* g) {
  if (avx512::formSystem(h, tracks, values, goal, a, g)) return;
  avx2::frameSums(h, tracks, values, goal, a, g);
}

}  // namespace

extern const FrameKernels avx512FrameKernels = {
    "avx512", avx2::project, avx2::residuals, avx2::differences, avx2::normalSums, frameSums};

}  // namespace cornerpin::kernels
