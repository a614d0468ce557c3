// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_ROBUST_RIVAL_H
#define SHOT_ROBUST_RIVAL_H

#include <cstddef>
#include <cstdint>

#include "shot/fit/matches.h"
#include "shot/robust/error_model.h"
#include "shot/robust/mixture_fit.h"

namespace cornerpin {

/// Whether other matches support another transform about as well as the good ones of the best
/// search support theirs, so that it is anybody's guess which of the two is the surface: a
/// transform that fewer than half of either's good matches share, and whose likelihood is above a
/// millionth of the best one's. It is looked for among the matches that are not good, where these
/// are no more than two fewer than the good ones.
///
/// \param matches  in the fit's unit
/// \param best     of the search among all of them
bool hasRival(const Matches& matches, const MixtureFit& best, const Prior& prior,
              std::uint64_t seed);

/// Whether it finds a rival, or a fit that is better than the best by 2.
bool hasRivalOrBetter(const Matches& matches, const MixtureFit& best, const Prior& prior,
                      std::uint64_t seed);

/// Whether so many bad matches are too few to look for a rival of so many good ones among them.
bool isTooFewForRival(std::size_t bad, std::size_t good);

}  // namespace cornerpin

#endif
