// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_ROBUST_MIXTURE_FIT_H
#define SHOT_ROBUST_MIXTURE_FIT_H

#include <limits>
#include <vector>

#include "shot/fit/matches.h"
#include "shot/plane/similarity.h"

namespace cornerpin {

/// The least scale, for matches conditioned to -1 .. 1: an eighth of a pixel over tracks 1,000
/// wide.
constexpr double kScaleFloor = 2.5e-4;
/// What good tracks are likely to have: half a pixel over tracks 1,000 wide.
constexpr double kLikelyScale = 1e-3;

/// How the errors of a frame's tracks are distributed: a bivariate t distribution, whose core is
/// normal and whose tails are the heavier the fewer degrees of freedom it has, and a share of
/// strays that lie anywhere in an area.
struct ErrorModel {
  int freedom = 16;    ///< 1, 2, 4 or 16: from heavy tails to nearly normal errors
  double sigma = 0.0;  ///< the t distribution's parameter, at least `kScaleFloor`
  double strays = 0.1;
  double area = 4.0;  ///< stays as it is given; `strayArea`

  /// What the median error says of the standard deviation of one coordinate: the median over
  /// 1.1774, as if errors were normal.
  double scale() const;
};

/// A transform and the error model under which the matches are most likely, both at once.
struct CoreFit {
  bool found = false;
  Homography h{};
  ErrorModel errors;
  /// Minus the logarithm of the likelihood, and what the transform's eight parameters explain by
  /// themselves (restricted likelihood: 8 log sigma, which stays that of `kLikelyScale` above it,
  /// as large errors have to be earned). Transforms and models compare by it, the lower the better.
  double score = std::numeric_limits<double>::infinity();
};

/// What earlier frames say of the errors.
struct Prior {
  double scale = 0.0;        ///< that good matches are expected to have; 0 where nothing tells
  std::vector<double> odds;  ///< per match, that it is a good one over a stray; empty: even
};

/// Fits both by expectation maximisation from `start` and `errors`, whose freedom and area stay:
/// each round weighs the matches by how likely they are no strays and by how far out in the tails
/// they lie, takes one Gauss-Newton step and sets sigma and the share of strays anew.
///
/// With a prior scale, the eight errors that the transform explains by itself count as if they had
/// it: instead of -8 log sigma the score has 4 (prior / scale)^2 + 8 log(scale / sigma). Neither a
/// closer fit of few matches nor a coarser one of all is then taken for a better one. A prior scale
/// above `kLikelyScale` counts as that. The odds of a match multiply how likely it is no stray.
///
/// The steps take the weights in full, the likelihood takes them as `votesOf` has them.
///
/// K. L. Lange, R. J. A. Little, J. M. G. Taylor, "Robust statistical modeling using the t
/// distribution", Journal of the American Statistical Association 84 (1989).
CoreFit fitCore(const Matches& matches, const Homography& start, const ErrorModel& errors,
                const Prior& prior = {});

/// The box around the matches' places (at least one) in the frame, without far-off ones
/// (`withoutFarOff`): wherever such a match is, it says nothing of where the other strays are.
double strayArea(const Matches& matches);

/// How often each match's logarithmic likelihood counts: as its squared weight, relative to the
/// mean. None counts more than the eighth heaviest or, of more than 32, the upper quartile's:
/// weights say how much a match pulls, and a few heavy ones, which a transform meets whatever they
/// are, tell nothing of the errors.
std::vector<double> votesOf(const Matches& matches);

/// The squared distances between the matches' images under h and their places; infinite on and
/// behind the horizon.
void squaredResiduals(const Matches& matches, const Homography& h, std::vector<double>& squares);

}  // namespace cornerpin

#endif
