// SPDX-License-Identifier: BSD-3-Clause
#include "shot/time/corner_path.h"

#include <algorithm>
#include <cmath>

#include "shot/plane/quad_map.h"
#include "shot/plane/quad_path.h"
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
  std::vector<double> times;
  std::vector<Homography> transforms;
  for (const TimedTransform& t : known) {
    times.push_back(t.frame);
    transforms.push_back(t.h);
  }
  const Quad surface = shownByAll(transforms, quad, front);
  const Quad corners = quadAt(frame, times, transforms, surface);
  const Homography h = quadToQuad(surface, corners);
  if (!leadsTo(h, surface, corners, front)) return std::nullopt;
  return h;
}

}  // namespace cornerpin
