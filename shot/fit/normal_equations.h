// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FIT_NORMAL_EQUATIONS_H
#define SHOT_FIT_NORMAL_EQUATIONS_H

#include <cstddef>

#include "shot/fit/matches.h"
#include "shot/plane/similarity.h"

namespace cornerpin {

enum class Loss { None, Huber, Cauchy, Tukey };

/// What a pass reads: the arrays of `Matches`, a transform row by row and a loss. `width` is the
/// residual at which the loss bends: Tukey's is flat beyond it. Every loss is r^2 near 0, its
/// weight 1.
struct PassInput {
  const double* x;
  const double* y;
  const double* u;
  const double* v;
  const double* w2;
  std::size_t count;  // a multiple of 4
  double h[9];
  Loss loss;
  double width;
};
PassInput passInput(const Matches& matches, const Homography& h, Loss loss, double width);

/// What one pass over the matches gives: the normal equations of the eight parameters, row by row
/// h00, h01, h02, h10, h11, h12, h20, h21 (h22 is 1), and the cost.
///
/// With m = (x, y, 1), s the denominator, (X, Y) the image of (x, y) and q the weight's square
/// times the loss's weight, the sums are over q / s^2 times the products named.
struct NormalSums {
  double mm[6] = {};   ///< xx xy yy x y 1: both 3 x 3 blocks of the diagonal
  double xmm[5] = {};  ///< X times xx xy yy x y
  double ymm[5] = {};  ///< Y times the same
  double zmm[3] = {};  ///< XX + YY times xx xy yy
  double gx[3] = {};   ///< gradient: q / s (X - u) times x y 1
  double gy[3] = {};   ///< q / s (Y - v) times x y 1
  double gz[2] = {};   ///< -q / s (X (X - u) + Y (Y - v)) times x y
  double cost = 0.0;   ///< sum of w^2 loss(r)
  /// The smallest denominator; a match at or below `kHorizon` counts as infinitely far away: not
  /// at all in the sums, and in the cost with Tukey's bound, which alone has one.
  double nearest = 0.0;
};

constexpr double kHorizon = 1e-6;

/// Four lanes summed in a fixed order, every variant to the same bits. A variant calls no inline
/// function of another file: the linker may take its copy, in its own instructions, for all
/// callers.
using NormalPass = void (*)(const PassInput& in, NormalSums& out);
void normalSumsBase(const PassInput& in, NormalSums& out);
#if defined(__x86_64__)
void normalSumsAvx2(const PassInput& in, NormalSums& out);
#endif

/// The fastest variant that this processor runs.
NormalPass normalSums();

}  // namespace cornerpin

#endif
