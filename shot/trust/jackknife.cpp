// SPDX-License-Identifier: BSD-3-Clause
#include "shot/trust/jackknife.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

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
  if (hat.trace() <= 1.0 - 1.0 / Jackknife::kMostHidden) {  // so no eigenvalue is out of bounds
    const double det = (1.0 - hat.xx) * (1.0 - hat.yy) - hat.xy * hat.xy;
    return {((1.0 - hat.yy) * r.x + hat.xy * r.y) / det,
            (hat.xy * r.x + (1.0 - hat.xx) * r.y) / det};
  }
  const double m = 0.5 * (hat.xx + hat.yy);
  const double half = 0.5 * (hat.xx - hat.yy);
  const double d = std::sqrt(half * half + hat.xy * hat.xy);
  const double a = 0.5 * (hidden(m + d) + hidden(m - d));
  const double b = d > 0.0 ? 0.5 * (hidden(m + d) - hidden(m - d)) / d : 0.0;
  return {a * r.x + b * (half * r.x + hat.xy * r.y), a * r.y + b * (hat.xy * r.x - half * r.y)};
}

}  // namespace

// With S a track's slopes, A the plain normal matrix and G = S inv(A) S', the others' parameters
// are w^2 inv(A) S' inv(I - w^2 G) r away from those of all (Sherman, Morrison, Woodbury). With a
// loss the first inverse is that of the fit's own matrix.
Jackknife::Jackknife(const FrameFits& fits, const FittedFrame& frame, const LinearisedFit& plain,
                     const Symmetric2s& hats, const LinearisedFit& fit)
    : place_(fits.place()), determined_(plain.isDetermined() && fit.isDetermined()) {
  if (!determined_) return;
  Symmetric2s v(fits.matches().size());
  double count = 0.0;
  for (std::size_t i = 0; i < fits.matches().size(); ++i) {
    if (!(frame.weights[i] > 0.0)) continue;
    count += 1.0;
    const double w2 = plain.relativeSquares()[i];
    const Point r = withoutTrack({hats[0][i], hats[1][i], hats[2][i]},
                                 {fits.residuals()[0][i], fits.residuals()[1][i]});
    const Point pull = {w2 * r.x, w2 * r.y};
    v[0][i] = pull.x * pull.x;
    v[1][i] = pull.x * pull.y;
    v[2][i] = pull.y * pull.y;
  }
  const SquareMatrix<8>& inverse = fit.relativeInverse();
  covariance_ = multiplied(inverse, multiplied(sumOfProducts(fits.slopes(), v), inverse));
  for (double& element : covariance_) element *= (count - 1.0) / count;
}

Symmetric2 Jackknife::covarianceAt(Point base) const {
  return covarianceOf(place_.slopesAt(base), covariance_);
}

}  // namespace cornerpin
