// SPDX-License-Identifier: BSD-3-Clause
#include "shot/trust/final_weights.h"

#include <algorithm>
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

std::vector<Symmetric2> lossStiffness(const Matches& matches, const Homography& h, Loss loss,
                                      double width) {
  std::vector<Symmetric2> stiffness(matches.size(), {1.0, 0.0, 1.0});
  for (std::size_t i = 0; i < stiffness.size(); ++i) {
    const Point r = residual(matches[i], h);
    const double square = r.x * r.x + r.y * r.y;
    if (!(square > 0.0)) continue;
    const double slope = 2.0 * logWeightSlope(loss, std::sqrt(square), width);
    const double least = std::max(slope, -1.0 / square);
    stiffness[i] = {1.0 + least * r.x * r.x, least * r.x * r.y, 1.0 + least * r.y * r.y};
  }
  return stiffness;
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
