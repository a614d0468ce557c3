// SPDX-License-Identifier: BSD-3-Clause
#include "shot/trust/frame_fits.h"

#include <algorithm>
#include <cstddef>

#include "shot/fit/residuals.h"

namespace cornerpin {

namespace {

// Those of the matches that one of the two counts.
std::vector<double> eitherOf(const std::vector<double>& a, const std::vector<double>& b) {
  std::vector<double> weights = a;
  for (std::size_t i = 0; i < a.size(); ++i) weights[i] = std::max(a[i], b[i]);
  return weights;
}

}  // namespace

Residuals residualsOf(const Matches& matches, const Homography& h) {
  Residuals residuals(matches.size());
  for (std::size_t i = 0; i < matches.size(); ++i) {
    const Point r = residual(matches[i], h);
    residuals[0][i] = r.x;
    residuals[1][i] = r.y;
  }
  return residuals;
}

FrameFits::FrameFits(const Matches& matches, const FittedFrame& good, const FittedFrame& last)
    : matches_(matches),
      good_(good),
      last_(last),
      slopes_(matches, good, eitherOf(good.weights, last.weights)),
      residuals_(residualsOf(matches, good.h)),
      goodFit_(slopes_, good) {
  if (last.weights != good.weights) {
    lastFit_.emplace(slopes_, last, LinearisedFit::Stiffness::None);
  }
  if (!last.stiffness.empty()) stiffFit_.emplace(slopes_, last);
  lastHats_ = lastFit().hatsOf(slopes());
}

}  // namespace cornerpin
