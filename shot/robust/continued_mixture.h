// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_ROBUST_CONTINUED_MIXTURE_H
#define SHOT_ROBUST_CONTINUED_MIXTURE_H

#include "shot/fit/matches.h"
#include "shot/plane/homography.h"
#include "shot/robust/error_model.h"
#include "shot/robust/mixture_fit.h"

namespace cornerpin {

/// Whether a fit keeps the matches whose odds are eight to one at least: there are 24 of them, as
/// many matches are good, all but a tenth of the former among them, and sigma is no larger than
/// `mostSigma`.
bool keepsKnown(const Matches& matches, const MixtureFit& fit, const Prior& prior,
                double mostSigma);

/// The mixture of a frame whose matches behave as in the frames before: fitted on from those whose
/// odds are eight to one at least, with the tails of the frame searched last. Found only where it
/// keeps them (`keepsKnown`) with a sigma that is no larger than the recent one, and where the
/// others are too few to agree on another transform as well (`isTooFewForRival`).
MixtureFit continuedMixture(const Matches& matches, const Homography& start, const Prior& prior);

}  // namespace cornerpin

#endif
