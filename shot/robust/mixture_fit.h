// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_ROBUST_MIXTURE_FIT_H
#define SHOT_ROBUST_MIXTURE_FIT_H

#include <limits>
#include <vector>

#include "shot/fit/matches.h"
#include "shot/plane/homography.h"
#include "shot/robust/error_model.h"
#include "shot/robust/mixture_sums.h"

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

/// Whether two fits with errors of the same freedom differ by less than a twentieth of the spread.
bool alike(const MixtureFit& a, const MixtureFit& b);

/// Fits both by expectation maximisation: each round weighs the matches by how likely they are no
/// strays and by how far out in the tails they lie, takes one Gauss-Newton step and sets the spread
/// and the share of strays anew. Where rounds creep, it leaps ahead as far as they would get.
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
class MixtureFitter {
 public:
  /// \param matches  outlives the fitter
  MixtureFitter(const Matches& matches, const Prior& prior);

  /// From `start` and `errors`, whose freedom and area stay. Not found where it comes by one of
  /// the fits `seen` (`alike`): it would end there.
  MixtureFit fit(const Homography& start, const ErrorModel& errors,
                 const std::vector<MixtureFit>& seen = {});

  /// The fit taken on until nothing moves: wherever fits to the same optimum ended, this is the
  /// same to some nine digits.
  MixtureFit settled(const MixtureFit& fit);

  const std::vector<double>& votes() const { return votes_; }  ///< `votesOf`, filled up with zeros

 private:
  // A fit ends where a round changes the spread by less than `same` of it and h by less than `same`
  // spreads. The bound on the rounds ends those that creep, where strays and heavy tails are hard
  // to tell from each other.
  struct End {
    double same;
    int mostRounds;
  };

  MixtureFit run(MixtureFit fit, End end, const std::vector<MixtureFit>& seen);
  bool round(MixtureFit& fit);
  MixtureInput inputOf(const MixtureFit& fit) const;
  double nextSpread(const ErrorModel& errors, const MixtureSums& sums) const;
  void judge(MixtureFit& fit) const;
  double ofParameters(const ErrorModel& errors) const;

  const Matches& matches_;
  std::vector<double> votes_;
  std::vector<double> odds_;
  double lowSigma_;
  std::vector<double> squaredWeights_;  // times the factors, for the step
};

}  // namespace cornerpin

#endif
