// SPDX-License-Identifier: BSD-3-Clause
#include "shot/trust/final_weights.h"

#include <algorithm>
#include <cmath>

#include "shot/fit/residuals.h"
#include "shot/robust/mixture_search.h"

namespace cornerpin {

std::vector<double> squaresFrom(const Matches& matches, const Homography& h, Point front) {
  Homography scaled = h;  // with 1 for the denominator of `front`
  for (auto& row : scaled) {
    for (double& element : row) element /= denominator(h, front);
  }
  std::vector<double> squares;
  squaredResiduals(matches, scaled, squares);
  return squares;
}

std::vector<double> lossWeights(const Matches& matches, const Homography& h, Point front, Loss loss,
                                double width) {
  const std::vector<double> squares = squaresFrom(matches, h, front);
  std::vector<double> weights = bentWeights(loss, squares, width);
  for (std::size_t i = 0; i < weights.size(); ++i) {
    const bool counts = std::isfinite(squares[i]) && weights[i] > 0.0;
    weights[i] = counts ? matches.weights()[i] * std::sqrt(weights[i]) : 0.0;
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
    const double slope = 2.0 * logWeightSlope(loss, square, width);
    const double least = std::max(slope, -1.0 / square);
    stiffness[i] = {1.0 + least * r.x * r.x, least * r.x * r.y, 1.0 + least * r.y * r.y};
  }
  return stiffness;
}

std::vector<double> goodWeights(const Matches& matches, const Homography& h, Point front,
                                double sigma) {
  const double bound = kGoodWithin * kGoodWithin * sigma * sigma;
  std::vector<double> weights = squaresFrom(matches, h, front);
  for (std::size_t i = 0; i < weights.size(); ++i) {
    weights[i] = weights[i] <= bound ? matches.weights()[i] : 0.0;
  }
  return weights;
}

}  // namespace cornerpin
