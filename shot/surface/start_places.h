// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SURFACE_START_PLACES_H
#define SHOT_SURFACE_START_PLACES_H

#include <cstddef>
#include <vector>

#include "shot/surface/joint_frames.h"

namespace cornerpin {

/// Where the tracks are on the surface, the frames' transforms taken as exact.
///
/// Up to 16 sightings of a track are carried back to the surface: the one in the fixed frame first,
/// the others evenly over those that it has. The place that most sightings support, which are
/// within `kGoodWithin` of it in their frame's noise, wins (the first of equals), and becomes the
/// weighted mean of its supporters. So a stretch in which a track slides, or follows something
/// else, does not move its place, as long as it is the smaller part.
///
/// A place is known from 3 supporters on, or when the fixed frame shows the track. The covariances
/// are those of the mean.
///
/// Linear in the observations; memory for no more than 16 places for each track.
std::vector<Place> startPlaces(const std::vector<JointFrame>& frames,
                               const ObservationsOf& observations, std::size_t trackCount);

/// Moves the chosen of the known places to the weighted mean of the sightings that support them.
/// Those that none supports stay.
///
/// \param noise  of each frame; frames with 0 are left out
void refinePlaces(const std::vector<JointFrame>& frames, const std::vector<double>& noise,
                  const ObservationsOf& observations, const std::vector<bool>& chosen,
                  std::vector<Place>& places);

}  // namespace cornerpin

#endif
