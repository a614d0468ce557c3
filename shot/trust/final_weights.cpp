// SPDX-License-Identifier: BSD-3-Clause
#include "shot/trust/final_weights.h"

#include <cmath>
#include <limits>

#include "shot/fit/residuals.h"
#include "shot/robust/mixture_search.h"

namespace cornerpin {

namespace {

// Infinite for a match that the horizon parts from `front`.
double distanceOf(const Match& match, const Homography& h, Point front) {
  if (!onSameSide(h, match.base, front)) return std::numeric_limits<double>::infinity();
  const Point r = residual(match, h);
  return std::hypot(r.x, r.y);
}

}  // namespace

std::vector<double> lossWeights(const Matches& matches, const Homography& h, Point front, Loss loss,
                                double width) {
  std::vector<double> weights = matches.weights();
  for (std::size_t i = 0; i < weights.size(); ++i) {
    const double distance = distanceOf(matches[i], h, front);
    weights[i] *= std::isfinite(distance) ? std::sqrt(lossWeight(loss, distance, width)) : 0.0;
    if (!(weights[i] > 0.0)) weights[i] = 0.0;
  }
  return weights;
}

std::vector<double> goodWeights(const Matches& matches, const Homography& h, Point front,
                                double sigma) {
  std::vector<double> weights = matches.weights();
  for (std::size_t i = 0; i < weights.size(); ++i) {
    if (!(distanceOf(matches[i], h, front) <= kGoodWithin * sigma)) weights[i] = 0.0;
  }
  return weights;
}

}  // namespace cornerpin
