// SPDX-License-Identifier: BSD-3-Clause
#include "shot/surface/frame_equations.h"

#include <algorithm>
#include <cmath>

#include "shot/fit/loss.h"
#include "shot/fit/residuals.h"
#include "shot/surface/front_products.h"

namespace cornerpin {

namespace {

constexpr std::size_t kSize = 8;

// A pivot below this share of the diagonal element that it comes from leaves no more than three
// digits. Fewer than four tracks, and all of them on a line, leave none.
constexpr double kLeastPivot = 1e-12;

// The sightings of tracks that take part, in front of the horizon, with their places as the base.
Matches counted(const Matches& matches, const JointShot& shot, const Homography& h) {
  Matches result;
  result.reserve(matches.size());
  for (std::size_t i = 0; i < matches.size(); ++i) {
    Match match = matches[i];
    const auto track = static_cast<std::size_t>(match.track);
    if (shot.lives.slots[track] == TrackLives::kNoSlot || !isSighting(match)) continue;
    match.base = shot.places[track].point;
    if (denominator(h, match.base) > kHorizon) result.add(match);
  }
  return result;
}

// `multiplied` takes matrices by columns.
SquareMatrix<8> transposed(const SquareMatrix<8>& a) {
  SquareMatrix<8> result;
  for (std::size_t i = 0; i < kSize * kSize; ++i) result[i % kSize * kSize + i / kSize] = a[i];
  return result;
}

}  // namespace

bool FrameEquations::linearise(const JointShot& shot, std::size_t frame) {
  noise_ = shot.noise[frame];
  if (!(noise_ > 0.0)) return false;
  free_ = shot.frames[frame].part == JointFrame::Part::Free;
  h_ = shot.frames[frame].h;
  width_ = 2 * shot.lives.extents[frame];
  stride_ = paddedWidth(width_);
  const Matches matches = counted(shot.observations(frame), shot, h_);
  if (free_ && matches.empty()) return false;
  from_ = free_ ? Similarity::fitting(matches.base()) : Similarity{};
  to_ = free_ ? Similarity::fitting(matches.present()) : Similarity{};
  normalised_ = normalised(h_, from_, to_);
  const TrackSlopes slopes =
      trackSlopes(matches.base(), from_, normalised_, matches.squaredWeights());
  weigh(matches, slopes, shot.lives.slots);
  if (!free_) return true;
  if (!factorise(information(slopes))) return false;
  take(slopes);
  eliminate();
  return true;
}

// What the sightings say of the places alone.
void FrameEquations::weigh(const Matches& matches, const TrackSlopes& slopes,
                           const std::vector<int>& slots) {
  sightings_.clear();
  for (std::size_t i = 0; i < matches.size(); ++i) {
    const double X = slopes[3][i], Y = slopes[4][i];
    const Point image = {X / to_.scale + to_.centre.x, Y / to_.scale + to_.centre.y};
    const Point present = matches.present()[i];
    const Point r = {present.x - image.x, present.y - image.y};
    const double w = matches.squaredWeights()[i] * jointLoss(r, noise_).weight / (noise_ * noise_);
    const Homography& h = normalised_;
    const double scale = slopes[2][i] * from_.scale / to_.scale;
    const Derivative d = {scale * (h[0][0] - X * h[2][0]), scale * (h[0][1] - X * h[2][1]),
                          scale * (h[1][0] - Y * h[2][0]), scale * (h[1][1] - Y * h[2][1])};
    const Derivative wd = {w * d.Xx, w * d.Xy, w * d.Yx, w * d.Yy};
    sightings_.push_back(
        {static_cast<std::size_t>(slots[static_cast<std::size_t>(matches.tracks()[i])]),
         {wd.Xx * d.Xx + wd.Yx * d.Yx, wd.Xx * d.Xy + wd.Yx * d.Yy, wd.Xy * d.Xy + wd.Yy * d.Yy},
         {wd.Xx * r.x + wd.Yx * r.y, wd.Xy * r.x + wd.Yy * r.y},
         w,
         r,
         wd});
  }
}

// A, in the units that the parameters are in.
SquareMatrix<8> FrameEquations::information(const TrackSlopes& slopes) const {
  Symmetric2s weights(sightings_.size());
  for (std::size_t i = 0; i < sightings_.size(); ++i) {
    weights[0][i] = weights[2][i] = sightings_[i].w / (to_.scale * to_.scale);
  }
  return sumOfProducts(slopes, weights);
}

// B and g. Slopes times (x, y) are x m, y m and, for the last row, -(X x + Y y) (m0, m1).
void FrameEquations::take(const TrackSlopes& slopes) {
  b_.assign(kSize * stride_, 0.0);
  g_ = {};
  for (std::size_t i = 0; i < sightings_.size(); ++i) {
    const Sighting& s = sightings_[i];
    const double m[3] = {slopes[0][i] / to_.scale, slopes[1][i] / to_.scale,
                         slopes[2][i] / to_.scale};
    const auto timesSlopes = [&](double x, double y, double* out, std::size_t stride) {
      const double z = -(slopes[3][i] * x + slopes[4][i] * y);
      for (std::size_t k = 0; k < 3; ++k) {
        out[k * stride] += x * m[k];
        out[(3 + k) * stride] += y * m[k];
      }
      for (std::size_t k = 0; k < 2; ++k) out[(6 + k) * stride] += z * m[k];
    };
    timesSlopes(s.wd.Xx, s.wd.Yx, b_.data() + 2 * s.slot, stride_);
    timesSlopes(s.wd.Xy, s.wd.Yy, b_.data() + 2 * s.slot + 1, stride_);
    timesSlopes(s.w * s.r.x, s.w * s.r.y, g_.data(), 1);
  }
}

// Finds inv(L), row by row: that of L x = (0 .. 1 .. 0) from the row of the 1 on.
bool FrameEquations::factorise(const SquareMatrix<8>& a) {
  SquareMatrix<8> factor{};
  for (std::size_t i = 0; i < kSize; ++i) {
    for (std::size_t j = 0; j <= i; ++j) {
      double sum = a[i * kSize + j];
      for (std::size_t k = 0; k < j; ++k) sum -= factor[i * kSize + k] * factor[j * kSize + k];
      if (i == j && !(sum > kLeastPivot * a[i * kSize + i])) return false;
      factor[i * kSize + j] = i == j ? std::sqrt(sum) : sum / factor[j * kSize + j];
    }
  }
  inverse_ = {};
  for (std::size_t j = 0; j < kSize; ++j) {
    for (std::size_t i = j; i < kSize; ++i) {
      double sum = i == j ? 1.0 : 0.0;
      for (std::size_t k = j; k < i; ++k) sum -= factor[i * kSize + k] * inverse_[k * kSize + j];
      inverse_[i * kSize + j] = sum / factor[i * kSize + i];
    }
  }
  return true;
}

// Y = inv(L) B and l = inv(L) g.
void FrameEquations::eliminate() {
  y_.resize(b_.size());
  fastestFrontProducts().multiply(inverse_.data(), kSize, kSize, b_.data(), stride_, kSize, stride_,
                                  y_.data());
  l_ = multiplied(transposed(inverse_), g_);
}

// The step of the parameters is inv(L') (l - Y times the steps of the places).
Homography FrameEquations::stepped(const FrontVector& placeSteps) const {
  if (!free_) return h_;
  Parameters v = l_;
  for (std::size_t i = 0; i < kSize; ++i) {
    for (std::size_t j = 0; j < width_; ++j) v[i] -= y(i)[j] * placeSteps[j];
  }
  const Parameters step = multiplied(inverse_, v);
  Homography h = normalised_;
  for (std::size_t i = 0; i < kSize; ++i) h[i / 3][i % 3] += step[i];
  h = denormalised(h, from_, to_);
  return isFinite(h) ? h : h_;
}

// With P the covariance of the places, that of the parameters is inv(A) + K P K', K = inv(A) B =
// inv(L') Y: what their own observations leave open, and what the places bring along.
void FrameEquations::setCovariance(const FrontVector& ofPlaces, std::size_t stride) {
  covariance_ = {};
  if (!free_) return;
  const FrontProducts& products = fastestFrontProducts();
  const SquareMatrix<8> upper = transposed(inverse_);
  std::vector<double> k(y_.size()), columns(y_.size()), product(y_.size());
  products.multiply(upper.data(), kSize, kSize, y_.data(), stride_, kSize, stride_, k.data());
  for (std::size_t i = 0; i < kSize; ++i) {
    for (std::size_t m = 0; m < width_; ++m) columns[m * kSize + i] = k[i * stride_ + m];
  }
  products.multiply(k.data(), stride_, kSize, ofPlaces.data(), stride, width_, stride_,
                    product.data());
  SquareMatrix<8> brought;
  products.multiply(product.data(), stride_, kSize, columns.data(), kSize, width_, kSize,
                    brought.data());
  covariance_ = multiplied(inverse_, upper);
  for (std::size_t i = 0; i < kSize * kSize; ++i) covariance_[i] += brought[i];
}

Symmetric2 FrameEquations::covarianceAt(Point surface) const {
  if (!(denominator(h_, surface) > kHorizon)) return Place{}.covariance;
  if (!free_) return {};
  const Slopes s = slopesOf(normalised_, from_.apply(surface));
  return times(1.0 / (to_.scale * to_.scale), covarianceOf(s, covariance_));
}

}  // namespace cornerpin
