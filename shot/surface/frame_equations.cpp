// SPDX-License-Identifier: BSD-3-Clause
#include "shot/surface/frame_equations.h"

#include <algorithm>
#include <cmath>

#include "shot/fit/loss.h"
#include "shot/fit/residuals.h"

namespace cornerpin {

namespace {

constexpr std::size_t kSize = 8;

// A pivot below this share of the diagonal element that it comes from leaves no more than three
// digits. Fewer than four tracks, and all of them on a line, leave none.
constexpr double kLeastPivot = 1e-12;

// The sightings of tracks that take part, in front of the horizon, with their places as the base.
Matches counted(const Matches& matches, const JointShot& shot, const Homography& h) {
  Matches result;
  for (std::size_t i = 0; i < matches.size(); ++i) {
    Match match = matches[i];
    const auto track = static_cast<std::size_t>(match.track);
    if (shot.lives.slots[track] == TrackLives::kNoSlot || !isSighting(match)) continue;
    match.base = shot.places[track].point;
    if (denominator(h, match.base) > kHorizon) result.add(match);
  }
  return result;
}

Slopes operator*(double factor, Slopes slopes) {
  for (std::size_t i = 0; i < kSize; ++i) {
    slopes.x[i] *= factor;
    slopes.y[i] *= factor;
  }
  return slopes;
}

}  // namespace

bool FrameEquations::linearise(const JointShot& shot, std::size_t frame) {
  noise_ = shot.noise[frame];
  if (!(noise_ > 0.0)) return false;
  free_ = shot.frames[frame].part == JointFrame::Part::Free;
  h_ = shot.frames[frame].h;
  width_ = 2 * shot.lives.extents[frame];
  sightings_.clear();
  l_ = {};
  const Matches matches = counted(shot.observations(frame), shot, h_);
  if (free_) {
    if (matches.empty()) return false;
    from_ = Similarity::fitting(matches.base());
    to_ = Similarity::fitting(matches.present());
    normalised_ = normalised(h_, from_, to_);
    y_.assign(kSize * width_, 0.0);
  }
  SquareMatrix<8> a{};
  for (std::size_t i = 0; i < matches.size(); ++i) {
    const auto track = static_cast<std::size_t>(matches.tracks()[i]);
    add(matches[i], static_cast<std::size_t>(shot.lives.slots[track]), a);
  }
  if (!free_) return true;
  if (!factorise(a)) return false;
  eliminate();
  return true;
}

void FrameEquations::add(const Match& match, std::size_t slot, SquareMatrix<8>& a) {
  const Point r = residual(match, h_);
  const Derivative d = derivative(h_, match.base);
  const double w = match.weight * match.weight * jointLoss(r, noise_).weight / (noise_ * noise_);
  const auto [Xx, Xy, Yx, Yy] = d;
  sightings_.push_back({slot,
                        {w * (Xx * Xx + Yx * Yx), w * (Xx * Xy + Yx * Yy), w * (Xy * Xy + Yy * Yy)},
                        {w * (Xx * r.x + Yx * r.y), w * (Xy * r.x + Yy * r.y)},
                        d});
  if (!free_) return;
  const Slopes s = (1.0 / to_.scale) * slopesOf(normalised_, from_.apply(match.base));
  for (std::size_t i = 0; i < kSize; ++i) {
    const double x = w * s.x[i];
    const double y = w * s.y[i];
    for (std::size_t j = 0; j <= i; ++j) a[i * kSize + j] += x * s.x[j] + y * s.y[j];
    l_[i] += x * r.x + y * r.y;
    double* row = y_.data() + i * width_ + 2 * slot;
    row[0] += x * Xx + y * Yx;
    row[1] += x * Xy + y * Yy;
  }
}

bool FrameEquations::factorise(const SquareMatrix<8>& a) {
  for (std::size_t i = 0; i < kSize; ++i) {
    for (std::size_t j = 0; j <= i; ++j) {
      double sum = a[i * kSize + j];
      for (std::size_t k = 0; k < j; ++k) sum -= factor_[i * kSize + k] * factor_[j * kSize + k];
      if (i == j && !(sum > kLeastPivot * a[i * kSize + i])) return false;
      factor_[i * kSize + j] = i == j ? std::sqrt(sum) : sum / factor_[j * kSize + j];
    }
  }
  return true;
}

// Y = inv(L) B and l = inv(L) g, row by row.
void FrameEquations::eliminate() {
  for (std::size_t i = 0; i < kSize; ++i) {
    double* row = y_.data() + i * width_;
    for (std::size_t k = 0; k < i; ++k) {
      const double factor = factor_[i * kSize + k];
      const double* above = y_.data() + k * width_;
      for (std::size_t j = 0; j < width_; ++j) row[j] -= factor * above[j];
      l_[i] -= factor * l_[k];
    }
    const double pivot = factor_[i * kSize + i];
    for (std::size_t j = 0; j < width_; ++j) row[j] /= pivot;
    l_[i] /= pivot;
  }
}

// inv(L') v.
Parameters FrameEquations::solveUpper(Parameters v) const {
  for (std::size_t i = kSize; i-- > 0;) {
    for (std::size_t k = i + 1; k < kSize; ++k) v[i] -= factor_[k * kSize + i] * v[k];
    v[i] /= factor_[i * kSize + i];
  }
  return v;
}

// The step of the parameters is inv(L') (l - Y times the steps of the places).
Homography FrameEquations::stepped(const FrontVector& placeSteps) const {
  if (!free_) return h_;
  Parameters v = l_;
  for (std::size_t i = 0; i < kSize; ++i) {
    for (std::size_t j = 0; j < width_; ++j) v[i] -= y(i)[j] * placeSteps[j];
  }
  const Parameters step = solveUpper(v);
  Homography h = normalised_;
  for (std::size_t i = 0; i < kSize; ++i) h[i / 3][i % 3] += step[i];
  h = denormalised(h, from_, to_);
  return isFinite(h) ? h : h_;
}

double FrameEquations::largestMove(const FrontVector& placeSteps) const {
  double largest = 0.0;
  for (const Sighting& s : sightings_) {
    const Point step = {placeSteps[2 * s.slot], placeSteps[2 * s.slot + 1]};
    const Point move = {s.d.Xx * step.x + s.d.Xy * step.y, s.d.Yx * step.x + s.d.Yy * step.y};
    largest = std::max(largest, squaredDistance(move, {}));
  }
  return std::sqrt(largest) / noise_;
}

// inv(A) v.
Parameters FrameEquations::solve(Parameters v) const {
  for (std::size_t i = 0; i < kSize; ++i) {
    for (std::size_t k = 0; k < i; ++k) v[i] -= factor_[i * kSize + k] * v[k];
    v[i] /= factor_[i * kSize + i];
  }
  return solveUpper(v);
}

// K = inv(A) B = inv(L') Y, row by row from the last: how the parameters move with the places.
std::vector<double> FrameEquations::response() const {
  std::vector<double> k(y_);
  for (std::size_t i = kSize; i-- > 0;) {
    double* row = k.data() + i * width_;
    for (std::size_t m = i + 1; m < kSize; ++m) {
      const double factor = factor_[m * kSize + i];
      const double* below = k.data() + m * width_;
      for (std::size_t j = 0; j < width_; ++j) row[j] -= factor * below[j];
    }
    for (std::size_t j = 0; j < width_; ++j) row[j] /= factor_[i * kSize + i];
  }
  return k;
}

// With P the covariance of the places, that of the parameters is inv(A) + K P K': what their own
// observations leave open, and what the places bring along.
void FrameEquations::setCovariance(const FrontVector& ofPlaces, std::size_t stride) {
  covariance_ = {};
  if (!free_) return;
  const std::vector<double> k = response();
  std::vector<double> product;  // a row of K P
  for (std::size_t i = 0; i < kSize; ++i) {
    product.assign(width_, 0.0);
    for (std::size_t m = 0; m < width_; ++m) {
      const double factor = k[i * width_ + m];
      const double* row = ofPlaces.data() + m * stride;
      for (std::size_t j = 0; j < width_; ++j) product[j] += factor * row[j];
    }
    Parameters unit{};
    unit[i] = 1.0;
    covariance_[i] = solve(unit);
    for (std::size_t j = 0; j < kSize; ++j) {
      for (std::size_t m = 0; m < width_; ++m) {
        covariance_[i][j] += product[m] * k[j * width_ + m];
      }
    }
  }
}

Symmetric2 FrameEquations::covarianceAt(Point surface) const {
  if (!(denominator(h_, surface) > kHorizon)) return Place{}.covariance;
  if (!free_) return {};
  const Slopes s = (1.0 / to_.scale) * slopesOf(normalised_, from_.apply(surface));
  Parameters x{};
  Parameters y{};
  for (std::size_t i = 0; i < kSize; ++i) {
    x[i] = dot(covariance_[i], s.x);
    y[i] = dot(covariance_[i], s.y);
  }
  return {dot(s.x, x), dot(s.y, x), dot(s.y, y)};
}

}  // namespace cornerpin
