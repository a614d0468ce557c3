// SPDX-License-Identifier: BSD-3-Clause
#include "shot/plane/quad_path.h"

namespace cornerpin {

namespace {

// What each of the places counts; they add up to 1.
std::vector<double> sharesAt(double time, const std::vector<double>& times) {
  std::vector<double> shares(times.size(), 1.0);
  for (std::size_t i = 0; i < times.size(); ++i) {
    for (std::size_t j = 0; j < times.size(); ++j) {
      if (j != i) shares[i] *= (time - times[j]) / (times[i] - times[j]);
    }
  }
  return shares;
}

}  // namespace

Quad quadAt(double time, const std::vector<double>& times,
            const std::vector<Homography>& transforms, const Quad& quad) {
  const std::vector<double> shares = sharesAt(time, times);
  Quad corners{};
  for (std::size_t t = 0; t < times.size(); ++t) {
    for (std::size_t i = 0; i < 4; ++i) {
      const Point p = map(transforms[t], quad[i]);
      corners[i].x += shares[t] * p.x;
      corners[i].y += shares[t] * p.y;
    }
  }
  return corners;
}

}  // namespace cornerpin
