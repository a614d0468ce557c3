// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/residuals.h"

#include <cmath>
#include <limits>

namespace cornerpin {

double weightedSquares(const Matches& matches, const Homography& h) {
  double sum = 0.0;
  for (std::size_t i = 0; i < matches.size(); ++i) {
    sum += matches.squaredWeights()[i] * squaredResidual(matches[i], h);
  }
  return sum;
}

double rmsResidual(const Matches& matches, const Homography& h) {
  double squares = 0.0;
  for (std::size_t i = 0; i < matches.size(); ++i) squares += squaredResidual(matches[i], h);
  const double rms = std::sqrt(squares / static_cast<double>(matches.size()));
  return std::isfinite(rms) ? rms : std::numeric_limits<double>::quiet_NaN();
}

void squaredResiduals(const Matches& matches, const Homography& h, std::vector<double>& squares) {
  squares.resize(matches.size());
  const double* x = matches.base().x();
  const double* y = matches.base().y();
  const double* u = matches.present().x();
  const double* v = matches.present().y();
  for (std::size_t i = 0; i < squares.size(); ++i) {
    const double s = h[2][0] * x[i] + h[2][1] * y[i] + h[2][2];
    const double t = 1.0 / s;
    const double dx = (h[0][0] * x[i] + h[0][1] * y[i] + h[0][2]) * t - u[i];
    const double dy = (h[1][0] * x[i] + h[1][1] * y[i] + h[1][2]) * t - v[i];
    const double square = dx * dx + dy * dy;
    squares[i] = std::numeric_limits<double>::infinity();
    if (s > kHorizon) squares[i] = square;
  }
}

}  // namespace cornerpin
