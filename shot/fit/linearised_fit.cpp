// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/linearised_fit.h"

#include <algorithm>

#include "shot/fit/lanes.inc"
#include "shot/fit/place_matrix.h"
#include "shot/fit/positive_definite.h"
#include "shot/plane/extent.h"

namespace cornerpin {

namespace {

constexpr std::size_t kSize = 8;

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

// Behind `kept`.
Points carried(const Homography& kept, const Points& base) {
  Points result(base.size());
  for (std::size_t i = 0; i < base.size(); ++i) result.set(i, map(kept, base[i]));
  return result;
}

// The matches' base places, or `behind` those behind `kept`.
const Points& basesOf(const Matches& matches, const Homography& kept, Points& behind) {
  if (kept == kIdentity) return matches.base();
  behind = carried(kept, matches.base());
  return behind;
}

bool anyAbove0(const std::vector<double>& weights) {
  return std::any_of(weights.begin(), weights.end(), [](double w) { return w > 0.0; });
}

// a v, column by column.
void multiply(const double* a, const double* v, double* result) {
  Lanes upper = {}, lower = {};
  for (std::size_t j = 0; j < kSize; ++j) {
    Lanes first, second;
    load(a + j * kSize, first);
    load(a + j * kSize + 4, second);
    upper += first * v[j];
    lower += second * v[j];
  }
  store(upper, result);
  store(lower, result + 4);
}

}  // namespace

Symmetric2 sum(const Symmetric2& a, const Symmetric2& b) {
  return {a.xx + b.xx, a.xy + b.xy, a.yy + b.yy};
}

Symmetric2 times(double factor, const Symmetric2& s) {
  return {factor * s.xx, factor * s.xy, factor * s.yy};
}

Parameters multiplied(const SquareMatrix<8>& a, const Parameters& v) {
  Parameters result;
  multiply(a.data(), v.data(), result.data());
  return result;
}

SquareMatrix<8> multiplied(const SquareMatrix<8>& a, const SquareMatrix<8>& b) {
  SquareMatrix<8> result;
  for (std::size_t k = 0; k < kSize; ++k) {
    multiply(a.data(), &b[k * kSize], &result[k * kSize]);
  }
  return result;
}

void addProducts(const Parameters& p, const Parameters& x, const Parameters& q, const Parameters& y,
                 SquareMatrix<8>& a) {
  Lanes first[2], second[2];
  for (std::size_t half = 0; half < 2; ++half) {
    load(p.data() + 4 * half, first[half]);
    load(q.data() + 4 * half, second[half]);
  }
  for (std::size_t j = 0; j < kSize; ++j) {
    for (std::size_t half = 0; half < 2; ++half) {
      double* const to = a.data() + j * kSize + 4 * half;
      Lanes sum;
      load(to, sum);
      store(sum + (first[half] * x[j] + second[half] * y[j]), to);
    }
  }
}

Symmetric2 covarianceOf(const Slopes& slopes, const SquareMatrix<8>& covariance) {
  const Parameters x = multiplied(covariance, slopes.x);
  const Parameters y = multiplied(covariance, slopes.y);
  return {dot(slopes.x, x), dot(slopes.y, x), dot(slopes.y, y)};
}

FitPlace::FitPlace(const Points& base, const Points& present, const FittedFrame& frame,
                   const std::vector<double>& weights)
    : kept(frame.kept) {
  if (!anyAbove0(weights)) return;
  from = Similarity::ofBox(boxAround(base, weights));
  to = Similarity::ofBox(boxAround(present, weights));
  if (frame.model == Model::Projective) fitted = normalised(frame.h, from, to);
}

FrameSlopes::FrameSlopes(const Matches& matches, const FittedFrame& frame,
                         std::vector<double> weights) {
  Points behind;
  const Points& base = basesOf(matches, frame.kept, behind);
  place = FitPlace(base, matches.present(), frame, weights);
  weights.resize(base.paddedSize());
  tracks = trackSlopes(base, place.from, place.fitted, weights);
}

LinearisedFit::LinearisedFit(const Matches& matches, const FittedFrame& frame)
    : LinearisedFit(FrameSlopes(matches, frame, frame.weights), frame) {}

LinearisedFit::LinearisedFit(const FrameSlopes& slopes, const FittedFrame& frame,
                             Stiffness stiffness)
    : place_(slopes.place), squares_(slopes.tracks.count()) {
  const std::vector<double>& weights = frame.weights;
  largest_ = weights.empty() ? 0.0 : *std::max_element(weights.begin(), weights.end());
  if (!(largest_ > 0.0)) return;
  for (std::size_t i = 0; i < weights.size(); ++i) {
    const double w = weights[i] > 0.0 ? weights[i] / largest_ : 0.0;
    squares_[i] = w * w;
  }
  invert(slopes.tracks, frame, stiffness == Stiffness::OfFrame && !frame.stiffness.empty());
}

LinearisedFit::LinearisedFit(const Points& places, Model model) {
  place_.from = place_.to = Similarity::fitting(places);
  inverse_ = placeMatrix(places, place_.from);
  invertWithin(model);
}

void LinearisedFit::invert(const TrackSlopes& slopes, const FittedFrame& frame, bool stiff) {
  Symmetric2s pull(slopes.count());
  const std::size_t count = frame.weights.size();
  if (stiff) {
    for (std::size_t i = 0; i < count; ++i) {
      const Symmetric2& k = frame.stiffness[i];
      pull[0][i] = squares_[i] * k.xx;
      pull[1][i] = squares_[i] * k.xy;
      pull[2][i] = squares_[i] * k.yy;
    }
  } else {
    std::copy_n(squares_.begin(), count, pull[0]);
    std::copy_n(squares_.begin(), count, pull[2]);
  }
  inverse_ = sumOfProducts(slopes, pull);
  invertWithin(frame.model);
}

void LinearisedFit::invertWithin(Model model) {
  if (model == Model::Projective) {
    determined_ = invertDetermined(inverse_);
    return;
  }
  const std::vector<Parameters> directions = directionsOf(model);
  SquareMatrix<8> inner = within(directions, inverse_);
  determined_ = invertDetermined(inner);
  inverse_ = spread(directions, inner);
}

Parameters LinearisedFit::solve(const Parameters& v) const {
  Parameters result = multiplied(inverse_, v);
  for (double& x : result) x /= largest_ * largest_;
  return result;
}

SquareMatrix<8> LinearisedFit::inverse() const {
  SquareMatrix<8> result = inverse_;
  for (double& element : result) element /= largest_ * largest_;
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
