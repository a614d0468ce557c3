// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_TRUST_UNCERTAINTY_H
#define SHOT_TRUST_UNCERTAINTY_H

#include "shot/fit/linearised_fit.h"
#include "shot/fit/matches.h"
#include "shot/trust/frame_fits.h"

namespace cornerpin {

/// How far noise in the tracks lets a fitted frame be off.
///
/// The noise is taken to be equal and independent in every position of every track, those in the
/// base frame included, whatever the weights: weights say how much a track is to count, not how
/// noisy it is. With D the 2 x 2 derivative of the transform at a track, its residual then has the
/// covariance s^2 V, V = I + D D'. The parameters have s^2 inv(A) B inv(A), A = sum of w^2 S'S and
/// B = sum of w^4 S'V S, which is first-order exact for any weights, and the residuals give
/// s^2 = sum of w^2 r^2 / (sum of w^2 tr V - tr(inv(A) B)). With weights of 1 and an exact base
/// frame the last divisor is the familiar 2 n - 8.
///
/// Only the fitted parameters count: terms kept from a neighbour are taken as exact.
class Uncertainty {
 public:
  Uncertainty(const Matches& matches, const FittedFrame& frame);
  /// Of the good tracks.
  explicit Uncertainty(const FrameFits& fits);

  /// `LinearisedFit::isDetermined`; without it there are no figures.
  bool isDetermined() const { return fit_.isDetermined(); }
  /// s: the standard deviation of a track along each axis, in pixels. NaN where the model meets
  /// its tracks exactly whatever they are (as four tracks do) and for a held frame.
  double noise() const { return noise_; }
  /// How many errors told the noise: two for each track beyond those that the model meets. 0 where
  /// there is none.
  double freedom() const { return freedom_; }
  /// The covariance of the image of a point that is exact in the base frame, in pixels^2.
  Symmetric2 covarianceAt(Point base) const;
  /// The same for noise of 1 pixel, whatever the residuals say.
  Symmetric2 unitCovarianceAt(Point base) const;
  /// The root of the mean squared distance between that image and where it ought to be.
  double deviationAt(Point base) const;

 private:
  LinearisedFit fit_;
  SquareMatrix<8> unitCovariance_{};  // of the parameters, for noise of 1: inv(A) B inv(A)
  double noise_;
  double freedom_ = 0.0;
};

}  // namespace cornerpin

#endif
