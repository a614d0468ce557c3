// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/linearised_fit.h"

#include <algorithm>
#include <cstddef>

#include "shot/fit/lapack.h"

namespace cornerpin {

namespace {

constexpr std::size_t kSize = 8;

// By how much more than alone a parameter may vary beside the others: from there on, no more than
// three digits of the inverse are left.
constexpr double kMostInflation = 1e12;

// The slopes of x and y at p; `h` matters to the projective model alone, which is the only one that
// is not linear in its parameters. The parameters are: of a translation its shift; of a similarity
// a, b and the shift in (a x - b y + c, b x + a y + d); of the others the transform's elements row
// by row.
Slopes slopesOf(Model model, const Homography& h, Point p) {
  switch (model) {
    case Model::Held:
      return {};
    case Model::Translation:
      return {{1.0}, {0.0, 1.0}};
    case Model::Similarity:
      return {{p.x, -p.y, 1.0, 0.0}, {p.y, p.x, 0.0, 1.0}};
    case Model::Affine:
      return {{p.x, p.y, 1.0}, {0.0, 0.0, 0.0, p.x, p.y, 1.0}};
    case Model::Projective:
      break;
  }
  return slopesOf(h, p);
}

Slopes times(const Symmetric2& k, const Slopes& s) {
  Slopes product;
  for (std::size_t i = 0; i < kSize; ++i) {
    product.x[i] = k.xx * s.x[i] + k.xy * s.y[i];
    product.y[i] = k.xy * s.x[i] + k.yy * s.y[i];
  }
  return product;
}

Homography stepped(Homography h, const Parameters& step) {
  for (std::size_t i = 0; i < kSize; ++i) h[i / 3][i % 3] += step[i];
  return h;
}

}  // namespace

double dot(const Parameters& a, const Parameters& b) {
  double sum = 0.0;
  for (std::size_t i = 0; i < kSize; ++i) sum += a[i] * b[i];
  return sum;
}

// With X = U / s, dX/dh0i = m_i / s and dX/dh2i = -X m_i / s.
Slopes slopesOf(const Homography& h, Point p) {
  const double s = denominator(h, p);
  const Point q = map(h, p);
  const Point a = {p.x / s, p.y / s};
  return {{a.x, a.y, 1.0 / s, 0.0, 0.0, 0.0, -q.x * a.x, -q.x * a.y},
          {0.0, 0.0, 0.0, a.x, a.y, 1.0 / s, -q.y * a.x, -q.y * a.y}};
}

Symmetric2 sum(const Symmetric2& a, const Symmetric2& b) {
  return {a.xx + b.xx, a.xy + b.xy, a.yy + b.yy};
}

Symmetric2 times(double factor, const Symmetric2& s) {
  return {factor * s.xx, factor * s.xy, factor * s.yy};
}

Symmetric2 covarianceOf(const Slopes& slopes, const std::array<Parameters, 8>& covariance) {
  Parameters x{};
  Parameters y{};
  for (std::size_t i = 0; i < kSize; ++i) {
    x[i] = dot(covariance[i], slopes.x);
    y[i] = dot(covariance[i], slopes.y);
  }
  return {dot(slopes.x, x), dot(slopes.y, x), dot(slopes.y, y)};
}

LinearisedFit::LinearisedFit(const Matches& matches, const FittedFrame& frame)
    : model_(frame.model), kept_(frame.kept) {
  Points from;
  Points to;
  for (std::size_t i = 0; i < matches.size(); ++i) {
    if (!(frame.weights[i] > 0.0)) continue;
    from.add(map(kept_, matches.base()[i]));
    to.add(matches.present()[i]);
  }
  if (from.empty()) return;
  from_ = Similarity::fitting(from);
  to_ = Similarity::fitting(to);
  fitted_ = normalised(frame.h, from_, to_);
  invert(matches.base(), frame);
}

void LinearisedFit::invert(const Points& base, const FittedFrame& frame) {
  const std::vector<double>& weights = frame.weights;
  // The largest weight is taken out: squares could overflow.
  const double largest = *std::max_element(weights.begin(), weights.end());
  for (std::size_t i = 2 * tracksFor(model_); i < kSize; ++i) inverse_[i * kSize + i] = 1.0;
  for (std::size_t k = 0; k < base.size(); ++k) {
    if (!(weights[k] > 0.0)) continue;
    const double w = weights[k] / largest;
    const Slopes s = slopesAt(base[k]);
    const Slopes pull = frame.stiffness.empty() ? s : times(frame.stiffness[k], s);
    for (std::size_t j = 0; j < kSize; ++j) {
      for (std::size_t i = 0; i <= j; ++i) {
        inverse_[j * kSize + i] += w * w * (s.x[i] * pull.x[j] + s.y[i] * pull.y[j]);
      }
    }
  }
  Parameters diagonal{};
  for (std::size_t i = 0; i < kSize; ++i) diagonal[i] = inverse_[i * kSize + i];
  determined_ = invertPositiveDefinite(inverse_);
  if (!determined_) return;
  for (std::size_t i = 0; i < kSize; ++i) {
    determined_ = determined_ && inverse_[i * kSize + i] * diagonal[i] < kMostInflation;
  }
  for (std::size_t j = 0; j < kSize; ++j) {
    for (std::size_t i = 0; i <= j; ++i) {
      inverse_[j * kSize + i] /= largest * largest;
      inverse_[i * kSize + j] = inverse_[j * kSize + i];
    }
  }
}

Slopes LinearisedFit::slopesAt(Point base) const {
  return slopesOf(model_, fitted_, from_.apply(map(kept_, base)));
}

Parameters LinearisedFit::solve(const Parameters& v) const {
  Parameters result{};
  for (std::size_t j = 0; j < kSize; ++j) {
    for (std::size_t i = 0; i < kSize; ++i) result[i] += inverse_[j * kSize + i] * v[j];
  }
  return result;
}

Symmetric2 LinearisedFit::responseAt(Point base) const {
  const Slopes s = slopesAt(base);
  const Parameters x = solve(s.x);
  const Parameters y = solve(s.y);
  return {dot(s.x, x), dot(s.y, x), dot(s.y, y)};
}

Point LinearisedFit::displacement(Point base, const Parameters& step) const {
  if (model_ != Model::Projective) {
    const Slopes s = slopesAt(base);
    return {dot(s.x, step) / to_.scale, dot(s.y, step) / to_.scale};
  }
  const Point p = from_.apply(map(kept_, base));
  const Point before = map(fitted_, p);
  const Point after = map(stepped(fitted_, step), p);
  return {(after.x - before.x) / to_.scale, (after.y - before.y) / to_.scale};
}

}  // namespace cornerpin
