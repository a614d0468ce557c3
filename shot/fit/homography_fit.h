// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FIT_HOMOGRAPHY_FIT_H
#define SHOT_FIT_HOMOGRAPHY_FIT_H

#include <vector>

#include "shot/fit/loss.h"
#include "shot/fit/matches.h"
#include "shot/plane/homography.h"

namespace cornerpin {

struct HomographyFit {
  Homography h{};          ///< the last element is 1
  double cost = 0.0;       ///< sum of w^2 loss(r); for Loss::None the weighted squares
  int iterations = 0;      ///< passes over the matches
  bool converged = false;  ///< false when the iterations or the damping ran out; h is the best seen
};

/// The transform that minimises the sum of w^2 loss(r) over the matches, near `start`, r being the
/// distance between a match's present place and the image of its base place.
///
/// Gauss-Newton on the reweighted squares in double precision, with the closed-form derivatives
/// that `NormalEquations` has; the diagonal is damped (Levenberg-Marquardt) only after a step that
/// does not lower the cost. The two equal blocks of the normal equations are eliminated, which
/// leaves a 2 x 2 system. It ends with a step whose gain, and that of the next, is foretold instead
/// of measured: a further one would move the transform by a millionth of the noise or less, and the
/// cost is right to 1e-11 of it. No memory is taken, no LAPACK called: the same bits for every
/// provider and every processor of an architecture (with Loss::Cauchy, for the same logarithm).
///
/// A match on or behind the horizon is infinitely far away: no step goes there, except with
/// Loss::Tukey, which ignores what is far. The cost is infinite when `start` already puts one
/// there.
///
/// \param width  the residual at which the loss bends; unused without one
HomographyFit fitHomography(const Matches& matches, const Homography& start, Loss loss = Loss::None,
                            double width = 0.0);

/// One undamped Gauss-Newton step of the plain weighted squares from h, whose last element is 1.
/// False where the matches do not fix the transform.
/// \param squaredWeights  instead of the matches' own; as `normalEquations` takes them
bool gaussNewtonStep(const Matches& matches, const std::vector<double>& squaredWeights,
                     const Homography& h, Homography& next);

}  // namespace cornerpin

#endif
