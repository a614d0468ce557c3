// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/reduced_fit.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "shot/fit/residuals.h"

namespace cornerpin {

namespace {

// Below this share of the tracks' distance to the origin, an RMS residual is rounding.
constexpr double kExact = 1e-9;

// Weights over the largest of them, squared: sums of squares could overflow.
std::vector<double> relativeSquares(const std::vector<double>& weights) {
  const double largest = *std::max_element(weights.begin(), weights.end());
  std::vector<double> result;
  result.reserve(weights.size());
  for (double weight : weights) result.push_back((weight / largest) * (weight / largest));
  return result;
}

// Sums over the matches around their weighted means; base places are p, present ones q = (u, v).
struct Moments {
  Point meanBase;
  Point meanPresent;
  double weight = 0.0;
  double xx = 0.0, xy = 0.0, yy = 0.0;            // of p with p
  double xu = 0.0, yu = 0.0, xv = 0.0, yv = 0.0;  // of p with q
  double squaresPresent = 0.0;                    // of q with q
};

Moments momentsOf(const Matches& matches, const std::vector<double>& squaredWeights) {
  Moments s;
  for (std::size_t i = 0; i < matches.size(); ++i) {
    const Match m = matches[i];
    const double w = squaredWeights[i];
    s.weight += w;
    s.meanBase = {s.meanBase.x + w * m.base.x, s.meanBase.y + w * m.base.y};
    s.meanPresent = {s.meanPresent.x + w * m.present.x, s.meanPresent.y + w * m.present.y};
  }
  s.meanBase = {s.meanBase.x / s.weight, s.meanBase.y / s.weight};
  s.meanPresent = {s.meanPresent.x / s.weight, s.meanPresent.y / s.weight};
  for (std::size_t i = 0; i < matches.size(); ++i) {
    const Match m = matches[i];
    const double w = squaredWeights[i];
    const Point p = {m.base.x - s.meanBase.x, m.base.y - s.meanBase.y};
    const Point q = {m.present.x - s.meanPresent.x, m.present.y - s.meanPresent.y};
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

Matches carriedBy(const Homography& kept, const Matches& matches) {
  Matches carried;
  for (std::size_t i = 0; i < matches.size(); ++i) {
    const Match m = matches[i];
    carried.add({map(kept, m.base), m.present, m.weight, m.track});
  }
  return carried;
}

// The model fitted on top of `kept`; without a finite cost where that makes no transform.
Candidate candidateOnTop(const Matches& matches, Model model, const Homography& kept) {
  Candidate result;
  if (!onOneSide(kept, matches.base())) return result;
  const Matches carried = carriedBy(kept, matches);
  const std::vector<double> squaredWeights = relativeSquares(matches.weights());
  const Moments moments = momentsOf(carried, squaredWeights);
  const Homography m = fitModel(moments, model);
  result.h = product(m, kept);
  if (!isFinite(result.h) || !(m[0][0] * m[1][1] - m[0][1] * m[1][0] > 0.0)) return result;
  result.cost = 0.0;
  for (std::size_t i = 0; i < carried.size(); ++i) {
    result.cost += squaredWeights[i] * squaredResidual(carried[i], m);
  }
  const double reach =
      moments.squaresPresent + moments.weight * squaredDistance(moments.meanPresent, {0.0, 0.0});
  result.exact = result.cost <= kExact * kExact * reach;
  return result;
}

}  // namespace

std::optional<Homography> fitOnTop(const Matches& matches, Model model, const Homography& kept) {
  const Candidate candidate = candidateOnTop(matches, model, kept);
  if (!candidate.counts()) return std::nullopt;
  return candidate.h;
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
