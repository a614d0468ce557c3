// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_SWEEP_MEMORY_H
#define SHOT_SOLVE_SWEEP_MEMORY_H

#include <cstddef>
#include <vector>

#include "shot/fit/matches.h"
#include "shot/robust/error_model.h"
#include "shot/robust/robust_fit.h"

namespace cornerpin {

/// What the frames of one sweep say of the next: how noisy tracks are, and which of them have kept
/// to the surface. Of each sweep by itself.
class SweepMemory {
 public:
  /// \param tracks  as many as the shot has names
  explicit SweepMemory(std::size_t tracks) : records_(tracks) {}

  /// For a frame with these matches.
  ///
  /// The recent sigma is the median of the last five, so that one frame that went wrong does not
  /// excuse the next. The low one is the lowest tenth's of all: bad tracks only ever enlarge a
  /// sigma, and those that creep off do so for long. A match's odds are (1 + frames in which its
  /// track was good) to (1 + frames in which it was not), its confidence is its weight times the
  /// share of the former, each counted as one more.
  Prior priorFor(const Matches& matches) const;

  /// Of a frame that was searched, in the fit's unit.
  void rememberErrors(double sigma, int freedom);

  /// The sigma to take a solved frame's for: of as few tracks as cannot tell a bad one, which a
  /// transform meets whatever they are, no less than the recent one or, before a frame was
  /// searched, the likely one.
  double sigmaOf(const RobustFit& fit) const;

  /// Of a solved frame.
  void rememberGood(const Matches& matches, const std::vector<bool>& good);

 private:
  struct Record {
    int good = 0;
    int seen = 0;
  };
  double recentSigma() const;
  double lowSigma() const;

  int freedom_ = 0;                   // of the errors of the frame searched last
  std::vector<Record> records_;       // by track
  std::vector<double> sigmas_;        // in the order of the frames
  std::vector<double> sortedSigmas_;  // the same, the lowest first
};

}  // namespace cornerpin

#endif
