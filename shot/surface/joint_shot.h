// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SURFACE_JOINT_SHOT_H
#define SHOT_SURFACE_JOINT_SHOT_H

#include <vector>

#include "shot/fit/loss.h"
#include "shot/surface/joint_frames.h"
#include "shot/surface/track_lives.h"

namespace cornerpin {

/// What the joint fit is about: its cost is the sum of w^2 loss(r / noise) over the sightings of
/// the tracks that have a slot, in the frames that take part, with Tukey's loss.
struct JointShot {
  const std::vector<JointFrame>& frames;
  const std::vector<Place>& places;
  const ObservationsOf& observations;
  std::vector<double> noise;  ///< of each frame; 0 where it does not take part
  TrackLives lives;
};

/// Finds out who takes part: frames whose tracks fix their transform, and tracks for which there is
/// room.
JointShot jointShot(const std::vector<JointFrame>& frames, const std::vector<Place>& places,
                    const ObservationsOf& observations);

/// The loss of a residual from a frame with this noise.
BentSquare jointLoss(Point residual, double noise);

}  // namespace cornerpin

#endif
