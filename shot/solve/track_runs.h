// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_TRACK_RUNS_H
#define SHOT_SOLVE_TRACK_RUNS_H

#include <cstddef>
#include <vector>

namespace cornerpin {

/// What a track is in a frame.
enum class TrackUse {
  Good,     ///< the frame's transform goes by it
  Ignored,  ///< seen, but not good, or not used
  Absent,   ///< not seen
};

/// Frames next to each other in which a track is the same, both ends included.
struct TrackRun {
  int first = 0;
  int last = 0;
  TrackUse use = TrackUse::Absent;
};

/// Gathers what tracks are in one frame after the other. Memory is proportional to the runs, as
/// long as the frames come in the order of sweeps.
class TrackRuns {
 public:
  /// \param tracks  as many as the shot has names
  explicit TrackRuns(std::size_t tracks) : runs_(tracks) {}

  /// Each track once in a frame.
  void add(int track, int frame, TrackUse use);

  /// The runs of a track in all frames from the first to the last, in order: absent wherever
  /// nothing was added.
  std::vector<TrackRun> of(int track, int first, int last) const;

 private:
  std::vector<std::vector<TrackRun>> runs_;  // by track, in the order in which they began
};

}  // namespace cornerpin

#endif
