// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_TRUST_LASTING_ERRORS_H
#define SHOT_TRUST_LASTING_ERRORS_H

#include <cstddef>
#include <vector>

#include "shot/plane/points.h"

namespace cornerpin {

/// How much worse the mean of a track's errors over some frames is than that of errors which have
/// nothing to do with each other from frame to frame. A track that begins to slide, or is drawn
/// along by something, is off for long: many sightings then say little more than few do.
class LastingErrors {
 public:
  /// \param tracks  as many as the shot has names
  explicit LastingErrors(std::size_t tracks) : tracks_(tracks) {}

  /// A track's residual in a frame in which it is good. Each track's frames in order, up or down; a
  /// stretch ends where a frame is left out.
  void add(int track, int frame, Point residual);

  /// The variance of means over `kStretch` frames in a row, in units of what it would be without
  /// errors that last; 1 where it is no larger, or nothing tells. The residuals of a track count as
  /// distances from the mean of them all, which its place is: of n errors without relation, s of
  /// them in a row add up to a square (n - s) / (n - 1) times the sum of theirs.
  double varianceRatio() const;

  static constexpr int kStretch = 12;

 private:
  struct Track {
    int frame = 0;       // the last one
    int count = 0;       // of all its residuals
    int inStretch = 0;   // of these, in the stretch so far
    Point sum;           // of those in the stretch
    double squares = 0;  // of the same
    double sums = 0;     // the squared sums of all full stretches
    double all = 0;      // the squares in all full stretches
  };
  std::vector<Track> tracks_;
};

}  // namespace cornerpin

#endif
