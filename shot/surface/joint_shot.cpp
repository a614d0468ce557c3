// SPDX-License-Identifier: BSD-3-Clause
#include "shot/surface/joint_shot.h"

#include "shot/surface/frame_equations.h"

namespace cornerpin {

namespace {

// Where the loss bends, in noises: as wide as that of a single frame's fit.
constexpr double kWidth = 7.0;

}  // namespace

JointShot jointShot(const std::vector<JointFrame>& frames, const std::vector<Place>& places,
                    const ObservationsOf& observations) {
  JointShot shot = {frames, places, observations, noiseOf(frames), {}};
  shot.lives = livesOf(shot.noise, places, observations);
  FrameEquations equations;
  for (std::size_t f = 0; f < frames.size(); ++f) {
    if (shot.noise[f] > 0.0 && !equations.linearise(shot, f)) shot.noise[f] = 0.0;
  }
  return shot;
}

BentSquare jointLoss(Point residual, double noise) {
  return bentSquare(Loss::Tukey, squaredDistance(residual, {}) / (noise * noise), kWidth);
}

}  // namespace cornerpin
