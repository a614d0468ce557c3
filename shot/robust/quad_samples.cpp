// SPDX-License-Identifier: BSD-3-Clause
#include "shot/robust/quad_samples.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "shot/plane/points.h"

namespace cornerpin {

namespace {

// The confident group: one more than a sample needs, so that it is never the same four, and a match
// more for every ten samples.
constexpr std::size_t kFirstGroup = 5;
constexpr std::size_t kGrowth = 10;

constexpr double kChance = 1e-6;  // of having missed a sample of good matches alone
// Good matches whose quadruples tell how many of all good ones lead to a transform.
constexpr std::size_t kTried = 8;
// Twice the area of the thinnest triangle, where the surface is 2 wide: three places within half a
// ten-thousandth of one line leave the transform to their errors.
constexpr double kThinnest = 1e-4;

double twiceArea(Point a, Point b, Point c) {
  return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

Quad placesOf(const Points& points, const std::array<std::size_t, 4>& chosen) {
  Quad places;
  for (std::size_t i = 0; i < 4; ++i) places[i] = points[chosen[i]];
  return places;
}

// Twice the areas of the triangles of each corner and the next two.
using Areas = std::array<double, 4>;

double areaAt(const Quad& quad, std::size_t i) {
  return twiceArea(quad[i], quad[(i + 1) % 4], quad[(i + 2) % 4]);
}

// A camera keeps the sense of every triangle that lies in front of it. Most quads that it does not
// see alike show it in the first ones.
bool seenAlike(const Quad& from, const Quad& to, Areas& fromAreas, Areas& toAreas) {
  for (std::size_t i = 0; i < 4; ++i) {
    fromAreas[i] = areaAt(from, i);
    toAreas[i] = areaAt(to, i);
    if (std::fabs(fromAreas[i]) < kThinnest || std::fabs(toAreas[i]) < kThinnest) return false;
    if ((fromAreas[i] > 0.0) != (toAreas[i] > 0.0)) return false;
  }
  return true;
}

// With p the corners in homogeneous coordinates, and A the areas,
//     A0 p3 = A1 p0 - A2 p1 + A3 p2.
// The other quad's corners p' and areas A' have the same equation. So the transform that carries p3
// as well as p0, p1 and p2 carries p0 to p'0 A'1 / A1, p1 to p'1 A'2 / A2 and p2 to p'2 A'3 / A3,
// but for a common factor. The cross product of two corners is 0 for these two and the same for the
// third of the three, whichever it is.
Homography exactFor(const Quad& from, const Quad& to, const Areas& fromAreas,
                    const Areas& toAreas) {
  Homography h{};
  for (std::size_t i = 0; i < 3; ++i) {
    const Point a = from[(i + 1) % 3];
    const Point b = from[(i + 2) % 3];
    const double factor = toAreas[i + 1] / fromAreas[i + 1];
    const std::array<double, 3> cross = {a.y - b.y, b.x - a.x, a.x * b.y - b.x * a.y};
    const std::array<double, 3> image = {factor * to[i].x, factor * to[i].y, factor};
    for (std::size_t row = 0; row < 3; ++row) {
      for (std::size_t column = 0; column < 3; ++column) {
        h[row][column] += image[row] * cross[column];
      }
    }
  }
  return withLastOne(h);
}

double choicesOfFour(std::size_t count) {
  const auto n = static_cast<double>(count);
  return n * (n - 1.0) * (n - 2.0) * (n - 3.0) / 24.0;
}

}  // namespace

QuadSamples::QuadSamples(const Matches& matches, const std::vector<double>& confidence,
                         std::uint64_t seed)
    : matches_(matches), order_(matches.size()), random_(seed) {
  std::iota(order_.begin(), order_.end(), std::size_t{0});
  if (confidence.empty()) return;
  std::stable_sort(order_.begin(), order_.end(),
                   [&](std::size_t a, std::size_t b) { return confidence[a] > confidence[b]; });
}

std::size_t QuadSamples::below(std::size_t bound) {
  return static_cast<std::size_t>(((random_() >> 32) * bound) >> 32);
}

bool QuadSamples::draw(Homography& h) {
  const std::size_t group = std::min(order_.size(), kFirstGroup + drawn_ / kGrowth);
  const std::size_t pool = drawn_ % 2 == 0 ? group : order_.size();
  ++drawn_;
  if (pool == order_.size()) ++drawnFromAll_;
  std::array<std::size_t, 4> chosen{};
  for (std::size_t i = 0; i < 4; ++i) {
    do {
      chosen[i] = below(pool);
    } while (std::find(chosen.begin(), chosen.begin() + i, chosen[i]) != chosen.begin() + i);
  }
  for (std::size_t& one : chosen) one = order_[one];
  return through(chosen, h);
}

bool QuadSamples::through(const std::array<std::size_t, 4>& chosen, Homography& h) const {
  const Quad from = placesOf(matches_.base(), chosen);
  const Quad to = placesOf(matches_.present(), chosen);
  Areas fromAreas, toAreas;
  if (!seenAlike(from, to, fromAreas, toAreas)) return false;
  h = exactFor(from, to, fromAreas, toAreas);
  return isFinite(h);
}

double QuadSamples::quadruples() const { return choicesOfFour(order_.size()); }

// Of the quadruples of good matches, how many lead to a transform: that of a few, evenly spread.
double QuadSamples::usableShare(const std::vector<std::size_t>& good) const {
  const std::size_t tried = std::min(good.size(), kTried);
  std::size_t usable = 0;
  forAllFours(tried, [&](std::array<std::size_t, 4> chosen) {
    for (std::size_t& one : chosen) one = good[one * good.size() / tried];
    Areas from, to;
    usable += seenAlike(placesOf(matches_.base(), chosen), placesOf(matches_.present(), chosen),
                        from, to);
  });
  return static_cast<double>(usable) / choicesOfFour(tried);
}

std::size_t QuadSamples::needed(const std::vector<std::size_t>& good) const {
  return std::max(neededFor(good.size(), usableShare(good)), kFewest);
}

std::size_t QuadSamples::needed(std::size_t good) const {
  return std::max(neededFor(good, 1.0), kFewestOfSome);
}

std::size_t QuadSamples::neededFor(std::size_t good, double usableShare) const {
  if (good < 4) return kMost;
  const double one = choicesOfFour(good) / quadruples() * usableShare;
  const double draws = std::ceil(std::log(kChance) / std::log1p(-one));  // infinite for none
  return draws < static_cast<double>(kMost) ? static_cast<std::size_t>(draws) : kMost;
}

}  // namespace cornerpin
