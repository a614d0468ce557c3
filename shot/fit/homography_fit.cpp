// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/homography_fit.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "shot/fit/normal_equations.h"

namespace cornerpin {

namespace {

// Damping starts only after a step that did not lower the cost. At its most, steps are so short
// that no coordinate near 1 changes any more.
constexpr double kFirstDamping = 1e-4;
constexpr double kDampingGrowth = 10.0;
constexpr double kMostDamping = 1e12;

// A pivot below this share of the diagonal element that it comes from is what rounding left of the
// difference: some 50 units in the last place.
constexpr double kLeastPivot = 1e-14;

// A fit ends when the next step, or the one after it if steps go on shrinking as they do, would
// lower the cost by less than this share of it, or by the rounding of squared residuals in
// coordinates near 1. How steps shrink is believed only near the end.
constexpr double kTolerance = 1e-14;
constexpr double kNoise = 1e-30;
constexpr double kNearTheEnd = 1e-9;

// A cost that grows by no more than this share has grown by the rounding of its own sum.
constexpr double kRounding = 1e-13;

// A narrow loss may take hundreds of passes, plain squares a handful.
constexpr int kMostIterations = 1000;

// The normal equations of the eight numbers a, b and c that vary a transform are
//
//     | M   0   A |  | a |   | ga |
//     | 0   M   B |  | b | = | gb |
//     | A'  B'  C |  | c |   | gc |
//
// in 3 x 3 and 3 x 2 blocks: the two coordinates of an image share none of the first six numbers,
// and both have the same block M = sum of q m m'. With M = L D L', eliminating them leaves
//
//     (C - A' inv(M) A - B' inv(M) B) c = gc - A' inv(M) ga - B' inv(M) gb,
//
// two equations, and then L' a = inv(D) inv(L) (ga - A c), b alike. What is done for A and ga is
// done for B and gb in the other half of a pair. The second column of A is the first of B. Damping
// multiplies the diagonal of the whole by 1 + damping.
using Pair = double __attribute__((vector_size(16)));

Pair pairAt(const double* p) { return Pair{p[0], p[1]}; }

double sum(Pair p) { return p[0] + p[1]; }

// Three rows of pairs: three numbers of a in the first halves, three of b in the second.
struct Rows {
  Pair r0, r1, r2;
};

Rows scaled(const Rows& a, double d0, double d1, double d2) {
  return {a.r0 * d0, a.r1 * d1, a.r2 * d2};
}

Rows lessTimes(const Rows& a, const Rows& b, double factor) {
  return {a.r0 - b.r0 * factor, a.r1 - b.r1 * factor, a.r2 - b.r2 * factor};
}

double dot(const Rows& a, const Rows& b) { return sum(a.r0 * b.r0 + a.r1 * b.r1 + a.r2 * b.r2); }

// The factors L D L' of M, given as its elements XX XY YY X Y 1.
struct Factors {
  double l10, l20, l21, r0, r1, r2;  // the r are 1 / D
  bool positive;

  Factors(const double (&m)[6], double damping) {
    const double grown = 1.0 + damping;
    const double a = m[0] * grown, c = m[2] * grown, f = m[5] * grown;
    r0 = 1.0 / a;
    l10 = m[1] * r0;
    l20 = m[3] * r0;
    const double d1 = c - l10 * m[1];
    const double e = m[4] - l10 * m[3];
    r1 = 1.0 / d1;
    l21 = e * r1;
    const double d2 = f - l20 * m[3] - l21 * e;
    r2 = 1.0 / d2;
    // Matches on one line leave M a rank of 2.
    positive = a > 0.0 && d1 > kLeastPivot * c && d2 > kLeastPivot * f;
  }

  Rows lower(Pair b0, Pair b1, Pair b2) const {
    const Pair y1 = b1 - b0 * l10;
    return {b0, y1, b2 - b0 * l20 - y1 * l21};
  }

  Rows overPivots(const Rows& y) const { return scaled(y, r0, r1, r2); }

  Rows upper(const Rows& y) const {
    const Pair x1 = y.r1 - y.r2 * l21;
    return {y.r0 - x1 * l10 - y.r2 * l20, x1, y.r2};
  }
};

// The step to take away, and by how much it lowers the cost as far as that is quadratic: the step
// times the gradient.
struct Step {
  Rows ab{};
  double c0 = 0.0, c1 = 0.0;
  double decrease = 0.0;
  bool found = false;
};

Step solve(const NormalEquations& n, double damping) {
  Step step;
  const Factors factors(n.mm, damping);
  if (!factors.positive) return step;
  const Rows p = factors.lower(pairAt(n.cubic), pairAt(n.cubic + 1), pairAt(n.mm));
  const Rows q = factors.lower(pairAt(n.cubic + 1), pairAt(n.cubic + 2), pairAt(n.mm + 1));
  const Rows g = factors.lower(pairAt(n.ab), pairAt(n.ab + 2), pairAt(n.ab + 4));
  const Rows pd = factors.overPivots(p), qd = factors.overPivots(q), gd = factors.overPivots(g);
  const double c00 = n.cc[0] * (1.0 + damping), c11 = n.cc[2] * (1.0 + damping);
  const double s00 = c00 - dot(p, pd), s01 = n.cc[1] - dot(p, qd), s11 = c11 - dot(q, qd);
  const double b0 = n.c[0] - dot(g, pd), b1 = n.c[1] - dot(g, qd);
  const double determinant = s00 * s11 - s01 * s01;
  if (!(s00 > kLeastPivot * c00) || !(determinant > kLeastPivot * c11 * s00)) return step;
  step.c0 = (s11 * b0 - s01 * b1) / determinant;
  step.c1 = (s00 * b1 - s01 * b0) / determinant;
  step.ab = factors.upper(lessTimes(lessTimes(gd, pd, step.c0), qd, step.c1));
  step.decrease = dot(g, gd) + step.c0 * b0 + step.c1 * b1;
  step.found = std::isfinite(step.decrease);
  return step;
}

// As seen from the image of the origin, the transform has the rows x, y and w, of which x and y end
// with 0 and w with 1. Taken away are a of (x, y, w) from x, b of them from y, and less c of (x, y)
// from w, which keeps its end.
Homography moved(const Homography& h, const Step& step) {
  Homography next = h;
  const Pair centre = {h[0][2], h[1][2]};
  const Pair last = centre - step.ab.r2;
  for (std::size_t k = 0; k < 2; ++k) {
    const Pair xy = Pair{h[0][k], h[1][k]} - centre * h[2][k];
    const double w = h[2][k] + (step.c0 * xy[0] + step.c1 * xy[1]);
    const Pair at = xy - step.ab.r0 * xy[0] - step.ab.r1 * xy[1] - step.ab.r2 * h[2][k];
    const Pair there = at + centre * w;
    next[0][k] = there[0];
    next[1][k] = there[1];
    next[2][k] = w;
  }
  next[0][2] = last[0];
  next[1][2] = last[1];
  return next;
}

// Whether an undamped step that lowers the cost by `decrease`, after one that lowered it by `last`
// (0: none), is the last worth taking.
bool isLast(double decrease, double last, double cost, double noise) {
  const double least = kTolerance * cost + noise;
  return decrease <= least ||
         (decrease <= kNearTheEnd * cost && decrease * decrease <= least * last);
}

}  // namespace

HomographyFit fitHomography(const Matches& matches, const Homography& start, Loss loss,
                            double width) {
  NormalEquationsPass sum(matches, matches.squaredWeights(), loss, width);
  HomographyFit fit;
  fit.h = withLastOne(start);
  NormalEquations here;
  NormalEquations there;
  sum(fit.h, here);
  fit.iterations = 1;
  fit.cost = here.cost;
  if (!std::isfinite(fit.cost)) return fit;
  double damping = 0.0;
  double lastDecrease = 0.0;  // none
  while (fit.iterations < kMostIterations && damping < kMostDamping) {
    const Step step = solve(here, damping);
    if (step.found) {
      const Homography next = moved(fit.h, step);
      const double noise = kNoise * here.mm[5];
      if (damping > 0.0 && step.decrease <= noise) return fit;  // only rounding is left
      if (damping == 0.0 && isLast(step.decrease, lastDecrease, fit.cost, noise)) {
        // Too little to measure: taken on trust.
        fit.converged = true;
        fit.h = next;
        fit.cost -= std::clamp(step.decrease, 0.0, fit.cost);
        return fit;
      }
      sum(next, there);
      ++fit.iterations;
      if (there.cost < fit.cost) {
        fit.h = next;
        fit.cost = there.cost;
        here = there;
        lastDecrease = damping == 0.0 ? step.decrease : 0.0;
        damping = damping > kFirstDamping ? damping / kDampingGrowth : 0.0;
        continue;
      }
      if (there.cost - fit.cost <= kRounding * fit.cost) break;
    }
    damping = damping == 0.0 ? kFirstDamping : damping * kDampingGrowth;
  }
  fit.converged = damping < kMostDamping && fit.iterations < kMostIterations;
  return fit;
}

bool gaussNewtonStep(const Matches& matches, const std::vector<double>& squaredWeights,
                     const Homography& h, Homography& next) {
  NormalEquations sums;
  NormalEquationsPass(matches, squaredWeights, Loss::None, 0.0)(h, sums);
  const Step step = solve(sums, 0.0);
  if (!step.found) return false;
  next = moved(h, step);
  return true;
}

}  // namespace cornerpin
