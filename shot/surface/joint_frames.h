// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SURFACE_JOINT_FRAMES_H
#define SHOT_SURFACE_JOINT_FRAMES_H

#include <cstddef>
#include <functional>
#include <limits>
#include <vector>

#include "shot/fit/linearised_fit.h"
#include "shot/fit/matches.h"
#include "shot/plane/homography.h"

namespace cornerpin {

/// A frame of the shot as the surface sees it. The surface's coordinates are those of the picture
/// in which the fixed frame has the identity.
struct JointFrame {
  enum class Part {
    None,   ///< has no transform of its own
    Free,   ///< its transform is fitted
    Fixed,  ///< its transform is what all others are relative to
  };

  Homography h = kIdentity;  ///< surface to frame, in pixels; the last element is 1
  Part part = Part::None;
  double sigma = 0.0;  ///< of one coordinate of a good observation, in pixels; 0 where unknown
};

/// Where a track is on the surface; not a number while nobody knows.
struct Place {
  static constexpr double kUnknown = std::numeric_limits<double>::quiet_NaN();

  Point point = {kUnknown, kUnknown};
  Symmetric2 covariance = {kUnknown, kUnknown, kUnknown};
};
bool isKnown(const Place& place);

/// The observations of a frame; base places are not read. Called several times for each frame,
/// so that nobody needs to hold all observations in another form.
using ObservationsOf = std::function<Matches(std::size_t frame)>;

/// The noise that each frame's residuals are measured by: its sigma, but at least the median of all
/// sigmas. A blurred frame counts less, and no frame's luck counts for more. 0 where the frame does
/// not take part.
std::vector<double> noiseOf(const std::vector<JointFrame>& frames);

/// Whether an observation has a weight above 0 and a finite place.
bool isSighting(const Match& observation);

/// Calls visit(frame, observation) for all sightings in frames with a noise above 0, in order.
template <class Visit>
void forEachSighting(const std::vector<double>& noise, const ObservationsOf& observations,
                     const Visit& visit) {
  for (std::size_t f = 0; f < noise.size(); ++f) {
    if (!(noise[f] > 0.0)) continue;
    const Matches matches = observations(f);
    for (std::size_t i = 0; i < matches.size(); ++i) {
      if (isSighting(matches[i])) visit(f, matches[i]);
    }
  }
}

}  // namespace cornerpin

#endif
