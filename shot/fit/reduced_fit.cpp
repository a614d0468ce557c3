// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/reduced_fit.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "shot/fit/residuals.h"

namespace cornerpin {

namespace {

// Below this share of the tracks' distance to the origin, an RMS residual is rounding.
constexpr double kExact = 1e-9;

Moments momentsOf(const Points& base, const Points& present,
                  const std::vector<double>& squaredWeights) {
  Moments s;
  for (std::size_t i = 0; i < base.size(); ++i) {
    const Point from = base[i];
    const Point to = present[i];
    const double w = squaredWeights[i];
    s.weight += w;
    s.meanBase = {s.meanBase.x + w * from.x, s.meanBase.y + w * from.y};
    s.meanPresent = {s.meanPresent.x + w * to.x, s.meanPresent.y + w * to.y};
  }
  s.meanBase = {s.meanBase.x / s.weight, s.meanBase.y / s.weight};
  s.meanPresent = {s.meanPresent.x / s.weight, s.meanPresent.y / s.weight};
  for (std::size_t i = 0; i < base.size(); ++i) {
    const double w = squaredWeights[i];
    const Point p = {base[i].x - s.meanBase.x, base[i].y - s.meanBase.y};
    const Point q = {present[i].x - s.meanPresent.x, present[i].y - s.meanPresent.y};
    s.xx += w * p.x * p.x;
    s.xy += w * p.x * p.y;
    s.yy += w * p.y * p.y;
    s.xu += w * p.x * q.x;
    s.yu += w * p.y * q.x;
    s.xv += w * p.x * q.y;
    s.yv += w * p.y * q.y;
    s.squaresPresent += w * (q.x * q.x + q.y * q.y);
  }
  return s;
}

// The linear part {{a, b}, {c, d}} around the means.
Homography around(const Moments& s, double a, double b, double c, double d) {
  return {{{a, b, s.meanPresent.x - a * s.meanBase.x - b * s.meanBase.y},
           {c, d, s.meanPresent.y - c * s.meanBase.x - d * s.meanBase.y},
           {0.0, 0.0, 1.0}}};
}

// The least-squares optimum. Every model has the shift that carries mean to mean, so that only the
// linear part around the means is left. A similarity a + ib of complex numbers is the sum of
// conj(p) q over that of conj(p) p; the rows of an affine map solve 2 x 2 equations with the matrix
// of the p.
Homography fitModel(const Moments& s, Model model) {
  if (model == Model::Translation) return around(s, 1.0, 0.0, 0.0, 1.0);
  if (model == Model::Similarity) {
    const double square = s.xx + s.yy;
    const double a = (s.xu + s.yv) / square;
    const double b = (s.xv - s.yu) / square;
    return around(s, a, -b, b, a);
  }
  const double det = s.xx * s.yy - s.xy * s.xy;
  return around(s, (s.xu * s.yy - s.yu * s.xy) / det, (s.yu * s.xx - s.xu * s.xy) / det,
                (s.xv * s.yy - s.yv * s.xy) / det, (s.yv * s.xx - s.xv * s.xy) / det);
}

struct Candidate {
  Homography h{};
  double cost = std::numeric_limits<double>::infinity();
  bool exact = false;

  bool counts() const { return std::isfinite(cost); }
};

Points carriedBy(const Homography& kept, const Points& places) {
  Points carried(places.size());
  for (std::size_t i = 0; i < places.size(); ++i) carried.set(i, map(kept, places[i]));
  return carried;
}

// Whether m is of use behind `kept`, with their product.
bool isUsable(const Homography& m, const Homography& both) {
  return isFinite(both) && m[0][0] * m[1][1] - m[0][1] * m[1][0] > 0.0;
}

// The model fitted on top of `kept`; without a finite cost where that makes no transform.
Candidate candidateOnTop(const Matches& matches, Model model, const Homography& kept) {
  Candidate result;
  if (!onOneSide(kept, matches.base())) return result;
  const Points carried = carriedBy(kept, matches.base());
  const std::vector<double> squaredWeights = relativeSquares(matches.weights());
  const Moments moments = momentsOf(carried, matches.present(), squaredWeights);
  const Homography m = fitModel(moments, model);
  result.h = product(m, kept);
  if (!isUsable(m, result.h)) return result;
  result.cost = 0.0;
  for (std::size_t i = 0; i < carried.size(); ++i) {
    result.cost += squaredWeights[i] * squaredDistance(map(m, carried[i]), matches.present()[i]);
  }
  const double reach =
      moments.squaresPresent + moments.weight * squaredDistance(moments.meanPresent, {0.0, 0.0});
  result.exact = result.cost <= kExact * kExact * reach;
  return result;
}

}  // namespace

std::vector<double> relativeSquares(const std::vector<double>& weights) {
  if (weights.empty()) return {};
  const double largest = *std::max_element(weights.begin(), weights.end());
  std::vector<double> result;
  result.reserve(weights.size());
  for (double weight : weights) result.push_back((weight / largest) * (weight / largest));
  return result;
}

FitsOnTop::FitsOnTop(const Matches& matches, const std::vector<double>& squaredWeights,
                     const Homography& kept)
    : kept_(kept), inFront_(!matches.empty() && onOneSide(kept, matches.base())) {
  if (!inFront_) return;
  moments_ = momentsOf(carriedBy(kept, matches.base()), matches.present(), squaredWeights);
}

std::optional<Homography> FitsOnTop::of(Model model) const {
  if (!inFront_) return std::nullopt;
  const Homography m = fitModel(moments_, model);
  const Homography h = product(m, kept_);
  if (!isUsable(m, h)) return std::nullopt;
  return h;
}

ReducedFit fitReduced(const Matches& matches, Model model, const Homography& neighbour) {
  for (Model lower : {Model::Affine, Model::Similarity, Model::Translation}) {
    if (lower > model || matches.size() < tracksFor(lower)) continue;
    const Candidate onTop = candidateOnTop(matches, lower, neighbour);
    const Candidate alone = candidateOnTop(matches, lower, kIdentity);
    const bool clearly = alone.counts() && !onTop.exact && alone.cost < onTop.cost / 2;
    if (clearly) return {lower, alone.h, false};
    if (onTop.counts()) return {lower, onTop.h, true};
  }
  return {Model::Held, neighbour, true};
}

}  // namespace cornerpin
