// SPDX-License-Identifier: BSD-3-Clause
#include "shot/trust/influence.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "shot/fit/residuals.h"

namespace cornerpin {

namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

// Below this determinant of I - hat the other tracks do not fix the model.
constexpr double kNoneLeft = 1e-9;

// What the parameters change by when the match, of this weight in the fit, leaves; false when the
// others do not fix them. With A the normal matrix, S the match's slopes and G = S inv(A) S', the
// matrix without the match is A - w^2 S'S, whose inverse is
//
//     inv(A) + w^2 inv(A) S' inv(I - w^2 G) S inv(A)    (Sherman, Morrison, Woodbury).
//
// The gradient of the others is w^2 S' r, r being the match's residual, as all together it is 0; so
// the step is -w^2 inv(A) S' inv(I - w^2 G) r.
bool stepWithout(const LinearisedFit& fit, const Match& m, double weight, Point r,
                 Parameters& step) {
  const Slopes s = fit.slopesAt(m.base);
  const Symmetric2 g = fit.responseAt(m.base);
  const double w2 = weight * weight;
  const double a = 1.0 - w2 * g.xx;
  const double b = -w2 * g.xy;
  const double d = 1.0 - w2 * g.yy;
  const double det = a * d - b * b;
  if (!(det > kNoneLeft)) return false;
  const double k = -w2 * fit.scale() / det;
  const double x = k * (d * r.x - b * r.y);
  const double y = k * (a * r.y - b * r.x);
  for (std::size_t i = 0; i < step.size(); ++i) step[i] = s.x[i] * x + s.y[i] * y;
  step = fit.solve(step);
  return true;
}

double worstMove(const LinearisedFit& fit, const Parameters& step, const Quad& corners) {
  double worst = 0.0;
  for (const Point& corner : corners) {
    const Point d = fit.displacement(corner, step);
    const double distance = std::hypot(d.x, d.y);
    if (!std::isfinite(distance)) return kNone;
    worst = std::max(worst, distance);
  }
  return worst;
}

}  // namespace

std::vector<TrackInfluence> influencesOf(const Matches& matches, const FittedFrame& frame,
                                         const Quad& corners) {
  std::vector<TrackInfluence> result(matches.size());
  bool fitted = false;
  for (std::size_t i = 0; i < result.size(); ++i) {
    const Point r = residual(matches[i], frame.h);
    result[i].track = matches.tracks()[i];
    result[i].residual = std::hypot(r.x, r.y);
    fitted = fitted || frame.weights[i] > 0.0;
  }
  if (!fitted || frame.model == Model::Held) return result;
  const LinearisedFit fit(matches, frame);
  for (std::size_t i = 0; i < result.size(); ++i) {
    const Match m = matches[i];
    const double weight = frame.weights[i];
    if (!(weight > 0.0)) continue;
    result[i].weight = weight;
    const double leverage = weight * weight * fit.responseAt(m.base).trace() / 2.0;
    result[i].leverage = fit.isDetermined() ? std::clamp(leverage, 0.0, 1.0) : kNone;
    Parameters step{};
    const bool fixed =
        fit.isDetermined() && stepWithout(fit, m, weight, residual(m, frame.h), step);
    result[i].influence = fixed ? worstMove(fit, step, corners) : kNone;
  }
  return result;
}

}  // namespace cornerpin
