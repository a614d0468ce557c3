// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SURFACE_JOINT_ELIMINATION_H
#define SHOT_SURFACE_JOINT_ELIMINATION_H

#include <cstddef>

#include "shot/surface/front.h"
#include "shot/surface/joint_shot.h"

namespace cornerpin {

/// 4 MB of them.
constexpr std::size_t kMostNumbersKept = 1 << 19;

/// What the way back through a shot is for.
class WayBack {
 public:
  virtual ~WayBack() = default;
  /// A track becomes alive: all that are alive with it after its last frame are so already.
  virtual void restore(const EliminatedTrack& track) = 0;
  /// A frame, all of whose tracks are alive; its equations may be changed.
  virtual void visit(std::size_t frame, FrameEquations& equations) = 0;
};

/// Eliminates a shot's frames and tracks from the first frame to the last, then goes the way back.
///
/// Each frame's parameters are eliminated at once and each track after its last sighting, so that
/// the front never has more than the tracks that are alive: work goes with the frames and the
/// square of these. On the way back everything is needed in the opposite order, which would be
/// four numbers for each pair of tracks that meet. Where these are more than `mostKept`, only
/// states of the front are kept, one for every block of frames, and the way through the block is
/// gone once more.
void eliminateAndReturn(const JointShot& shot, WayBack& wayBack,
                        std::size_t mostKept = kMostNumbersKept);

}  // namespace cornerpin

#endif
