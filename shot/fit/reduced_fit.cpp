// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/reduced_fit.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "shot/fit/linearised_fit.h"

namespace cornerpin {

namespace {

// Below this share of the tracks' distance to their mean, an RMS residual is rounding.
constexpr double kExact = 1e-9;

// Sums over the matches around their weighted means; `from` points are p, `to` points q.
struct Moments {
  Point meanFrom;
  Point meanTo;
  double weight = 0.0;
  double xx = 0.0, xy = 0.0, yy = 0.0;            // of p with p
  double xu = 0.0, yu = 0.0, xv = 0.0, yv = 0.0;  // of p with q = (u, v)
  double spreadTo = 0.0;                          // of q with q
};

Moments momentsOf(const std::vector<Match>& matches) {
  double largest = 0.0;
  for (const Match& m : matches) largest = std::max(largest, m.weight);
  Moments s;
  for (const Match& m : matches) {
    const double w = (m.weight / largest) * (m.weight / largest);
    s.weight += w;
    s.meanFrom = {s.meanFrom.x + w * m.from.x, s.meanFrom.y + w * m.from.y};
    s.meanTo = {s.meanTo.x + w * m.to.x, s.meanTo.y + w * m.to.y};
  }
  s.meanFrom = {s.meanFrom.x / s.weight, s.meanFrom.y / s.weight};
  s.meanTo = {s.meanTo.x / s.weight, s.meanTo.y / s.weight};
  for (const Match& m : matches) {
    const double w = (m.weight / largest) * (m.weight / largest);
    const Point p = {m.from.x - s.meanFrom.x, m.from.y - s.meanFrom.y};
    const Point q = {m.to.x - s.meanTo.x, m.to.y - s.meanTo.y};
    s.xx += w * p.x * p.x;
    s.xy += w * p.x * p.y;
    s.yy += w * p.y * p.y;
    s.xu += w * p.x * q.x;
    s.yu += w * p.y * q.x;
    s.xv += w * p.x * q.y;
    s.yv += w * p.y * q.y;
    s.spreadTo += w * (q.x * q.x + q.y * q.y);
  }
  return s;
}

// The linear part {{a, b}, {c, d}} around the means.
Homography around(const Moments& s, double a, double b, double c, double d) {
  return {{{a, b, s.meanTo.x - a * s.meanFrom.x - b * s.meanFrom.y},
           {c, d, s.meanTo.y - c * s.meanFrom.x - d * s.meanFrom.y},
           {0.0, 0.0, 1.0}}};
}

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

std::vector<Match> carriedBy(const Homography& kept, std::vector<Match> matches) {
  for (Match& m : matches) m.from = map(kept, m.from);
  return matches;
}

std::vector<Point> basePoints(const std::vector<Match>& matches) {
  std::vector<Point> points;
  points.reserve(matches.size());
  for (const Match& m : matches) points.push_back(m.from);
  return points;
}

// The model fitted on top of `kept`; without a finite cost where that makes no transform.
Candidate fitOnTop(const std::vector<Match>& matches, Model model, const Homography& kept) {
  Candidate result;
  if (!onOneSide(kept, basePoints(matches))) return result;
  const std::vector<Match> carried = carriedBy(kept, matches);
  const Moments moments = momentsOf(carried);
  const Homography m = fitModel(moments, model);
  result.h = product(m, kept);
  if (!isFinite(result.h) || !(m[0][0] * m[1][1] - m[0][1] * m[1][0] > 0.0)) return result;
  double largest = 0.0;
  for (const Match& match : carried) largest = std::max(largest, match.weight);
  result.cost = 0.0;
  for (const Match& match : carried) {
    const double w = match.weight / largest;
    result.cost += w * w * squaredDistance(map(m, match.from), match.to);
  }
  const double reach =
      moments.spreadTo + moments.weight * squaredDistance(moments.meanTo, {0.0, 0.0});
  result.exact = result.cost <= kExact * kExact * reach;
  return result;
}

}  // namespace

Quad squareAround(const std::vector<Point>& points) {
  const Conditioning box = Conditioning::fitting(points);
  const double half = 1.0 / box.scale;
  const auto corner = [&](double x, double y) {
    return Point{box.centre.x + x * half, box.centre.y + y * half};
  };
  return {corner(-1, -1), corner(1, -1), corner(1, 1), corner(-1, 1)};
}

double noiseGain(Model model, const std::vector<Point>& points, const Quad& corners) {
  constexpr double kNone = std::numeric_limits<double>::infinity();
  if (points.size() < tracksFor(model)) return kNone;
  FittedFrame frame;
  frame.model = model;
  for (const Point& p : points) frame.matches.push_back({p, p, 1.0});
  const LinearisedFit fit(frame);
  if (!fit.isDetermined()) return kNone;
  double worst = 0.0;
  for (const Point& corner : corners) {
    const double square = fit.responseAt(corner).trace() / 2.0;
    if (!(square >= 0.0)) return kNone;
    worst = std::max(worst, square);
  }
  return std::sqrt(worst);
}

Model supportedModel(const std::vector<Point>& points, const Quad& corners, Model highest) {
  for (Model model : {Model::Projective, Model::Affine, Model::Similarity}) {
    if (model <= highest && noiseGain(model, points, corners) <= kLargestGain) return model;
  }
  return points.empty() ? Model::Held : std::min(highest, Model::Translation);
}

LadderFit fitLadder(const std::vector<Match>& matches, Model model, const Homography& neighbour) {
  for (Model lower : {Model::Affine, Model::Similarity, Model::Translation}) {
    if (lower > model || matches.size() < tracksFor(lower)) continue;
    const Candidate onTop = fitOnTop(matches, lower, neighbour);
    const Candidate alone = fitOnTop(matches, lower, kIdentityTransform);
    const bool clearly = alone.counts() && !onTop.exact && alone.cost < onTop.cost / 2;
    if (clearly) return {lower, alone.h, false};
    if (onTop.counts()) return {lower, onTop.h, true};
  }
  return {Model::Held, neighbour, true};
}

}  // namespace cornerpin
