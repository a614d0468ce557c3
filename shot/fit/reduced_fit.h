// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FIT_REDUCED_FIT_H
#define SHOT_FIT_REDUCED_FIT_H

#include <optional>
#include <vector>

#include "shot/fit/matches.h"
#include "shot/fit/model.h"
#include "shot/plane/homography.h"

namespace cornerpin {

/// A transform of a model below the projective one.
struct ReducedFit {
  Model model = Model::Held;
  Homography h = kIdentity;  ///< the neighbour's when held
  bool onTop = true;         ///< fitted on top of the neighbour's transform
};

/// Weights over the largest of them, squared: sums of squares could overflow. Empty of none.
std::vector<double> relativeSquares(const std::vector<double>& weights);

/// Sums over matches around their weighted means, of the base places p and the present ones
/// q = (u, v).
struct Moments {
  Point meanBase;
  Point meanPresent;
  double weight = 0.0;
  double xx = 0.0, xy = 0.0, yy = 0.0;            // of p with p
  double xu = 0.0, yu = 0.0, xv = 0.0, yv = 0.0;  // of p with q
  double squaresPresent = 0.0;                    // of q with q
};

/// The fits of lower models to matches on top of a transform, `kept`: what they have in common is
/// summed once.
class FitsOnTop {
 public:
  /// \param squaredWeights  `relativeSquares` of the matches' weights
  FitsOnTop(const Matches& matches, const std::vector<double>& squaredWeights,
            const Homography& kept);

  /// The model (translation, similarity or affine) that carries the matches' places behind `kept`
  /// to their present ones, with `kept` before it: by weighted least squares (closed form, double
  /// precision). None where that is not finite, turns the surface over, or does not have all tracks
  /// in front.
  std::optional<Homography> of(Model model) const;

 private:
  Homography kept_;
  bool inFront_;
  Moments moments_;
};

/// Fits a translation, similarity or affine transform by weighted least squares (closed form,
/// double precision) in two ways: on top of the neighbour's transform, which keeps its perspective
/// and everything else that the model lacks, and by itself from the base frame. The latter counts
/// only when its cost is less than half, which a model that meets its tracks exactly never reaches.
/// Falls to the next lower model when neither way is finite and has all tracks in front.
ReducedFit fitReduced(const Matches& matches, Model model, const Homography& neighbour);

}  // namespace cornerpin

#endif
