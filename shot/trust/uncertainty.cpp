// SPDX-License-Identifier: BSD-3-Clause
#include "shot/trust/uncertainty.h"

#include <cmath>
#include <cstddef>
#include <limits>

#include "shot/fit/residuals.h"

namespace cornerpin {

namespace {

// Below this share of the total, what the fit leaves over of the noise is rounding.
constexpr double kNothingLeft = 1e-6;

// I + n^2 D D' with D the derivative of h at p and n the noise of the places.
Symmetric2 residualCovariance(const Homography& h, Point p, double placeNoise) {
  const auto [Xx, Xy, Yx, Yy] = derivative(h, p);
  const double n2 = placeNoise * placeNoise;
  return {1.0 + n2 * Xx * Xx + n2 * Xy * Xy, n2 * Xx * Yx + n2 * Xy * Yy,
          1.0 + n2 * Yx * Yx + n2 * Yy * Yy};
}

// S' V S.
void addProduct(std::array<Parameters, 8>& sum, const Slopes& s, const Symmetric2& v, double w) {
  for (std::size_t i = 0; i < 8; ++i) {
    const double x = w * (s.x[i] * v.xx + s.y[i] * v.xy);
    const double y = w * (s.x[i] * v.xy + s.y[i] * v.yy);
    for (std::size_t j = 0; j < 8; ++j) sum[i][j] += x * s.x[j] + y * s.y[j];
  }
}

std::array<Parameters, 8> transposed(const std::array<Parameters, 8>& m) {
  std::array<Parameters, 8> t{};
  for (std::size_t i = 0; i < 8; ++i) {
    for (std::size_t j = 0; j < 8; ++j) t[j][i] = m[i][j];
  }
  return t;
}

}  // namespace

Uncertainty::Uncertainty(const Matches& matches, const FittedFrame& frame)
    : fit_(matches, frame), noise_(std::numeric_limits<double>::quiet_NaN()) {
  if (frame.model == Model::Held || !fit_.isDetermined()) return;
  std::size_t count = 0;
  double squares = 0.0;  // of the weighted residuals
  double total = 0.0;    // what they would be without a fit, for noise of 1 pixel
  for (std::size_t i = 0; i < matches.size(); ++i) {
    if (!(frame.weights[i] > 0.0)) continue;
    ++count;
    const double w2 = frame.weights[i] * frame.weights[i];
    const Point base = matches.base()[i];
    const Symmetric2 v = residualCovariance(frame.h, base, frame.placeNoise);
    squares += w2 * squaredResidual(matches[i], frame.h);
    total += w2 * v.trace();
    addProduct(unitCovariance_, fit_.slopesAt(base), v, w2 * w2);
  }
  // The residuals have w^2 r^2 = s^2 (w^2 tr V - what the fit came towards them), and over all
  // matches the latter adds up to tr(inv(A) B).
  double absorbed = 0.0;
  for (std::size_t i = 0; i < 8; ++i) {
    unitCovariance_[i] = fit_.solve(unitCovariance_[i]);
    absorbed += unitCovariance_[i][i];
  }
  unitCovariance_ = transposed(unitCovariance_);
  for (Parameters& row : unitCovariance_) row = fit_.solve(row);
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
