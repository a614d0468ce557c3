// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FIT_REDUCED_FIT_H
#define SHOT_FIT_REDUCED_FIT_H

#include <optional>

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

/// The model (translation, similarity or affine) that carries the matches' places behind `kept` to
/// their present ones, with `kept` before it: by weighted least squares (closed form, double
/// precision). None where that is not finite, turns the surface over, or does not have all tracks
/// in front.
std::optional<Homography> fitOnTop(const Matches& matches, Model model, const Homography& kept);

/// Fits a translation, similarity or affine transform by weighted least squares (closed form,
/// double precision) in two ways: on top of the neighbour's transform, which keeps its perspective
/// and everything else that the model lacks, and by itself from the base frame. The latter counts
/// only when its cost is less than half, which a model that meets its tracks exactly never reaches.
/// Falls to the next lower model when neither way is finite and has all tracks in front.
ReducedFit fitReduced(const Matches& matches, Model model, const Homography& neighbour);

}  // namespace cornerpin

#endif
