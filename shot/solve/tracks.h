// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_TRACKS_H
#define SHOT_SOLVE_TRACKS_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "shot/solve/unused_track.h"

namespace cornerpin {

/// The place of one track in one frame.
struct Observation {
  double x = 0.0;
  double y = 0.0;
  float weight = 1.0f;     ///< a residual is multiplied by it, so its cost is w^2 r^2; 0: absent
  std::int32_t track = 0;  ///< index into `Tracks::names`
  std::int32_t frame = 0;
  std::uint32_t line = 0;  ///< where it was read; 0 for none
};

/// The tracks of a shot, in memory proportional to the observations.
struct Tracks {
  struct Range {
    const Observation* first;
    const Observation* last;
    const Observation* begin() const { return first; }
    const Observation* end() const { return last; }
  };

  int firstFrame() const { return observations.front().frame; }
  int lastFrame() const { return observations.back().frame; }
  int frameCount() const { return lastFrame() - firstFrame() + 1; }
  /// The observations of a frame in the order of their tracks; empty outside the shot. A look-up
  /// once they are arranged; otherwise, or when some have come or gone since, a search.
  Range inFrame(int frame) const;

  /// Sorts the observations by frame, then by track, then by line, and notes where each frame
  /// begins; false, and nothing noted, when a frame has a track twice.
  ///
  /// Observations in order are gone through once. Others are gathered by frame in memory of 4 bytes
  /// for each, 8 for each frame between; only frames whose tracks are out of order are sorted by
  /// comparison.
  bool arrange();

  /// Puts the names in order, byte by byte, and renumbers the observations' tracks.
  void sortNames();

  std::vector<std::string> names;         ///< in order, where they were read
  std::vector<Observation> observations;  ///< by frame, then by track; never empty once read
  std::vector<std::size_t> frameStarts;   ///< of each frame and the end of the last; may be empty
  /// By track, why a selection has left nothing of it; may be empty.
  std::vector<std::optional<Unused>> emptied;
};

/// The most frames that a shot may span, gaps included.
constexpr std::int64_t kMaxFrames = 2'000'000;

/// Frames lie between this and its negative: twice a frame is an int too.
constexpr std::int32_t kFurthestFrame = 1'000'000'000;

}  // namespace cornerpin

#endif
