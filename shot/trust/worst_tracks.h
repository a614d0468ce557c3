// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_TRUST_WORST_TRACKS_H
#define SHOT_TRUST_WORST_TRACKS_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "shot/trust/influence.h"

namespace cornerpin {

/// A track over a stretch of frames.
struct TrackStretch {
  int track = 0;
  int first = 0;
  int last = 0;
  int peak = 0;        ///< the frame of its greatest influence
  double moves = 0.0;  ///< that influence
  /// Its residual in that frame, in deviations of the tracks' ordinary ones; NaN among too few.
  double off = 0.0;
  bool standsOut = false;  ///< as `WorstTracks` says
};

/// Gathers the tracks with the greatest influence of each frame and joins them over frames.
///
/// Every fit moves without one of its tracks, even far where that one stands alone. A track stands
/// out in a frame of at least `kFewest` tracks when noise does not explain it and it matters: its
/// residual is more than `kUnlikely` deviations, as one good track in 60 million, and it moves the
/// worst corner far enough to be seen.
///
/// The deviation is that of one coordinate, from the median residual of the frame or the median
/// frame's, whichever is larger: far-off tracks are not the measure that excuses them, nor are the
/// few of one frame that happen to agree the measure that accuses the rest. A residual counts as if
/// the fit had not come towards its track: over the root of 1 less the leverage.
class WorstTracks {
 public:
  /// \param visible  the least move of a corner that stands out
  /// \param frames   there is room for as many without more memory
  explicit WorstTracks(double visible, std::size_t frames = 0) : visible_(visible) {
    entries_.reserve(kPerFrame * frames);
    frames_.reserve(frames);
  }

  /// Each frame once, in any order; tracks of NaN or no influence are passed over.
  void addFrame(int frame, const std::vector<TrackInfluence>& influences);

  /// At most `count` stretches, those that stand out first, greatest influence first. A stretch
  /// reaches from its peak over the frames next to each other in which the track is among the
  /// `kPerFrame` greatest and moves the corner at least half as far; no frame of a track is in two
  /// of them.
  std::vector<TrackStretch> worst(std::size_t count);

  static constexpr std::size_t kPerFrame = 5;
  static constexpr std::size_t kFewest = 6;
  static constexpr double kUnlikely = 6.0;

 private:
  struct Frame {
    int number;
    double deviation;  // of its residuals; NaN among too few
  };
  struct Entry {
    int track;
    std::uint32_t frame;  // its index
    double moves;
    double residual;
  };
  int frameOf(const Entry& entry) const { return frames_[entry.frame].number; }
  double usualDeviation() const;
  TrackStretch judged(const Entry& entry, double usual) const;

  double visible_;
  std::vector<Frame> frames_;
  std::vector<Entry> entries_;
  std::vector<double> residuals_;  // room for those of a frame
};

}  // namespace cornerpin

#endif
