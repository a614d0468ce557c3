// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SURFACE_TRACK_LIVES_H
#define SHOT_SURFACE_TRACK_LIVES_H

#include <cstddef>
#include <vector>

#include "shot/surface/joint_frames.h"

namespace cornerpin {

/// The joint fit's work in a frame is the square of the tracks seen there, and where a track is
/// last seen that of the tracks alive: from their first sighting to their last. A frame that shows
/// no more than so many has them all in the fit, as long as no more than so many are alive.
constexpr std::size_t kEnoughSeen = 200;
constexpr std::size_t kMostAlive = 600;

/// Which tracks take part in the joint fit, and where. Each has a slot of the front to itself while
/// it is alive; another one has it afterwards.
struct TrackLives {
  static constexpr int kNoSlot = -1;

  std::vector<int> slots;                ///< of each track; `kNoSlot` for those left out
  std::vector<std::vector<int>> ending;  ///< for each frame, the tracks last seen in it
  std::vector<std::size_t> extents;      ///< for each frame, up to which slot there are tracks
  double meanLength = 0.0;               ///< of a life, in frames
};

/// Frame by frame, the tracks with a known place that a frame shows are added until it has
/// `kEnoughSeen`: those that are seen longest from there on first, then the lower index. One for
/// which there is no room at some time of its life is left out.
///
/// \param noise  of each frame; frames with 0 are left out
TrackLives livesOf(const std::vector<double>& noise, const std::vector<Place>& places,
                   const ObservationsOf& observations);

}  // namespace cornerpin

#endif
