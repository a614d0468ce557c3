// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_TRUST_JACKKNIFE_H
#define SHOT_TRUST_JACKKNIFE_H

#include "shot/fit/linearised_fit.h"
#include "shot/trust/frame_fits.h"

namespace cornerpin {

/// How far a frame's fit moves when each of its tracks in turn is left out.
///
/// With d the move of a point's image without a track, (n - 1) / n times the sum of d d' over the n
/// tracks is the jackknife's estimate of the image's covariance. It takes no two errors to be
/// equally large: R. G. Miller, "The jackknife - a review", Biometrika 61 (1974); J. G. MacKinnon,
/// H. White, "Some heteroskedasticity-consistent covariance matrix estimators with improved finite
/// sample properties", Journal of Econometrics 29 (1985). Of equal errors it says a little too
/// much.
///
/// The fit comes towards each track by its leverage l, and a track that is left out is off by
/// 1 / (1 - l) times its residual. Of a track that stands alone that says next to nothing but is
/// the largest move of all; so the residual counts at most `kMostHidden` times.
///
/// A fit with a loss is less stiff than its weights alone would have it, as a track that is nearly
/// left out pulls less the further it is off: all moves are larger.
class Jackknife {
 public:
  /// Of the fit with the weights and the stiffness of its last step.
  static Jackknife ofLast(const FrameFits& fits) {
    return {fits, fits.last(), fits.lastFit(), fits.lastHats(), fits.stiffFit()};
  }
  /// Of plain squares of the good tracks.
  static Jackknife ofGood(const FrameFits& fits) {
    const LinearisedFit& fit = fits.goodFit();
    return {fits, fits.good(), fit, fit.hatsOf(fits.slopes()), fit};
  }

  /// False where the tracks do not fix the fit (`LinearisedFit::isDetermined`), or where so many
  /// are nearly left out that it has no stiffness; the rest then means nothing.
  bool isDetermined() const { return determined_; }
  /// Of the image of a point that is exact in the base frame, in pixels^2.
  Symmetric2 covarianceAt(Point base) const;

  static constexpr double kMostHidden = 8.0;

 private:
  Jackknife(const FrameFits& fits, const FittedFrame& frame, const LinearisedFit& plain,
            const Symmetric2s& hats, const LinearisedFit& fit);

  FitPlace place_;
  bool determined_;
  SquareMatrix<8> covariance_{};  // of the parameters
};

}  // namespace cornerpin

#endif
