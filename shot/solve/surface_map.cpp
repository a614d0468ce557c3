// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/surface_map.h"

#include <cmath>
#include <limits>

namespace cornerpin {

namespace {

constexpr double kUnknown = std::numeric_limits<double>::quiet_NaN();

}  // namespace

SurfaceMap::SurfaceMap(const BaseFrame& base, std::size_t tracks)
    : places_(tracks, Point{kUnknown, kUnknown}) {
  for (std::size_t i = 0; i < base.tracks().size(); ++i)
    setPlace(base.tracks()[i], base.places()[i]);
}

bool SurfaceMap::knows(int track) const { return !std::isnan(placeOf(track).x); }

Matches SurfaceMap::matchesIn(const Tracks& tracks, int frame) const {
  Matches matches;
  for (const Observation& o : tracks.inFrame(frame)) {
    if (!(o.weight > 0.0f) || !knows(o.track)) continue;
    matches.add({placeOf(o.track), {o.x, o.y}, static_cast<double>(o.weight), o.track});
  }
  return matches;
}

}  // namespace cornerpin
