// SPDX-License-Identifier: BSD-3-Clause
#include <memory>

#include "bench/peers/competitor.h"
#include "bench/support/matches.h"
#include "shot/fit/homography_fit.h"

namespace bench {

namespace {

using cornerpin::Homography;
using cornerpin::Matches;

Parameters parametersOf(const Homography& h) {
  return {h[0][0], h[1][0], h[2][0], h[0][1], h[1][1], h[2][1], h[0][2], h[1][2]};
}

// The matches are gathered beforehand, as the frames of the other peers are.
Run prepare(const Shot&, const std::vector<Frame>& frames) {
  auto matches = std::make_shared<std::vector<Matches>>();
  for (const Frame& frame : frames) matches->push_back(matchesOf(frame));
  auto fitted = std::make_shared<std::vector<Parameters>>(frames.size());
  const auto solve = [matches, fitted, &frames] {
    for (std::size_t f = 0; f < frames.size(); ++f) {
      const Homography start = homographyOf(frames[f].start);
      (*fitted)[f] = parametersOf(cornerpin::fitHomography((*matches)[f], start).h);
    }
  };
  return {solve, [fitted] { return *fitted; }};
}

}  // namespace

void addHomographyFit(std::vector<Competitor>& all) {
  all.push_back({"homography fit", "fitHomography, plain squares, default options", true, prepare});
}

}  // namespace bench
