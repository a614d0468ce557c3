// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FIT_NORMAL_EQUATIONS_H
#define SHOT_FIT_NORMAL_EQUATIONS_H

#include <cstddef>
#include <vector>

#include "shot/fit/loss.h"
#include "shot/fit/matches.h"
#include "shot/plane/homography.h"

namespace cornerpin {

/// The normal equations of a homography fit and its cost, as one pass over the matches sums them.
///
/// The parameters are the transform row by row, h00, h01, h02, h10, h11, h12, h20, h21; h22 is 1.
/// With m = (x, y, 1), s the denominator, (X, Y) the image of (x, y) and q the weight's square
/// times the loss's weight, the sums are over q / s^2 times the products named.
struct NormalEquations {
  double mm[6] = {};   ///< xx xy yy x y 1: both 3 x 3 blocks of the diagonal
  double xmm[5] = {};  ///< X times xx xy yy x y
  double ymm[5] = {};  ///< Y times the same
  double zmm[3] = {};  ///< XX + YY times xx xy yy
  double gx[3] = {};   ///< gradient: q / s (X - u) times x y 1
  double gy[3] = {};   ///< q / s (Y - v) times x y 1
  double gz[2] = {};   ///< -q / s (X (X - u) + Y (Y - v)) times x y
  double cost = 0.0;   ///< sum of w^2 loss(r)
};

/// Sums them at `h`. A match on or behind the horizon (`kHorizon`) counts as infinitely far away:
/// not at all in the sums, and in the cost with Tukey's bound, which alone has one.
///
/// \param squaredWeights  one for each match, zeros behind the last up to a whole number of fours
/// \param width           where the loss bends; unused without one
NormalEquations normalEquations(const Matches& matches, const std::vector<double>& squaredWeights,
                                const Homography& h, Loss loss, double width);

/// What a pass reads: arrays of `count` numbers, a multiple of 4; the transform row by row.
struct NormalEquationsInput {
  const double* x;
  const double* y;
  const double* u;
  const double* v;
  const double* w2;
  std::size_t count;
  double h[9];
  Loss loss;
  double width;
};

/// \param squaredWeights  as `normalEquations` takes them; outlives the input, as the matches do
NormalEquationsInput inputOf(const Matches& matches, const std::vector<double>& squaredWeights,
                             const Homography& h, Loss loss, double width);

/// The variants of the pass: four lanes summed in a fixed order, the same bits from each. A variant
/// calls no inline function of another file: the linker may take its copy, in its own instructions,
/// for all callers.
struct NormalEquationsVariant {
  const char* name;
  void (*run)(const NormalEquationsInput& in, NormalEquations& out);
};

/// Those that this build has and this processor runs, the definition first and the fastest, which
/// is the one in use, last.
const std::vector<NormalEquationsVariant>& normalEquationsVariants();

}  // namespace cornerpin

#endif
