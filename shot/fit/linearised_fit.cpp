// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/linearised_fit.h"

#include <algorithm>

namespace cornerpin {

namespace {

constexpr std::size_t kSize = 8;

// By how much more than alone a parameter may vary beside the others: from there on, no more than
// three digits of the inverse are left.
constexpr double kMostInflation = 1e12;

// Which elements of the transform a lower model's parameters move: of a translation its shift; of a
// similarity a, b and the shift in (a x - b y + c, b x + a y + d); of an affine map its own six.
std::vector<Parameters> directionsOf(Model model) {
  constexpr Parameters kShiftX = {0, 0, 1};
  constexpr Parameters kShiftY = {0, 0, 0, 0, 0, 1};
  switch (model) {
    case Model::Translation:
      return {kShiftX, kShiftY};
    case Model::Similarity:
      return {{1, 0, 0, 0, 1}, {0, -1, 0, 1}, kShiftX, kShiftY};
    case Model::Affine:
      return {{1}, {0, 1}, kShiftX, {0, 0, 0, 1}, {0, 0, 0, 0, 1}, kShiftY};
    case Model::Held:
    case Model::Projective:
      break;
  }
  return {};
}

// L' A L with the directions in the columns of L; the identity beyond them.
SquareMatrix<8> within(const std::vector<Parameters>& directions, const SquareMatrix<8>& a) {
  SquareMatrix<8> result{};
  for (std::size_t i = 0; i < kSize; ++i) result[i * kSize + i] = 1.0;
  for (std::size_t j = 0; j < directions.size(); ++j) {
    const Parameters column = multiplied(a, directions[j]);
    for (std::size_t i = 0; i < directions.size(); ++i) {
      result[j * kSize + i] = dot(directions[i], column);
    }
  }
  return result;
}

// L B L'.
SquareMatrix<8> spread(const std::vector<Parameters>& directions, const SquareMatrix<8>& b) {
  SquareMatrix<8> result{};
  for (std::size_t p = 0; p < directions.size(); ++p) {
    for (std::size_t q = 0; q < directions.size(); ++q) {
      for (std::size_t j = 0; j < kSize; ++j) {
        for (std::size_t i = 0; i < kSize; ++i) {
          result[j * kSize + i] += b[q * kSize + p] * directions[p][i] * directions[q][j];
        }
      }
    }
  }
  return result;
}

// False where it has none in double precision.
bool invert(SquareMatrix<8>& a) {
  Parameters diagonal{};
  for (std::size_t i = 0; i < kSize; ++i) diagonal[i] = a[i * kSize + i];
  if (!invertPositiveDefinite(a)) return false;
  for (std::size_t j = 0; j < kSize; ++j) {
    if (!(a[j * kSize + j] * diagonal[j] < kMostInflation)) return false;
    for (std::size_t i = 0; i < j; ++i) a[i * kSize + j] = a[j * kSize + i];
  }
  return true;
}

std::vector<double> padded(std::vector<double> numbers, std::size_t count) {
  numbers.resize(count);
  return numbers;
}

// Behind `kept`.
Points carried(const Homography& kept, const Points& base) {
  if (kept == kIdentity) return base;
  Points result;
  result.reserve(base.size());
  for (Point p : base) result.add(map(kept, p));
  return result;
}

Points counted(const Points& points, const std::vector<double>& weights) {
  Points result;
  result.reserve(points.size());
  for (std::size_t i = 0; i < points.size(); ++i) {
    if (weights[i] > 0.0) result.add(points[i]);
  }
  return result;
}

}  // namespace

Symmetric2 sum(const Symmetric2& a, const Symmetric2& b) {
  return {a.xx + b.xx, a.xy + b.xy, a.yy + b.yy};
}

Symmetric2 times(double factor, const Symmetric2& s) {
  return {factor * s.xx, factor * s.xy, factor * s.yy};
}

Parameters multiplied(const SquareMatrix<8>& a, const Parameters& v) {
  Parameters result{};
  for (std::size_t j = 0; j < kSize; ++j) {
    for (std::size_t i = 0; i < kSize; ++i) result[i] += a[j * kSize + i] * v[j];
  }
  return result;
}

SquareMatrix<8> multiplied(const SquareMatrix<8>& a, const SquareMatrix<8>& b) {
  SquareMatrix<8> result{};
  for (std::size_t k = 0; k < kSize; ++k) {
    for (std::size_t j = 0; j < kSize; ++j) {
      for (std::size_t i = 0; i < kSize; ++i) {
        result[k * kSize + i] += a[j * kSize + i] * b[k * kSize + j];
      }
    }
  }
  return result;
}

Symmetric2 covarianceOf(const Slopes& slopes, const SquareMatrix<8>& covariance) {
  const Parameters x = multiplied(covariance, slopes.x);
  const Parameters y = multiplied(covariance, slopes.y);
  return {dot(slopes.x, x), dot(slopes.y, x), dot(slopes.y, y)};
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

FitPlace::FitPlace(const Matches& matches, const FittedFrame& frame,
                   const std::vector<double>& weights)
    : kept(frame.kept) {
  const Points base = counted(carried(kept, matches.base()), weights);
  if (base.empty()) return;
  from = Similarity::fitting(base);
  to = Similarity::fitting(counted(matches.present(), weights));
  if (frame.model == Model::Projective) fitted = normalised(frame.h, from, to);
}

FrameSlopes::FrameSlopes(const Matches& matches, const FittedFrame& frame,
                         const std::vector<double>& weights)
    : place(matches, frame, weights),
      tracks(trackSlopes(carried(place.kept, matches.base()), place.from, place.fitted,
                         padded(weights, matches.base().paddedSize()))) {}

LinearisedFit::LinearisedFit(const Matches& matches, const FittedFrame& frame)
    : LinearisedFit(FrameSlopes(matches, frame, frame.weights), frame) {}

LinearisedFit::LinearisedFit(const FrameSlopes& slopes, const FittedFrame& frame)
    : place_(slopes.place), squares_(slopes.tracks.count()) {
  const std::vector<double>& weights = frame.weights;
  largest_ = weights.empty() ? 0.0 : *std::max_element(weights.begin(), weights.end());
  if (!(largest_ > 0.0)) return;
  for (std::size_t i = 0; i < weights.size(); ++i) {
    const double w = weights[i] > 0.0 ? weights[i] / largest_ : 0.0;
    squares_[i] = w * w;
  }
  invert(slopes.tracks, frame);
}

void LinearisedFit::invert(const TrackSlopes& slopes, const FittedFrame& frame) {
  Symmetric2s pull(slopes.count());
  const bool stiff = !frame.stiffness.empty();
  for (std::size_t i = 0; i < frame.weights.size(); ++i) {
    const Symmetric2 k = stiff ? frame.stiffness[i] : Symmetric2{1.0, 0.0, 1.0};
    pull[0][i] = squares_[i] * k.xx;
    pull[1][i] = squares_[i] * k.xy;
    pull[2][i] = squares_[i] * k.yy;
  }
  inverse_ = sumOfProducts(slopes, pull);
  if (frame.model == Model::Projective) {
    determined_ = cornerpin::invert(inverse_);
    return;
  }
  const std::vector<Parameters> directions = directionsOf(frame.model);
  SquareMatrix<8> inner = within(directions, inverse_);
  determined_ = cornerpin::invert(inner);
  inverse_ = spread(directions, inner);
}

Parameters LinearisedFit::solve(const Parameters& v) const {
  Parameters result = multiplied(inverse_, v);
  for (double& x : result) x /= largest_ * largest_;
  return result;
}

Symmetric2 LinearisedFit::responseAt(Point base) const {
  return times(1.0 / (largest_ * largest_), covarianceOf(slopesAt(base), inverse_));
}

Symmetric2s LinearisedFit::hatsOf(const TrackSlopes& slopes) const {
  Symmetric2s hats = responses(slopes, inverse_);
  for (std::size_t c = 0; c < 3; ++c) {
    for (std::size_t i = 0; i < hats.count(); ++i) hats[c][i] *= squares_[i];
  }
  return hats;
}

}  // namespace cornerpin
