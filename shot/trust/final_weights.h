// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_TRUST_FINAL_WEIGHTS_H
#define SHOT_TRUST_FINAL_WEIGHTS_H

#include <vector>

#include "shot/fit/linearised_fit.h"
#include "shot/fit/loss.h"
#include "shot/fit/matches.h"
#include "shot/plane/homography.h"

namespace cornerpin {

/// The squared residuals, infinite for matches that the horizon parts from `front`.
std::vector<double> squaresFrom(const Matches& matches, const Homography& h, Point front);

/// The matches' weights in the last step of a fit with the loss: times the root of the loss's
/// weight, and 0 for a match that the horizon parts from `front`.
std::vector<double> lossWeights(const Matches& matches, const Homography& h, Point front, Loss loss,
                                double width);

/// The stiffness of the matches in a fit with the loss: of what a match pulls, w^2 u(r^2) r with u
/// the loss's weight, the derivative by r over w^2 u, which is I + 2 (log u)' r r'. Where a match
/// pulls the less the further it is off, that is nothing along r.
std::vector<Symmetric2> lossStiffness(const Matches& matches, const Homography& h, Loss loss,
                                      double width);

/// The matches' own weights, 0 for those that are not within `kGoodWithin` sigmas of their places
/// or that the horizon parts from `front`.
std::vector<double> goodWeights(const Matches& matches, const Homography& h, Point front,
                                double sigma);

}  // namespace cornerpin

#endif
