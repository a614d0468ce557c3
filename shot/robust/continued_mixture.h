// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_ROBUST_CONTINUED_MIXTURE_H
#define SHOT_ROBUST_CONTINUED_MIXTURE_H

#include "shot/fit/matches.h"
#include "shot/plane/homography.h"
#include "shot/robust/error_model.h"
#include "shot/robust/mixture_fit.h"

namespace cornerpin {

/// The mixture of a frame whose matches behave as in the frames before: fitted on from those whose
/// odds are eight to one at least, with the tails of the frame searched last. Found only where a
/// search is needless:
///
/// - 24 matches have such odds, and as many are good now, all but a tenth of the former among them;
/// - their sigma is no larger than the recent one;
/// - the others are too few to agree on another transform as well (`isTooFewForRival`).
MixtureFit continuedMixture(const Matches& matches, const Homography& start, const Prior& prior);

}  // namespace cornerpin

#endif
