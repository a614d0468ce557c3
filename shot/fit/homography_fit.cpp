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

// A fit ends when the next step would lower the cost by less than this share of it, or by the
// rounding of squared residuals in coordinates near 1.
constexpr double kTolerance = 1e-14;
constexpr double kNoise = 1e-30;

// A cost that grows by no more than this share has grown by the rounding of its own sum.
constexpr double kRounding = 1e-13;

// A narrow loss may take hundreds of passes, plain squares a handful.
constexpr int kMostIterations = 1000;

using Three = std::array<double, 3>;

// The normal equations of the eight parameters, with m = (x, y, 1), are
//
//     | M   0   Bx |  | step of h00 h01 h02 |   | gx |
//     | 0   M   By |  | step of h10 h11 h12 | = | gy |
//     | Bx' By' Z  |  | step of h20 h21     |   | gz |
//
// in 3 x 3 and 3 x 2 blocks: the two coordinates of an image share no parameter of the first two
// rows, and both have the same block M = sum of q / s^2 m m'. Eliminating these rows leaves
//
//     (Z - Bx' inv(M) Bx - By' inv(M) By) z = gz - Bx' inv(M) gx - By' inv(M) gy,
//
// two equations for the perspective terms z, and then x = inv(M) (gx - Bx z), y alike. One
// factorisation of a 3 x 3 matrix is all that it takes. Damping multiplies the diagonal of the
// whole by 1 + damping.

// The factors L D L' of M, given as its elements xx xy yy x y 1.
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

  Three solve(const Three& b) const {
    const double y1 = b[1] - l10 * b[0];
    const double y2 = b[2] - l20 * b[0] - l21 * y1;
    const double x2 = y2 * r2;
    const double x1 = y1 * r1 - l21 * x2;
    return {b[0] * r0 - l10 * x1 - l20 * x2, x1, x2};
  }
};

Three three(const double (&v)[3]) { return {v[0], v[1], v[2]}; }

double dot(const Three& a, const Three& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

// The step to take away from the parameters, and by how much it lowers the cost as far as that is
// quadratic: the step times the gradient.
struct Step {
  Three x{}, y{};
  std::array<double, 2> z{};
  double decrease = 0.0;
  bool found = false;
};

Step solve(const NormalEquations& n, double damping) {
  Step step;
  const Factors factors(n.mm, damping);
  if (!factors.positive) return step;
  // Columns of the two coupling blocks, which carry a minus sign.
  const Three bx0 = {-n.xmm[0], -n.xmm[1], -n.xmm[3]}, bx1 = {-n.xmm[1], -n.xmm[2], -n.xmm[4]};
  const Three by0 = {-n.ymm[0], -n.ymm[1], -n.ymm[3]}, by1 = {-n.ymm[1], -n.ymm[2], -n.ymm[4]};
  const Three cx0 = factors.solve(bx0), cx1 = factors.solve(bx1);
  const Three cy0 = factors.solve(by0), cy1 = factors.solve(by1);
  const Three gx = three(n.gx), gy = three(n.gy);
  const Three ax = factors.solve(gx), ay = factors.solve(gy);
  const double z00 = n.zmm[0] * (1.0 + damping), z11 = n.zmm[2] * (1.0 + damping);
  const double s00 = z00 - dot(bx0, cx0) - dot(by0, cy0);
  const double s01 = n.zmm[1] - dot(bx0, cx1) - dot(by0, cy1);
  const double s11 = z11 - dot(bx1, cx1) - dot(by1, cy1);
  const double b0 = n.gz[0] - dot(bx0, ax) - dot(by0, ay);
  const double b1 = n.gz[1] - dot(bx1, ax) - dot(by1, ay);
  const double determinant = s00 * s11 - s01 * s01;
  if (!(s00 > kLeastPivot * z00) || !(determinant > kLeastPivot * z11 * s00)) return step;
  step.z = {(s11 * b0 - s01 * b1) / determinant, (s00 * b1 - s01 * b0) / determinant};
  for (std::size_t i = 0; i < 3; ++i) {
    step.x[i] = ax[i] - cx0[i] * step.z[0] - cx1[i] * step.z[1];
    step.y[i] = ay[i] - cy0[i] * step.z[0] - cy1[i] * step.z[1];
  }
  step.decrease = dot(step.x, gx) + dot(step.y, gy) + step.z[0] * n.gz[0] + step.z[1] * n.gz[1];
  step.found = std::isfinite(step.decrease);
  return step;
}

Homography moved(const Homography& h, const Step& step) {
  return {{{h[0][0] - step.x[0], h[0][1] - step.x[1], h[0][2] - step.x[2]},
           {h[1][0] - step.y[0], h[1][1] - step.y[1], h[1][2] - step.y[2]},
           {h[2][0] - step.z[0], h[2][1] - step.z[1], h[2][2]}}};
}

}  // namespace

HomographyFit fitHomography(const Matches& matches, const Homography& start, Loss loss,
                            double width) {
  const auto sum = [&](const Homography& h) {
    return normalEquations(matches, matches.squaredWeights(), h, loss, width);
  };
  HomographyFit fit;
  fit.h = withLastOne(start);
  NormalEquations here = sum(fit.h);
  fit.iterations = 1;
  fit.cost = here.cost;
  if (!std::isfinite(fit.cost)) return fit;
  double damping = 0.0;
  while (fit.iterations < kMostIterations && damping < kMostDamping) {
    const Step step = solve(here, damping);
    if (step.found) {
      const Homography next = moved(fit.h, step);
      if (damping == 0.0 && step.decrease <= kTolerance * fit.cost + kNoise * here.mm[5]) {
        // Too little to measure: taken on trust.
        fit.converged = true;
        fit.h = next;
        fit.cost -= std::clamp(step.decrease, 0.0, fit.cost);
        return fit;
      }
      const NormalEquations there = sum(next);
      ++fit.iterations;
      if (there.cost < fit.cost) {
        fit.h = next;
        fit.cost = there.cost;
        here = there;
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
  const Step step = solve(normalEquations(matches, squaredWeights, h, Loss::None, 0.0), 0.0);
  if (!step.found) return false;
  next = moved(h, step);
  return true;
}

}  // namespace cornerpin
