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

// Samples to draw even where nearly all matches are good: errors of four good ones may be large.
constexpr std::size_t kFewest = 50;
constexpr double kChance = 1e-3;  // of having missed a sample of good matches alone
// Twice the area of the thinnest triangle, where the surface is 2 wide: three places within half a
// ten-thousandth of one line leave the transform to their errors.
constexpr double kThinnest = 1e-4;

double twiceArea(Point a, Point b, Point c) {
  return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
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
  std::array<std::size_t, 4> chosen{};
  for (std::size_t i = 0; i < 4; ++i) {
    do {
      chosen[i] = below(pool);
    } while (std::find(chosen.begin(), chosen.begin() + i, chosen[i]) != chosen.begin() + i);
  }
  Quad from;
  Quad to;
  for (std::size_t i = 0; i < 4; ++i) {
    from[i] = matches_.base()[order_[chosen[i]]];
    to[i] = matches_.present()[order_[chosen[i]]];
  }
  if (!seenAlike(from, to)) return false;
  h = quadToQuad(from, to);
  return isFinite(h);
}

std::size_t QuadSamples::needed(std::size_t good, std::size_t count) {
  const double share = static_cast<double>(good) / static_cast<double>(count);
  const double all = share * share * share * share;
  const double samples = std::log(kChance) / std::log1p(-all);  // infinite without a good one
  return samples < static_cast<double>(kMost) ? std::max(static_cast<std::size_t>(samples), kFewest)
                                              : kMost;
}

}  // namespace cornerpin
