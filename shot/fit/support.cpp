// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/support.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "shot/fit/linearised_fit.h"

namespace cornerpin {

double noiseGain(Model model, const Points& points, const Quad& corners) {
  constexpr double kNone = std::numeric_limits<double>::infinity();
  if (points.size() < tracksFor(model)) return kNone;
  const LinearisedFit fit(points, model);
  if (!fit.isDetermined()) return kNone;
  double worst = 0.0;
  for (const Point& corner : corners) {
    const double square = fit.responseAt(corner).trace() / 2.0;
    if (!(square >= 0.0)) return kNone;
    worst = std::max(worst, square);
  }
  return std::sqrt(worst);
}

Model supportedModel(const Points& points, const Quad& corners, Model highest) {
  for (Model model : {Model::Projective, Model::Affine, Model::Similarity}) {
    if (model <= highest && noiseGain(model, points, corners) <= kLargestGain) return model;
  }
  return points.empty() ? Model::Held : std::min(highest, Model::Translation);
}

}  // namespace cornerpin
