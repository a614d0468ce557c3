// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_MODEL_PASS_H
#define SHOT_SOLVE_MODEL_PASS_H

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "shot/robust/robust_fit.h"
#include "shot/solve/model_choice.h"
#include "shot/solve/motion_trials.h"
#include "shot/solve/result.h"
#include "shot/trust/frame_figures.h"

namespace cornerpin {

/// What a sweep knows of a frame beyond its result.
struct SweptFrame {
  std::shared_ptr<const Quad> corners;  ///< of the surface that the frame had to carry well
  double gain = 0.0;                    ///< `FrameFit::gain`
  std::vector<bool> good;               ///< of the tracks used; empty where nothing told bad ones
};

/// The choice of a model for the frames that no others may lean on, once all frames have been
/// swept.
///
/// A frame is certain when its worst corner is expected to be off by no more than 0.5 % of the
/// surface's extent, and then keeps its transform; it is firm when chance does not explain that its
/// tracks agree, either. All that are not certain, from the base frame on, are given the model of
/// `ModelChoice`, a lower one only where it is expected to be less than half as far off as the full
/// one, or, where the tracks support the full one (`kLargestGain`), less than a quarter. A lower
/// model stands on the transform of the nearest firm frame on the base frame's side, on that of the
/// nearest one on the other side, on one between the two, on the neighbour's as that has come out,
/// or on nothing. Frames without tracks, or without a transform for other reasons, keep their
/// neighbour's.
class ModelPass {
 public:
  using TracksOf = std::function<Matches(const FrameResult&)>;
  /// The full transform that the good ones of these tracks agree on; all in the file's unit.
  using Refit = std::function<RobustFit(const Matches&, const Homography& start, Prior prior)>;

  /// \param frames    are changed
  /// \param tracksOf  what a frame was fitted to
  /// \param knownIn   all that is seen there and known
  /// \param likely    a sigma in case no frame tells one
  ModelPass(std::vector<FrameResult>& frames, const std::vector<SweptFrame>& swept,
            std::size_t base, TracksOf tracksOf, TracksOf knownIn, Refit refit, double likely);

  /// The transform that the model of a reduced frame stands on.
  const Homography& keptIn(std::size_t frame) const;

  /// The covariances of a reduced frame's corners, with what its model is expected to miss.
  void takeCovariances(std::size_t frame, const std::vector<Quad>& quads,
                       FrameFigures& figures) const;

 private:
  struct Settled {
    WeakFrame weak;
    Candidate candidate;
    double squaredError = std::numeric_limits<double>::infinity();
  };

  void findFirm(double likely);
  std::vector<const Homography*> firmTransforms() const;
  struct Around {
    std::vector<bool> reliable;                // per match
    std::vector<double> odds;                  // per match: that it is a good one
    std::vector<std::vector<double>> squares;  // per match: of its track's residuals there
  };
  Around around(std::size_t frame, const Matches& tracks, const std::vector<bool>& good) const;
  bool isCertain(std::size_t frame) const;
  WeakFrame weakFrame(std::size_t frame) const;
  WeakFrame seenAround(std::size_t frame) const;
  std::vector<Kept> groundsFor(std::size_t frame, std::ptrdiff_t step, const Quad& corners) const;
  std::optional<std::size_t> secondFrom(std::size_t first, std::ptrdiff_t step,
                                        std::ptrdiff_t most) const;
  std::optional<std::size_t> firmFrom(std::size_t frame, std::ptrdiff_t step) const;
  void settle(std::size_t frame, std::ptrdiff_t step);
  void reduceTo(const Candidate& candidate, const WeakFrame& weak, std::size_t frame);
  void keepSwept(const WeakFrame& weak, std::size_t frame, std::size_t neighbour);

  std::vector<FrameResult>& frames_;
  const std::vector<SweptFrame>& swept_;
  std::size_t base_;
  TracksOf tracksOf_;
  TracksOf knownIn_;
  Refit refit_;
  Noise usual_;
  std::vector<bool> certain_;            // by frame
  std::vector<bool> firm_;               // by frame: its transform stays
  std::vector<std::size_t> firmFrames_;  // those that are, rising
  std::optional<MotionTrials> trials_;
  std::map<std::size_t, Settled> settled_;  // of the frames that are not certain
};

}  // namespace cornerpin

#endif
