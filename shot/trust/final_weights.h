// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_TRUST_FINAL_WEIGHTS_H
#define SHOT_TRUST_FINAL_WEIGHTS_H

#include <vector>

#include "shot/fit/loss.h"
#include "shot/fit/matches.h"
#include "shot/plane/homography.h"

namespace cornerpin {

/// The matches' weights in the last step of a fit with the loss: times the root of the loss's
/// weight, and 0 for a match that the horizon parts from `front`.
std::vector<double> lossWeights(const Matches& matches, const Homography& h, Point front, Loss loss,
                                double width);

/// The matches' own weights, 0 for those that are not within `kGoodWithin` sigmas of their places
/// or that the horizon parts from `front`.
std::vector<double> goodWeights(const Matches& matches, const Homography& h, Point front,
                                double sigma);

}  // namespace cornerpin

#endif
