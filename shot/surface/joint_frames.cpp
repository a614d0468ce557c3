// SPDX-License-Identifier: BSD-3-Clause
#include "shot/surface/joint_frames.h"

#include <algorithm>
#include <cmath>

#include "shot/plane/median.h"

namespace cornerpin {

bool isKnown(const Place& place) {
  return std::isfinite(place.point.x) && std::isfinite(place.point.y);
}

std::vector<double> noiseOf(const std::vector<JointFrame>& frames) {
  std::vector<double> sigmas;
  for (const JointFrame& frame : frames) {
    if (frame.part != JointFrame::Part::None && frame.sigma > 0.0) sigmas.push_back(frame.sigma);
  }
  std::vector<double> noise(frames.size(), 0.0);
  if (sigmas.empty()) return noise;
  const double median = lowerMedian(sigmas);
  for (std::size_t f = 0; f < frames.size(); ++f) {
    if (frames[f].part == JointFrame::Part::None || !isFinite(frames[f].h)) continue;
    noise[f] = frames[f].sigma > median ? frames[f].sigma : median;
  }
  return noise;
}

bool isSighting(const Match& observation) {
  return observation.weight > 0.0 && std::isfinite(observation.weight) &&
         std::isfinite(observation.present.x) && std::isfinite(observation.present.y);
}

}  // namespace cornerpin
