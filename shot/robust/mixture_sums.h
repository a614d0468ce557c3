// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_ROBUST_MIXTURE_SUMS_H
#define SHOT_ROBUST_MIXTURE_SUMS_H

#include <vector>

#include "shot/fit/residuals.h"

namespace cornerpin {

/// What the passes over a mixture's matches read beside the matches and the transform: arrays as
/// long as theirs, whose votes behind the last match are 0.
///
/// With f the freedom and s the spread of the errors, a match with the squared residual r^2 is
/// this likely no stray, times its odds: density (1 + r^2 / (f s^2))^(-(f + 2) / 2).
struct MixtureInput {
  SquaresInput matches;
  const double* w2;
  const double* votes;
  const double* odds;
  int freedom;       ///< 1, 2, 4 or 16
  double perSquare;  ///< 1 / (f s^2)
  double density;    ///< (1 - strays) / (2 pi s^2)
  double strays;     ///< the density of strays: their share over the area
};

/// With p the odds that a match is no stray and u = p (f + 2) / (f + r^2 / s^2), the sums of vote
/// times p, u and u r^2. A match on or behind the horizon is a stray.
struct MixtureSums {
  double good = 0.0;
  double factors = 0.0;
  double squares = 0.0;
};

/// The variants of the passes: four lanes summed in a fixed order, the same bits from each. A
/// variant calls no inline function of another file.
struct MixtureVariant {
  const char* name;
  /// \param squaredWeights  gets u w^2 of each match
  void (*weigh)(const MixtureInput& in, double* squaredWeights, MixtureSums& sums);
  /// The sum of vote times the logarithm of how likely each match is, stray or not.
  double (*logLikelihood)(const MixtureInput& in);
};

/// Those that this build has and this processor runs, the definition first and the fastest, which
/// is the one in use, last.
const std::vector<MixtureVariant>& mixtureVariants();

}  // namespace cornerpin

#endif
