// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/surface_map.h"

#include <algorithm>
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
  return matchesOf(
      tracks.inFrame(frame), [this](int track) { return knows(track); },
      [this](int track) { return placeOf(track); });
}

// inv(W) = inv(D) sigma^2 (I + R) inv(D)', with R what the noise of all tracks makes of the
// transform at the place.
Symmetric2 LearningMap::SightingNoise::weightAt(Point p) const {
  Symmetric2 v{1.0, 0.0, 1.0};
  if (fit.isDetermined()) {
    const Symmetric2 r = fit.responseAt(p);
    v = {1.0 + r.xx, r.xy, 1.0 + r.yy};
  }
  const double scale = 1.0 / (sigma * sigma * (v.xx * v.yy - v.xy * v.xy));
  const Symmetric2 w = {scale * v.yy, -scale * v.xy, scale * v.xx};
  const auto [Xx, Xy, Yx, Yy] = derivative(h, p);
  const double xx = w.xx * Xx + w.xy * Yx, yx = w.xy * Xx + w.yy * Yx;
  const double xy = w.xx * Xy + w.xy * Yy, yy = w.xy * Xy + w.yy * Yy;
  return {Xx * xx + Yx * yx, Xx * xy + Yx * yy, Xy * xy + Yy * yy};
}

LearningMap::LearningMap(const BaseFrame& base, std::size_t tracks)
    : map_(base, tracks), sightings_(tracks), inBase_(tracks) {
  for (int track : base.tracks()) inBase_[static_cast<std::size_t>(track)] = true;
}

void LearningMap::learn(Tracks::Range seen, const Matches& matches, const std::vector<bool>& good,
                        const Homography& h, double sigma) {
  FittedFrame fitted;
  fitted.h = h;
  for (bool isGood : good) fitted.weights.push_back(isGood ? 1.0 : 0.0);
  const SightingNoise noise{h, sigma, LinearisedFit(matches, fitted), matches.base()[0]};
  std::size_t next = 0;  // of the matches, which are in the same order
  for (const Observation& o : seen) {
    const bool known = next < matches.size() && matches.tracks()[next] == o.track;
    const bool keepsToPlace = !known || good[next];
    if (known) ++next;
    if (inBase_[static_cast<std::size_t>(o.track)] || !(o.weight > 0.0f) || !keepsToPlace) continue;
    learn(o.track, {o.x, o.y}, noise);
  }
}

void LearningMap::learn(int track, Point present, const SightingNoise& noise) {
  const Homography& h = noise.h;
  const Point p = cornerpin::map(inverse(h), present);
  if (!std::isfinite(p.x) || !std::isfinite(p.y) || !onSameSide(h, p, noise.front)) return;
  const Symmetric2 weight = noise.weightAt(p);
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
