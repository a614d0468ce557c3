// SPDX-License-Identifier: BSD-3-Clause
#include "shot/trust/uncertainty.h"

#include <cmath>
#include <cstddef>
#include <limits>

namespace cornerpin {

namespace {

// Below this share of the total, what the fit leaves over of the noise is rounding.
constexpr double kNothingLeft = 1e-6;

// I + n^2 D D' with D the derivative of h at p and n the noise of the places.
Symmetric2 residualCovariance(const Homography& h, Point p, double placeNoise) {
  const double t = 1.0 / denominator(h, p);
  const double n = placeNoise * t;
  const double X = (h[0][0] * p.x + h[0][1] * p.y + h[0][2]) * t;
  const double Y = (h[1][0] * p.x + h[1][1] * p.y + h[1][2]) * t;
  const double Xx = n * (h[0][0] - X * h[2][0]), Xy = n * (h[0][1] - X * h[2][1]);
  const double Yx = n * (h[1][0] - Y * h[2][0]), Yy = n * (h[1][1] - Y * h[2][1]);
  return {1.0 + Xx * Xx + Xy * Xy, Xx * Yx + Xy * Yy, 1.0 + Yx * Yx + Yy * Yy};
}

}  // namespace

Uncertainty::Uncertainty(const Matches& matches, const FittedFrame& frame)
    : Uncertainty(FrameFits(matches, frame, frame)) {}

Uncertainty::Uncertainty(const FrameFits& fits)
    : fit_(fits.goodFit()), noise_(std::numeric_limits<double>::quiet_NaN()) {
  const FittedFrame& frame = fits.good();
  if (frame.model == Model::Held || !fit_.isDetermined()) return;
  std::size_t count = 0;
  double squares = 0.0;  // of the weighted residuals
  double total = 0.0;    // what they would be without a fit, for noise of 1 pixel
  Symmetric2s v(fits.matches().size());
  for (std::size_t i = 0; i < fits.matches().size(); ++i) {
    if (!(frame.weights[i] > 0.0)) continue;
    ++count;
    const double w2 = fit_.relativeSquares()[i];
    const Point r = {fits.residuals()[0][i], fits.residuals()[1][i]};
    const Symmetric2 one = residualCovariance(frame.h, fits.matches().base()[i], frame.placeNoise);
    squares += w2 * (r.x * r.x + r.y * r.y);
    total += w2 * one.trace();
    v[0][i] = w2 * w2 * one.xx;
    v[1][i] = w2 * w2 * one.xy;
    v[2][i] = w2 * w2 * one.yy;
  }
  // The residuals have w^2 r^2 = s^2 (w^2 tr V - what the fit came towards them), and over all
  // matches the latter adds up to tr(inv(A) B).
  const SquareMatrix<8> b = sumOfProducts(fits.slopes(), v);
  const SquareMatrix<8>& inverse = fit_.relativeInverse();
  double absorbed = 0.0;
  for (std::size_t i = 0; i < b.size(); ++i) absorbed += inverse[i] * b[i];
  unitCovariance_ = multiplied(inverse, multiplied(b, inverse));
  const double left = total - absorbed;
  if (count > tracksFor(frame.model) && left > kNothingLeft * total) {
    noise_ = std::sqrt(squares / left);
    freedom_ = 2.0 * static_cast<double>(count - tracksFor(frame.model));
  }
}

Symmetric2 Uncertainty::unitCovarianceAt(Point base) const {
  return covarianceOf(fit_.slopesAt(base), unitCovariance_);
}

Symmetric2 Uncertainty::covarianceAt(Point base) const {
  const double square = noise_ * noise_;
  const Symmetric2 unit = unitCovarianceAt(base);
  return {square * unit.xx, square * unit.xy, square * unit.yy};
}

double Uncertainty::deviationAt(Point base) const { return std::sqrt(covarianceAt(base).trace()); }

}  // namespace cornerpin
