// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_ROBUST_MIXTURE_FIT_H
#define SHOT_ROBUST_MIXTURE_FIT_H

#include <limits>

#include "shot/fit/matches.h"
#include "shot/plane/homography.h"
#include "shot/robust/error_model.h"

namespace cornerpin {

/// A transform and the error model under which the matches are most likely, both at once.
struct MixtureFit {
  bool found = false;
  Homography h{};
  ErrorModel errors;
  /// Minus the logarithm of the likelihood, and what the transform's eight parameters explain by
  /// themselves (restricted likelihood: 8 log spread, which stays that of `kLikelySigma` above it,
  /// as large errors have to be earned). Transforms and models compare by it, the lower the better.
  double score = std::numeric_limits<double>::infinity();
};

/// Fits both by expectation maximisation from `start` and `errors`, whose freedom and area stay:
/// each round weighs the matches by how likely they are no strays and by how far out in the tails
/// they lie, takes one Gauss-Newton step and sets the spread and the share of strays anew.
///
/// With a low sigma in the prior, the eight errors that the transform explains by itself count as
/// if they had it: the score has 4 (low / sigma)^2 + 8 log(sigma / spread), sigma the model's,
/// instead of -8 log spread. Neither a closer fit of few matches nor a coarser one of all is then
/// taken for a better one. A low sigma above `kLikelySigma` counts as that. The odds of a match
/// multiply how likely it is no stray.
///
/// The steps take the weights in full, the likelihood takes them as `votesOf` has them.
///
/// K. L. Lange, R. J. A. Little, J. M. G. Taylor, "Robust statistical modeling using the t
/// distribution", Journal of the American Statistical Association 84 (1989).
MixtureFit fitMixture(const Matches& matches, const Homography& start, const ErrorModel& errors,
                      const Prior& prior = {});

/// The fit taken on until nothing moves: wherever fits to the same optimum ended, this is the same
/// to some nine digits.
MixtureFit settled(const Matches& matches, const MixtureFit& fit, const Prior& prior = {});

}  // namespace cornerpin

#endif
