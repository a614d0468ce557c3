// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_MOTION_TRIALS_H
#define SHOT_SOLVE_MOTION_TRIALS_H

#include <cstddef>
#include <map>
#include <optional>
#include <vector>

#include "shot/fit/matches.h"
#include "shot/fit/model.h"
#include "shot/fit/reduced_fit.h"
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
};

/// The frames of a shot whose transforms are well known.
class MotionTrials {
 public:
  /// \param known  by frame: its transform where it is well known, which outlives this; else null
  explicit MotionTrials(std::vector<const Homography*> known);

  /// At most 50 of the frames, spread over the shot, for which those at the offsets are known too.
  std::vector<std::size_t> framesFor(const Offsets& from) const;

  /// What lower models in `frame` would stand on, were the motion to it that from the frames at the
  /// offsets to `trial`, put on top of what is seen. Not finite where there is none.
  Homography keptIn(std::size_t trial, const Offsets& from, const TrialFrame& frame) const;

 private:
  std::vector<const Homography*> known_;  // by frame
  std::vector<std::size_t> frames_;       // those that are, rising
};

/// How far lower models go wrong in the shot at hand: each is fitted in frames whose transforms are
/// well known, as if they had no more tracks than the frame in question, and compared with what is
/// known. What the models have in common is worked out once.
class FrameTrials {
 public:
  /// What `frame` refers to, and `trials`, outlive this.
  FrameTrials(const MotionTrials& trials, const TrialFrame& frame)
      : trials_(trials), frame_(frame) {}

  /// The mean square of how far images of `points` are off, over the frames of `MotionTrials`. The
  /// tracks have no noise. A trial in which tracks with noise would contradict the model does not
  /// count, and as there may be worse ones two more count as the mean does, with nothing to their
  /// credit. Where fewer than two count, halves of the offsets do; what is missed is taken to grow
  /// with the time to the power of the number of offsets, as it does for smooth motion. Empty where
  /// there are no such frames.
  /// \param pairs  of parameters of what lower models are compared with
  std::vector<double> misses(const LowerModel& lower, const Points& points, std::size_t pairs,
                             const Noise& noise);

 private:
  struct Trial {
    Homography kept;
    FitsOnTop fits;
  };

  const std::vector<Trial>& trialsFor(const Offsets& from);
  std::vector<double> missesAt(const Offsets& from, Model model, const Points& points,
                               std::size_t pairsLeft, const Noise& noise);

  const MotionTrials& trials_;
  TrialFrame frame_;
  Matches exact_;  // the tracks as they would be without noise
  std::vector<double> squaredWeights_;
  std::map<Offsets, std::vector<Trial>> all_;
};

}  // namespace cornerpin

#endif
