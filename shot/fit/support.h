// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FIT_SUPPORT_H
#define SHOT_FIT_SUPPORT_H

#include "shot/fit/model.h"
#include "shot/plane/points.h"

namespace cornerpin {

/// The test of support. Were the model fitted in the base frame to the tracks at `points`,
/// each of them with a noise of one pixel, this is the noise of the worst of the corners (in each
/// coordinate): 1 for a projective fit to four tracks in the corners, large where the tracks lie
/// bunched or nearly on one line, infinite where they do not fix the model.
double noiseGain(Model model, const Points& points, const Quad& corners);

/// No frame leans on a transform whose model has more gain than this while a shot is swept. Half a
/// pixel of noise then puts the worst corner 10 px off, more than a lower model on top of the
/// neighbour's transform misses of the motion over a good many frames. Of the shots under data/ no
/// frame of four or more tracks that fix a transform has more than 14.
constexpr double kLargestGain = 20.0;

/// The highest model up to `highest` that has enough points and a gain up to `kLargestGain`. A
/// translation needs no more than one point.
Model supportedModel(const Points& points, const Quad& corners, Model highest);

}  // namespace cornerpin

#endif
