// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SURFACE_JOINT_COVARIANCES_H
#define SHOT_SURFACE_JOINT_COVARIANCES_H

#include <functional>
#include <vector>

#include "shot/plane/points.h"
#include "shot/surface/joint_frames.h"

namespace cornerpin {

/// How far noise lets the transforms and places of a joint fit be off, to first order: the inverse
/// of the normal equations of `fitJointly`, linearised at the frames and places given. Observations
/// are taken to have their frame's noise, whatever their weights. That is so exactly where weights
/// are equal in each frame, and nearly so where they have nothing to do with the tracks' places.
///
/// Fills in the covariance of each place, in the surface's pixels: of a track that `fitJointly`
/// leaves out, that of the mean of its sightings and that of the transforms there, as if these had
/// one error in common. Not a number where the place is not known or nothing says where it is.
///
/// \param points  exact on the surface
/// \param report  called after each frame that takes part
/// \return        for each frame the covariances of their images, in pixels^2: 0 in the fixed
/// frame;
///                not a number in frames that do not take part, and behind the horizon
std::vector<std::vector<Symmetric2>> jointCovariances(
    const std::vector<JointFrame>& frames, std::vector<Place>& places,
    const ObservationsOf& observations, const Points& points,
    const std::function<void()>& report = [] {});

}  // namespace cornerpin

#endif
