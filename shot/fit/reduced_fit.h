// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FIT_REDUCED_FIT_H
#define SHOT_FIT_REDUCED_FIT_H

#include <string>
#include <vector>

#include "shot/fit/matches.h"
#include "shot/fit/model.h"
#include "shot/plane/similarity.h"

namespace cornerpin {

/// The square around the box of the points: what a fit has to carry well, not only the strip or
/// patch that its tracks lie in.
Quad squareAround(const std::vector<Point>& points);

/// The test of rank and spread. Were the model fitted in the base frame to the tracks at `points`,
/// each of them with a noise of one pixel, this is the noise of the worst of the corners (in each
/// coordinate): 1 for a projective fit to four tracks in the corners, large where the tracks lie
/// bunched or nearly on one line, infinite where they do not fix the model.
double noiseGain(Model model, const std::vector<Point>& points, const Quad& corners);

/// Models with more gain than this are not supported. Half a pixel of noise then puts the worst
/// corner 10 px off, more than a lower model on top of the neighbour's transform misses of the
/// motion over a good many frames. Of the shots under data/ no frame of four or more tracks that
/// fix a transform has more than 14.
constexpr double kLargestGain = 20.0;

/// The highest model up to `highest` that has enough points and a gain up to `kLargestGain`. A
/// translation needs no more than one point.
Model supportedModel(const std::vector<Point>& points, const Quad& corners, Model highest);

/// A transform of a model below the projective one.
struct LadderFit {
  Model model = Model::Held;
  Homography h = kIdentityTransform;  ///< the neighbour's when held
  bool onTop = true;                  ///< fitted on top of the neighbour's transform
};

/// Fits a translation, similarity or affine transform by weighted least squares (closed form,
/// double precision) in two ways: on top of the neighbour's transform, which keeps its perspective
/// and everything else that the model lacks, and by itself from the base frame. The latter counts
/// only when its cost is less than half, which a model that meets its tracks exactly never reaches.
/// Falls to the next lower model when neither way is finite and has all tracks in front.
LadderFit fitLadder(const std::vector<Match>& matches, Model model, const Homography& neighbour);

}  // namespace cornerpin

#endif
