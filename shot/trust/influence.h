// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_TRUST_INFLUENCE_H
#define SHOT_TRUST_INFLUENCE_H

#include <cstddef>
#include <vector>

#include "shot/plane/points.h"
#include "shot/trust/frame_fits.h"

namespace cornerpin {

/// What one track does to the fit of one frame.
struct TrackInfluence {
  int track = 0;          ///< its index
  double residual = 0.0;  ///< distance between the track and where the transform carries it
  double weight = 0.0;    ///< its final one; 0 where nothing was fitted
  /// Half the trace of its block of the hat matrix: the share of its own place that the fit takes
  /// from the track itself, 0 .. 1. The tracks' leverages add up to half the parameters.
  double leverage = 0.0;
  /// How far the worst corner moves when the fit does without the track. NaN where the other
  /// tracks do not fix the model.
  double influence = 0.0;
};

/// For each match, in their order, by the weights of the fit's last step. The influence is one step
/// of the fit with the track's two rows taken out of the normal matrix: exact for models below the
/// projective one, for that one as good as the fit is linear over the step. The other tracks keep
/// their weights.
std::vector<TrackInfluence> influencesOf(const FrameFits& fits, const Quad& corners);

}  // namespace cornerpin

#endif
