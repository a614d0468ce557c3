// SPDX-License-Identifier: BSD-3-Clause
#include "shot/trust/jackknife.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "shot/fit/residuals.h"

namespace cornerpin {

namespace {

// 1 / (1 - leverage), within bounds.
double hidden(double leverage) {
  return 1.0 / std::max(1.0 - leverage, 1.0 / Jackknife::kMostHidden);
}

// inv(I - hat) r, the eigenvalues within bounds: of a symmetric 2 x 2 matrix with the eigenvalues
// m - d and m + d, a function has the value a I + b (hat - m I) with a the mean of its two values,
// and b their difference over 2 d.
Point withoutTrack(const Symmetric2& hat, Point r) {
  const double m = 0.5 * (hat.xx + hat.yy);
  const double half = 0.5 * (hat.xx - hat.yy);
  const double d = std::sqrt(half * half + hat.xy * hat.xy);
  const double a = 0.5 * (hidden(m + d) + hidden(m - d));
  const double b = d > 0.0 ? 0.5 * (hidden(m + d) - hidden(m - d)) / d : 0.0;
  return {a * r.x + b * (half * r.x + hat.xy * r.y), a * r.y + b * (hat.xy * r.x - half * r.y)};
}

FittedFrame withoutStiffness(FittedFrame frame) {
  frame.stiffness.clear();
  return frame;
}

}  // namespace

// With S a track's slopes, A the plain normal matrix and G = S inv(A) S', the others' parameters
// are w^2 inv(A) S' inv(I - w^2 G) r away from those of all (Sherman, Morrison, Woodbury). With a
// loss the first inverse is that of the fit's own matrix.
Jackknife::Jackknife(const Matches& matches, const FittedFrame& frame)
    : plain_(matches, withoutStiffness(frame)), fit_(matches, frame) {
  double count = 0.0;
  for (std::size_t t = 0; t < matches.size(); ++t) {
    if (!(frame.weights[t] > 0.0)) continue;
    count += 1.0;
    const double w2 = frame.weights[t] * frame.weights[t];
    const Match match = matches[t];
    const Slopes s = fit_.slopesAt(match.base);
    const Point r =
        withoutTrack(times(w2, plain_.responseAt(match.base)), residual(match, frame.h));
    const Parameters x = fit_.solve(s.x);
    const Parameters y = fit_.solve(s.y);
    Parameters step{};
    for (std::size_t i = 0; i < 8; ++i) step[i] = w2 * (r.x * x[i] + r.y * y[i]);
    for (std::size_t i = 0; i < 8; ++i) {
      for (std::size_t j = 0; j < 8; ++j) covariance_[i][j] += step[i] * step[j];
    }
  }
  for (Parameters& row : covariance_) {
    for (double& element : row) element *= (count - 1.0) / count;
  }
}

Symmetric2 Jackknife::covarianceAt(Point base) const {
  return covarianceOf(fit_.slopesAt(base), covariance_);
}

}  // namespace cornerpin
