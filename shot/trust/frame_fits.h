// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_TRUST_FRAME_FITS_H
#define SHOT_TRUST_FRAME_FITS_H

#include <optional>

#include "shot/fit/linearised_fit.h"
#include "shot/fit/matches.h"

namespace cornerpin {

/// The residuals of a frame's matches, in columns x and y.
using Residuals = Columns<2>;
Residuals residualsOf(const Matches& matches, const Homography& h);

/// What all figures of trust of a frame come from: its fit, linearised once with the weights of the
/// good tracks and once with those of its last step, which often are the same.
class FrameFits {
 public:
  /// \param good  with the weights of the good tracks, in full
  /// \param last  with the weights and the stiffness of the fit's last step
  /// All must outlive this.
  FrameFits(const Matches& matches, const FittedFrame& good, const FittedFrame& last);

  const Matches& matches() const { return matches_; }
  const FittedFrame& good() const { return good_; }
  const FittedFrame& last() const { return last_; }
  const FitPlace& place() const { return slopes_.place; }
  const TrackSlopes& slopes() const { return slopes_.tracks; }
  const Residuals& residuals() const { return residuals_; }

  const LinearisedFit& goodFit() const { return goodFit_; }
  /// As if the last weights were given, without stiffness.
  const LinearisedFit& lastFit() const { return lastFit_ ? *lastFit_ : goodFit_; }
  const LinearisedFit& stiffFit() const { return stiffFit_ ? *stiffFit_ : lastFit(); }
  const Symmetric2s& lastHats() const { return lastHats_; }  ///< `hatsOf` the last fit

 private:
  const Matches& matches_;
  const FittedFrame& good_;
  const FittedFrame& last_;
  FrameSlopes slopes_;
  Residuals residuals_;
  LinearisedFit goodFit_;
  std::optional<LinearisedFit> lastFit_;   // where it is another
  std::optional<LinearisedFit> stiffFit_;  // where there is stiffness
  Symmetric2s lastHats_;
};

}  // namespace cornerpin

#endif
