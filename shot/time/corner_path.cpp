// SPDX-License-Identifier: BSD-3-Clause
#include "shot/time/corner_path.h"

#include <algorithm>
#include <cmath>

#include "shot/plane/quad_map.h"
#include "shot/plane/quad_shape.h"

namespace cornerpin {

namespace {

// A corner is near the horizon where its third coordinate is below so much of that of `front`: it
// is then drawn out more than that many times.
constexpr double kNear = 0.25;
constexpr double kMiss = 1e-6;  // of the quad's extent

bool showsAll(const std::vector<Homography>& transforms, const Quad& quad, Point front) {
  for (const Homography& h : transforms) {
    const double least = kNear * denominator(h, front);
    for (Point corner : quad) {
      const double d = denominator(h, corner);
      if (!(least > 0.0 ? d > least : d < least)) return false;
    }
  }
  return true;
}

// What each of the places counts at a time (Lagrange); they add up to 1.
std::vector<double> sharesAt(const std::vector<TimedTransform>& known, double frame) {
  std::vector<double> shares(known.size(), 1.0);
  for (std::size_t i = 0; i < known.size(); ++i) {
    for (std::size_t j = 0; j < known.size(); ++j) {
      if (j != i) shares[i] *= (frame - known[j].frame) / (known[i].frame - known[j].frame);
    }
  }
  return shares;
}

}  // namespace

bool leadsTo(const Homography& h, const Quad& from, const Quad& to, Point front) {
  if (!isFinite(h) || shapeOf(to) != QuadShape::Convex) return false;
  const double extent = std::max(squaredDistance(to[0], to[2]), squaredDistance(to[1], to[3]));
  for (std::size_t i = 0; i < 4; ++i) {
    const double miss = squaredDistance(map(h, from[i]), to[i]);
    if (!onSameSide(h, from[i], front) || !(miss <= kMiss * kMiss * extent)) return false;
  }
  return true;
}

// Close enough to `front` all of them are in front, because that is.
Quad shownByAll(const std::vector<Homography>& transforms, Quad quad, Point front) {
  constexpr int kHalvings = 20;
  for (int i = 0; i < kHalvings && !showsAll(transforms, quad, front); ++i) {
    for (Point& p : quad) p = {0.5 * (p.x + front.x), 0.5 * (p.y + front.y)};
  }
  return quad;
}

std::optional<Homography> transformBetween(const std::vector<TimedTransform>& known, double frame,
                                           const Quad& quad, Point front) {
  for (const TimedTransform& t : known) {
    if (t.frame == frame) return t.h;
  }
  std::vector<Homography> transforms;
  transforms.reserve(known.size());
  for (const TimedTransform& t : known) transforms.push_back(t.h);
  const Quad surface = shownByAll(transforms, quad, front);
  const std::vector<double> shares = sharesAt(known, frame);
  Quad corners;
  for (std::size_t t = 0; t < known.size(); ++t) {
    for (std::size_t i = 0; i < 4; ++i) {
      const Point p = map(known[t].h, surface[i]);
      corners[i].x += shares[t] * p.x;
      corners[i].y += shares[t] * p.y;
    }
  }
  const Homography h = quadToQuad(surface, corners);
  if (!leadsTo(h, surface, corners, front)) return std::nullopt;
  return h;
}

}  // namespace cornerpin
