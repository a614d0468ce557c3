// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_NORMAL_SUMS_H
#define SHOT_NORMAL_SUMS_H

#include <array>
#include <cstddef>

#include "shot/match.h"

namespace cornerpin {

enum class Loss { None, Huber, Cauchy, Tukey };

/// What one pass over the matches gives: the normal equations of the eight parameters, row by row
/// h00, h01, h02, h10, h11, h12, h20, h21 (h22 is 1), and the cost.
///
/// With m = (x, y, 1), s the denominator, (X, Y) the image of (x, y) and q the weight's square
/// times the loss's weight, the sums are over q / s^2 times the products named.
struct NormalSums {
  std::array<double, 6> mm{};   ///< xx xy yy x y 1: both 3 x 3 blocks of the diagonal
  std::array<double, 5> xmm{};  ///< X times xx xy yy x y
  std::array<double, 5> ymm{};  ///< Y times the same
  std::array<double, 3> zmm{};  ///< XX + YY times xx xy yy
  std::array<double, 3> gx{};   ///< gradient: q / s (X - u) times x y 1
  std::array<double, 3> gy{};   ///< q / s (Y - v) times x y 1
  std::array<double, 2> gz{};   ///< -q / s (X (X - u) + Y (Y - v)) times x y
  double cost = 0.0;            ///< sum of w^2 loss(r)
  /// The smallest denominator; a match at or below `kHorizon` counts as infinitely far away: not
  /// at all in the sums, and in the cost with Tukey's bound, which alone has one.
  double nearest = 0.0;
};

constexpr double kHorizon = 1e-6;

/// Four lanes summed in a fixed order, every variant to the same bits. `width` is the residual at
/// which the loss bends: Tukey's is flat beyond it. Every loss is r^2 near 0, its weight 1.
using NormalPass = void (*)(const Matches& matches, const Homography& h, Loss loss, double width,
                            NormalSums& out);
void normalSumsBase(const Matches& matches, const Homography& h, Loss loss, double width,
                    NormalSums& out);
#if defined(__x86_64__)
void normalSumsAvx2(const Matches& matches, const Homography& h, Loss loss, double width,
                    NormalSums& out);
#endif

/// The fastest variant that this processor runs.
NormalPass normalSums();

}  // namespace cornerpin

#endif
