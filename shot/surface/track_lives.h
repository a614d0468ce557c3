// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SURFACE_TRACK_LIVES_H
#define SHOT_SURFACE_TRACK_LIVES_H

#include <cstddef>
#include <vector>

#include "shot/surface/joint_frames.h"

namespace cornerpin {

/// A track is alive from its first sighting to its last. No more than this many that are alive at a
/// time take part in the joint fit: its work is the square of them for each frame.
constexpr std::size_t kMostAlive = 200;

/// Which tracks take part in the joint fit, and where. Each has a slot of the front to itself while
/// it is alive; another one has it afterwards.
struct TrackLives {
  static constexpr int kNoSlot = -1;

  std::vector<int> slots;                ///< of each track; `kNoSlot` for those left out
  std::vector<std::vector<int>> ending;  ///< for each frame, the tracks last seen in it
  std::vector<std::size_t> extents;      ///< for each frame, up to which slot there are tracks
  double meanLength = 0.0;               ///< of a life, in frames
};

/// Among the tracks with a known place, those with the most sightings come first (then the lower
/// index); one for which there is no room at some time of its life is left out.
///
/// \param noise  of each frame; frames with 0 are left out
TrackLives livesOf(const std::vector<double>& noise, const std::vector<Place>& places,
                   const ObservationsOf& observations);

}  // namespace cornerpin

#endif
