// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_MOTION_TRIALS_H
#define SHOT_SOLVE_MOTION_TRIALS_H

#include <cstddef>
#include <optional>
#include <vector>

#include "shot/fit/matches.h"
#include "shot/fit/model.h"
#include "shot/plane/homography.h"
#include "shot/plane/points.h"

namespace cornerpin {

/// A standard deviation of one coordinate of a good track's residual, and how many pairs of degrees
/// of freedom tell it.
struct Noise {
  double sigma = 0.0;
  std::size_t pairs = 0;
};

/// Whether residuals are larger than noise makes them but in one of 1,000 frames.
/// \param squares  of so many pairs of degrees of freedom
bool contradicts(double squares, std::size_t pairs, const Noise& noise);

/// Which frames a transform is taken from: so many frames off.
using Offsets = std::vector<std::ptrdiff_t>;

/// The transform of a frame by those of others, by the paths of the corners (`quadAt`). Of one
/// frame its own. Not finite where there is none.
Homography takenFrom(const std::vector<Homography>& others, const Offsets& from,
                     const Quad& corners);

/// What is fitted to a frame's tracks on top of transforms from other frames.
struct LowerModel {
  Model model = Model::Held;
  Offsets from;
};

/// A frame as it is put to the trial.
struct TrialFrame {
  const Matches& tracks;   ///< the good ones
  const Quad& corners;     ///< of the surface
  const Homography& seen;  ///< puts both about where the frame sees them
  std::size_t pairs;       ///< of parameters of what lower models are compared with
};

/// How far lower models go wrong in the shot at hand: each is fitted in frames whose transforms are
/// well known, as if they had no more tracks than the frame in question, and compared with what is
/// known.
class MotionTrials {
 public:
  /// \param known  by frame: its transform where it is well known
  explicit MotionTrials(std::vector<std::optional<Homography>> known);

  /// The mean square of how far images of `points` are off, over at most 50 frames spread over the
  /// shot. The motion from those frames to those which the transforms are taken from is put on top
  /// of `frame.seen`, and the tracks have no noise. A trial in which tracks with noise would
  /// contradict the model does not count, and as there may be worse ones two more count as the
  /// mean does, with nothing to their credit. Where fewer than two count, halves of the offsets do;
  /// what is missed is taken to grow with the time to the power of the number of offsets, as it
  /// does for smooth motion. Empty where there are no such frames.
  std::vector<double> misses(const LowerModel& lower, const TrialFrame& frame, const Points& points,
                             const Noise& noise) const;

 private:
  std::vector<std::size_t> framesFor(const Offsets& from) const;
  std::optional<Homography> keptIn(std::size_t trial, const Offsets& from,
                                   const TrialFrame& frame) const;
  std::vector<double> missesAt(const Offsets& from, Model model, const TrialFrame& frame,
                               const Points& points, const Noise& noise) const;

  std::vector<std::optional<Homography>> known_;
};

}  // namespace cornerpin

#endif
