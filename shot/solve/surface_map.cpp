// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/surface_map.h"

#include <cmath>
#include <limits>

namespace cornerpin {

namespace {

constexpr double kUnknown = std::numeric_limits<double>::quiet_NaN();

constexpr int kSightingsToKnow = 5;
// What the squared distances of five points from their mean, in units of their noise, exceed in one
// case of 1,000: of the chi-squared distribution with 8 degrees of freedom.
constexpr double kMostScatter = 26.1;

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

LearningMap::LearningMap(const BaseFrame& base, std::size_t tracks)
    : map_(base, tracks), sightings_(tracks), inBase_(tracks) {
  for (int track : base.tracks()) inBase_[static_cast<std::size_t>(track)] = true;
}

void LearningMap::learn(Tracks::Range seen, const Matches& matches, const std::vector<bool>& good,
                        const Homography& h, double sigma) {
  const Point front = matches.base()[0];
  std::size_t next = 0;  // of the matches, which are in the same order
  for (const Observation& o : seen) {
    const bool known = next < matches.size() && matches.tracks()[next] == o.track;
    const bool keepsToPlace = !known || good[next];
    if (known) ++next;
    if (inBase_[static_cast<std::size_t>(o.track)] || !(o.weight > 0.0f) || !keepsToPlace) continue;
    learn(o.track, {o.x, o.y}, h, sigma, front);
  }
}

void LearningMap::learn(int track, Point present, const Homography& h, double sigma, Point front) {
  const Point p = cornerpin::map(inverse(h), present);
  if (!std::isfinite(p.x) || !std::isfinite(p.y) || !onSameSide(h, p, front)) return;
  const auto [Xx, Xy, Yx, Yy] = derivative(h, p);
  const double w = 1.0 / (sigma * sigma);
  const Symmetric2 weight = {w * (Xx * Xx + Yx * Yx), w * (Xx * Xy + Yx * Yy),
                             w * (Xy * Xy + Yy * Yy)};
  Sightings& all = sightings_[static_cast<std::size_t>(track)];
  all.add(p, weight);
  if (all.count < kSightingsToKnow) return;
  if (map_.knows(track) || all.agree()) {
    map_.setPlace(track, all.mean());
    return;
  }
  all = {};
  all.add(p, weight);
}

void LearningMap::Sightings::add(Point p, const Symmetric2& weight) {
  ++count;
  w.xx += weight.xx;
  w.xy += weight.xy;
  w.yy += weight.yy;
  const Point times = {weight.xx * p.x + weight.xy * p.y, weight.xy * p.x + weight.yy * p.y};
  wp.x += times.x;
  wp.y += times.y;
  pwp += p.x * times.x + p.y * times.y;
}

Point LearningMap::Sightings::mean() const {
  const double determinant = w.xx * w.yy - w.xy * w.xy;
  return {(w.yy * wp.x - w.xy * wp.y) / determinant, (w.xx * wp.y - w.xy * wp.x) / determinant};
}

bool LearningMap::Sightings::agree() const {
  const Point m = mean();
  return pwp - (m.x * wp.x + m.y * wp.y) <= kMostScatter;
}

}  // namespace cornerpin
