// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SURFACE_JOINT_FIT_H
#define SHOT_SURFACE_JOINT_FIT_H

#include <functional>
#include <vector>

#include "shot/surface/joint_frames.h"

namespace cornerpin {

constexpr int kMostJointSteps = 10;

/// Improves all transforms and all known places together: they minimise the sum of
/// w^2 loss(r / noise) over all sightings, near where they start. The loss is Tukey's, which bends
/// at seven noises (`noiseOf`).
///
/// Gauss-Newton on the reweighted squares with exact derivatives. It ends, with the best seen, when
/// further steps would lower the cost by less than a millionth at the rate of the last two, after
/// `kMostJointSteps`, or when neither a step nor a half, a quarter or an eighth of it lowers the
/// cost.
///
/// A free frame whose tracks do not fix its transform stays as it is and does not count. Of more
/// tracks than `kEnoughSeen` in a frame some are left out (`livesOf`); their places follow as the
/// mean of the sightings that support them. The places' covariances are those of the start;
/// `jointCovariances` has the new ones.
///
/// Work goes with the observations, and with the frames times the square of the tracks alive. No
/// LAPACK; the same bits from every compiler.
///
/// \param report  called after each step
void fitJointly(
    std::vector<JointFrame>& frames, std::vector<Place>& places, const ObservationsOf& observations,
    const std::function<void()>& report = [] {});

}  // namespace cornerpin

#endif
