// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_MODEL_CHOICE_H
#define SHOT_SOLVE_MODEL_CHOICE_H

#include <array>
#include <limits>
#include <optional>
#include <vector>

#include "shot/fit/linearised_fit.h"
#include "shot/fit/matches.h"
#include "shot/fit/model.h"
#include "shot/plane/homography.h"
#include "shot/solve/motion_trials.h"

namespace cornerpin {

/// A frame whose model is to be chosen.
struct WeakFrame {
  Matches tracks;                  ///< the good ones
  std::optional<Homography> full;  ///< fitted to them with all eight parameters
  Quad corners{};                  ///< of the surface
  Homography seen{};               ///< the transform of the nearest frame that is well known
  /// Of the same tracks' residuals in frames near by that are well known; 0 where there are none.
  double sigma = 0.0;
};

/// A transform for a lower model to stand on.
struct Kept {
  Homography h{};
  Offsets from;
  double squaredError = 0.0;  ///< of a frame that is not well known itself
};

/// A lower model fitted to a frame.
struct Candidate {
  LowerModel lower;
  Kept kept;
  Homography h{};
  double squaredError = 0.0;  ///< `ModelChoice::squaredError`, of the best
};

/// Which model a frame is given: the full one, or a lower one that its tracks do not contradict and
/// whose corners are expected to be nearer to the truth.
///
/// - A lower model is contradicted where what it leaves over of the squares beyond what the full
///   one does is more than noise leaves over but in one of 1,000 frames (an F test). Where there is
///   no full one, all that it leaves over counts.
/// - The expected square of a corner's error is noise and bias. Noise follows from the fit, for
///   the sigma of the frame and of the shot together, or where it is larger that of the frame's
///   tracks in other frames: errors that last a fit to few tracks takes for motion. The bias of a
///   lower model is taken to be normal with the mean square t^2 that `MotionTrials` find in the
///   shot. Where they find nothing t is as far as the model itself carries a corner off the mean of
///   all (a translation: as it carries them), but no more than a quarter of the surface's extent
///   (an affine one), a half (a similarity), or the whole (a translation). The full transform tells
///   of it too: it lies d off, of which noise makes V. Together, with k = t^2 / (t^2 + V), the bias
///   has the mean square k^2 d^2 + k V.
///
/// The largest of the corners counts.
class ModelChoice {
 public:
  ModelChoice(const WeakFrame& frame, const MotionTrials& trials, const Noise& usual);

  /// Of the full transform; infinite where there is none, or where it has a corner on the other
  /// side of the horizon.
  double fullError() const;

  /// The best of the lower models on top of these, on top of the first of several alike; none where
  /// the tracks contradict all of them. Where there is no full transform to take instead, the noise
  /// is then taken to be what the closest one leaves over.
  /// \param bound  beside a full transform, one whose squared error is not below this is not wanted
  std::optional<Candidate> bestOnTopOf(const std::vector<Kept>& kept,
                                       double bound = std::numeric_limits<double>::infinity());

  /// What is expected of the square of a candidate's worst corner's error.
  double squaredError(const Candidate& candidate);

  /// Of the images of points by a candidate.
  std::vector<Symmetric2> covariances(const Candidate& candidate, const Points& points);

  /// Of one coordinate of a good track's residual.
  double sigma() const { return noise_.sigma; }

 private:
  LinearisedFit linearised(const Candidate& candidate) const;
  double squaredError(const Candidate& candidate, double bound);
  std::vector<Symmetric2> covariances(const Candidate& candidate, const LinearisedFit& fit,
                                      const Points& points);
  std::vector<double> squaredBias(const Candidate& candidate, const LinearisedFit& fit,
                                  const Points& points);
  double varianceOf(const LinearisedFit& fit) const;
  std::vector<Candidate> candidatesOn(const std::vector<Kept>& kept) const;
  std::optional<Candidate> bestOf(const std::vector<Candidate>& candidates, double bound);
  std::size_t pairsLeftBy(const Candidate& candidate) const;
  bool isContradicted(const Candidate& candidate) const;
  double priorOf(const Candidate& candidate) const;
  double fullVariance(Point p) const;
  double squaresOf(const Homography& h) const;

  const WeakFrame& frame_;
  std::optional<LinearisedFit> full_;  // where there is one
  double fullSquares_ = 0.0;
  std::size_t pairs_ = 0;  // of parameters of what lower models are compared with
  Noise noise_;
  FrameTrials trials_;
};

}  // namespace cornerpin

#endif
