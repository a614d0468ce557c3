// SPDX-License-Identifier: BSD-3-Clause
#include "shot/robust/quad_samples.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "shot/plane/quad_map.h"

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

// A camera keeps the sense of every triangle that lies in front of it.
bool seenAlike(const Quad& from, const Quad& to) {
  for (std::size_t i = 0; i < 4; ++i) {
    const std::size_t j = (i + 1) % 4;
    const std::size_t k = (i + 2) % 4;
    const double a = twiceArea(from[i], from[j], from[k]);
    const double b = twiceArea(to[i], to[j], to[k]);
    if (std::fabs(a) < kThinnest || std::fabs(b) < kThinnest || (a > 0.0) != (b > 0.0)) {
      return false;
    }
  }
  return true;
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
  if (!seenAlike(from, to)) return false;
  h = quadToQuad(from, to);
  return isFinite(h);
}

double QuadSamples::quadruples() const { return choicesOfFour(order_.size()); }

// Of the quadruples of good matches, how many lead to a transform: that of a few, evenly spread.
double QuadSamples::usableShare(const std::vector<std::size_t>& good) const {
  const std::size_t tried = std::min(good.size(), kTried);
  std::size_t usable = 0;
  forAllFours(tried, [&](std::array<std::size_t, 4> chosen) {
    for (std::size_t& one : chosen) one = good[one * good.size() / tried];
    if (seenAlike(placesOf(matches_.base(), chosen), placesOf(matches_.present(), chosen))) {
      ++usable;
    }
  });
  return static_cast<double>(usable) / choicesOfFour(tried);
}

std::size_t QuadSamples::needed(const std::vector<std::size_t>& good) const {
  return neededFor(good.size(), usableShare(good));
}

std::size_t QuadSamples::needed(std::size_t good) const { return neededFor(good, 1.0); }

std::size_t QuadSamples::neededFor(std::size_t good, double usableShare) const {
  if (good < 4) return kMost;
  const double one = choicesOfFour(good) / quadruples() * usableShare;
  const double draws = std::ceil(std::log(kChance) / std::log1p(-one));  // infinite for none
  return draws < static_cast<double>(kMost) ? std::max(static_cast<std::size_t>(draws), kFewest)
                                            : kMost;
}

}  // namespace cornerpin
