// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FIT_RESIDUALS_H
#define SHOT_FIT_RESIDUALS_H

#include <cstddef>
#include <vector>

#include "shot/fit/matches.h"
#include "shot/plane/homography.h"

namespace cornerpin {

/// A match whose denominator is no larger than this is on or behind the horizon. For transforms
/// whose last element is 1.
constexpr double kHorizon = 1e-6;

/// From where the transform carries the match's base place to its present place.
inline Point residual(const Match& match, const Homography& h) {
  const Point image = map(h, match.base);
  return {match.present.x - image.x, match.present.y - image.y};
}
inline double squaredResidual(const Match& match, const Homography& h) {
  return squaredDistance(map(h, match.base), match.present);
}

/// The sum of w^2 r^2: what the library's solver minimises.
double weightedSquares(const Matches& matches, const Homography& h);

/// The root of the mean squared residual, unweighted; NaN without matches, and where the transform
/// carries one nowhere.
double rmsResidual(const Matches& matches, const Homography& h);

/// The squared residuals; infinite on and behind the horizon.
void squaredResiduals(const Matches& matches, const Homography& h, std::vector<double>& squares);

/// What that reads, as other passes do: arrays of `count` numbers, a multiple of 4; the transform
/// row by row.
struct SquaresInput {
  const double* x;
  const double* y;
  const double* u;
  const double* v;
  std::size_t count;
  double h[9];
};

/// Its variants, the same bits from each; as `NormalEquationsVariant`.
struct SquaresVariant {
  const char* name;
  void (*run)(const SquaresInput& in, double* squares);
};
const std::vector<SquaresVariant>& squaresVariants();

/// The matches' arrays and the transform.
SquaresInput squaresInput(const Matches& matches, const Homography& h);

void squaredResiduals(const Matches& matches, const Homography& h, std::vector<double>& squares,
                      const SquaresVariant& variant);

}  // namespace cornerpin

#endif
