// SPDX-License-Identifier: BSD-3-Clause
#include "shot/trust/uncertainty.h"

#include <cmath>
#include <cstddef>
#include <limits>

namespace cornerpin {

namespace {

// Below this share of the total, what the fit leaves over of the noise is rounding.
constexpr double kNothingLeft = 1e-6;

// Into `v` I + n^2 D D' for each match, with D the derivative of h at its place and n the noise of
// the places. Not finite on the horizon.
void setResidualCovariances(const Homography h, const Points& places, double n, Symmetric2s& v) {
  const double* const x = places.x();
  const double* const y = places.y();
  double* const xx = v[0];
  double* const xy = v[1];
  double* const yy = v[2];
  for (std::size_t i = 0; i < v.count(); ++i) {
    const double t = 1.0 / (h[2][0] * x[i] + h[2][1] * y[i] + h[2][2]);
    const double nt = n * t;
    const double X = (h[0][0] * x[i] + h[0][1] * y[i] + h[0][2]) * t;
    const double Y = (h[1][0] * x[i] + h[1][1] * y[i] + h[1][2]) * t;
    const double Xx = nt * (h[0][0] - X * h[2][0]), Xy = nt * (h[0][1] - X * h[2][1]);
    const double Yx = nt * (h[1][0] - Y * h[2][0]), Yy = nt * (h[1][1] - Y * h[2][1]);
    xx[i] = 1.0 + Xx * Xx + Xy * Xy;
    xy[i] = Xx * Yx + Xy * Yy;
    yy[i] = 1.0 + Yx * Yx + Yy * Yy;
  }
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
  setResidualCovariances(frame.h, fits.matches().base(), frame.placeNoise, v);
  for (std::size_t i = 0; i < v.count(); ++i) {
    const double w2 = fit_.relativeSquares()[i];
    if (!(w2 > 0.0)) {
      v[0][i] = v[1][i] = v[2][i] = 0.0;
      continue;
    }
    ++count;
    const Point r = {fits.residuals()[0][i], fits.residuals()[1][i]};
    squares += w2 * (r.x * r.x + r.y * r.y);
    total += w2 * (v[0][i] + v[2][i]);
    for (std::size_t c = 0; c < 3; ++c) v[c][i] *= w2 * w2;
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
