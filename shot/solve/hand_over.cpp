// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/hand_over.h"

#include <algorithm>
#include <cmath>

#include "shot/fit/support.h"
#include "shot/plane/similarity.h"
#include "shot/solve/surface_map.h"

namespace cornerpin {

namespace {

double varianceOf(const Points& points, const Quad& surface) {
  const double gain = noiseGain(Model::Projective, points, surface);
  return gain * gain;
}

}  // namespace

ObservationsOf observationsOf(const Tracks& tracks) {
  return [&tracks](std::size_t frame) {
    return matchesOf(
        tracks.inFrame(tracks.firstFrame() + static_cast<int>(frame)), [](int) { return true; },
        [](int) { return Point{}; });
  };
}

int othersIn(const BaseFrame& base, const Matches& matches) {
  const std::vector<int>& tracks = matches.tracks();
  return static_cast<int>(
      std::count_if(tracks.begin(), tracks.end(), [&](int track) { return !base.sees(track); }));
}

std::vector<bool> seenIn(const BaseFrame& base, const Matches& matches) {
  std::vector<bool> seen;
  for (int track : matches.tracks()) seen.push_back(base.sees(track));
  return seen;
}

bool baseSuffices(const BaseFrame& base, const Points& all, const Points& seenInBase,
                  const Quad& surface) {
  const auto variance = [&](const Points& points) { return varianceOf(points, surface); };
  return variance(seenInBase) <= variance(base.places()) + variance(all);
}

bool othersHelp(const Points& all, const Points& seenInBase, const Quad& surface) {
  constexpr double kAsCertain = 0.99 * 0.99;  // of the variance
  const double alone = varianceOf(seenInBase, surface);
  return !std::isfinite(alone) || (alone + varianceOf(all, surface)) / 2.0 < kAsCertain * alone;
}

FrameFit fitByAll(FrameFitter& fitter, const BaseFrame& base, const Matches& matches,
                  Sweep& sweep) {
  FrameFit fit = fitter.fit(matches, sweep);
  if (fit.isFirm() && othersIn(base, matches) > 0) {
    cover(surfacePlaces(matches.subset(fit.robust.good).base(), Loss::Tukey), sweep);
  }
  return fit;
}

FrameFit fitHandedOver(FrameFitter& fitter, const BaseFrame& base, Matches& matches, Sweep& sweep) {
  if (othersIn(base, matches) == 0) return fitter.fit(matches, sweep);
  Matches older = matches.subset(seenIn(base, matches));
  if (baseSuffices(base, matches.base(), older.base(), sweep.surface)) {
    const Homography neighbour = sweep.neighbour;
    const bool chainBroken = sweep.chainBroken;
    FrameFit fit = fitter.fit(older, sweep);
    if (fit.isFirm()) {
      matches = older;
      return fit;
    }
    sweep.neighbour = neighbour;
    sweep.chainBroken = chainBroken;
  }
  return fitByAll(fitter, base, matches, sweep);
}

}  // namespace cornerpin
