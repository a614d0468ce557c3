// SPDX-License-Identifier: BSD-3-Clause
#include "shot/trust/subset_posterior.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "shot/fit/positive_definite.h"
#include "shot/fit/residuals.h"
#include "shot/plane/extent.h"

namespace cornerpin {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kPi = 3.141592653589793;

constexpr std::size_t kFewestLeft = 5;  // some transform meets any four
// Below this determinant of I - hat the other tracks do not fix the transform.
constexpr double kNoneLeft = 1e-9;
constexpr double kMostUnlikely = 4.605170185988092;  // log 100, of an opinion that is gone on from
// What the share of frames in which a track is off adds to its odds.
constexpr double kForMissed = 20.0;

// Of all matches, with root mean square 1 over those that the frame's fit takes for good ones.
std::vector<double> relativeWeights(const Matches& matches, const FittedFrame& frame) {
  double sum = 0.0;
  double count = 0.0;
  for (std::size_t i = 0; i < matches.size(); ++i) {
    if (!(frame.weights[i] > 0.0)) continue;
    sum += matches.squaredWeights()[i];
    count += 1.0;
  }
  std::vector<double> weights = matches.weights();
  for (double& weight : weights) weight *= std::sqrt(count / sum);
  return weights;
}

FittedFrame byAll(const Matches& matches, FittedFrame frame) {
  frame.weights = relativeWeights(matches, frame);
  return frame;
}

// The variance of a residual's coordinate where that of a position is 1.
double residualVariance(const Matches& matches, const FittedFrame& frame) {
  double sum = 0.0;
  for (std::size_t i = 0; i < matches.size(); ++i) {
    const auto [Xx, Xy, Yx, Yy] = derivative(frame.h, matches.base()[i]);
    sum += Xx * Xx + Xy * Xy + Yx * Yx + Yy * Yy;
  }
  const double mean = sum / static_cast<double>(2 * matches.size());
  return 1.0 + frame.placeNoise * frame.placeNoise * mean;
}

unsigned bitsOf(const std::vector<std::size_t>& indices) {
  unsigned bits = 0;
  for (std::size_t i : indices) bits |= 1u << i;
  return bits;
}

}  // namespace

SubsetPosterior::SubsetPosterior(const Matches& matches, const FittedFrame& frame,
                                 const NoiseEstimate& noise, const std::vector<double>& missed)
    : noise_(noise), most_(-kInfinity) {
  if (matches.size() <= kFewestLeft || !(noise.freedom > 0.0)) return;
  std::vector<bool> own(matches.size());
  std::vector<bool> others(matches.size());
  bool differ = false;
  for (std::size_t i = 0; i < matches.size(); ++i) {
    own[i] = !(frame.weights[i] > 0.0);
    others[i] = missed[i] > kMostMissed;
    differ = differ || (others[i] && !own[i]);
  }
  if (matches.size() > kMost && !differ) return;
  const FittedFrame all = byAll(matches, frame);
  slopes_.emplace(matches, all, all.weights);
  const double scale = slopes_->place.to.scale;
  noise_.variance *= scale * scale * residualVariance(matches, frame);
  const Box box = boxAround(matches.present());
  reach_ = scale * std::hypot(box.high.x - box.low.x, box.high.y - box.low.y);
  addSights(matches, all, missed);
  if (matches.size() <= kMost) {
    const LinearisedFit fit(*slopes_, all);
    if (fit.isDetermined()) tryAll(noneOff(fit));
    return;
  }
  tryWithout(others);
  tryWithout(own);
  for (std::size_t i = 0; i < own.size(); ++i) others[i] = others[i] || own[i];
  tryWithout(others);
}

void SubsetPosterior::addSights(const Matches& matches, const FittedFrame& all,
                                const std::vector<double>& missed) {
  const double scale = slopes_->place.to.scale;
  sights_.resize(matches.size());
  for (std::size_t i = 0; i < matches.size(); ++i) {
    Sight& sight = sights_[i];
    sight.slopes = slopesAt(slopes_->tracks, i);
    const Point r = residual(matches[i], all.h);
    sight.residual = {scale * r.x, scale * r.y};
    sight.squaredWeight = all.weights[i] * all.weights[i];
    if (missed[i] > 0.0) sight.logOdds = std::log1p(kForMissed * missed[i]);
  }
}

void SubsetPosterior::add(const Sight& sight, Parameters& gradient, double& squares) {
  const Point r = sight.residual;
  const double w2 = sight.squaredWeight;
  squares += w2 * (r.x * r.x + r.y * r.y);
  for (std::size_t k = 0; k < 8; ++k) {
    gradient[k] += w2 * (sight.slopes.x[k] * r.x + sight.slopes.y[k] * r.y);
  }
}

SubsetPosterior::Opinion SubsetPosterior::noneOff(const LinearisedFit& all) const {
  Opinion none;
  Parameters gradient{};
  for (const Sight& sight : sights_) add(sight, gradient, none.squares);
  none.step = all.solve(gradient);
  none.squares = std::max(none.squares - dot(none.step, gradient), 0.0);
  none.inverse = all.inverse();
  return none;
}

// Of the logarithms, what the number of tracks off decides, up to `most` of them.
void SubsetPosterior::setCounts(std::size_t most) {
  const auto n = static_cast<double>(sights_.size());
  const double half = 0.5 * (noise_.freedom + 2.0 * n - 8.0);
  for (std::size_t i = ofCount_.size(); i <= most; ++i) {
    const auto off = static_cast<double>(i);
    ofCount_.push_back(ofCount_.back() + std::log(kPi * off / ((half - off) * (n - off + 1.0))));
  }
}

double SubsetPosterior::freedomOf(const Opinion& opinion) const {
  return noise_.freedom + 2.0 * static_cast<double>(sights_.size() - opinion.off.size()) - 8.0;
}

Point SubsetPosterior::residualOf(const Sight& sight, const Opinion& opinion) const {
  return {sight.residual.x - dot(sight.slopes.x, opinion.step),
          sight.residual.y - dot(sight.slopes.y, opinion.step)};
}

// With A the normal matrix, S the track's slopes and w its weight, the matrix without the track is
// A - w^2 S'S, whose inverse is inv(A) + w^2 inv(A) S' inv(I - w^2 G) S inv(A), G = S inv(A) S'
// (Sherman, Morrison, Woodbury). False where the others do not fix the transform.
bool SubsetPosterior::leaveOut(std::size_t track, Opinion& opinion) const {
  const Sight& sight = sights_[track];
  const double w2 = sight.squaredWeight;
  const Parameters x = multiplied(opinion.inverse, sight.slopes.x);
  const Parameters y = multiplied(opinion.inverse, sight.slopes.y);
  const double a = 1.0 - w2 * dot(sight.slopes.x, x);
  const double b = -w2 * dot(sight.slopes.y, x);
  const double d = 1.0 - w2 * dot(sight.slopes.y, y);
  const double det = a * d - b * b;
  if (!(det > kNoneLeft)) return false;
  const Point r = residualOf(sight, opinion);
  const double f = w2 / det;
  const Point away = {f * (d * r.x - b * r.y), f * (a * r.y - b * r.x)};
  opinion.squares = std::max(opinion.squares - (r.x * away.x + r.y * away.y), 0.0);
  opinion.logDeterminant += std::log(det);
  Parameters p, q;
  for (std::size_t k = 0; k < 8; ++k) {
    opinion.step[k] -= x[k] * away.x + y[k] * away.y;
    p[k] = f * (d * x[k] - b * y[k]);
    q[k] = f * (a * y[k] - b * x[k]);
  }
  addProducts(p, x, q, y, opinion.inverse);
  opinion.off.push_back(track);
  return true;
}

// One more track off at a time.
void SubsetPosterior::tryAll(const Opinion& none) {
  setCounts(sights_.size() - kFewestLeft);
  std::vector<bool> tried(std::size_t{1} << sights_.size());
  std::vector<Opinion> opinions = {none};
  add(opinions.front());
  while (!opinions.empty()) {
    std::vector<Opinion> next;
    for (const Opinion& opinion : opinions) {
      if (sights_.size() - opinion.off.size() <= kFewestLeft) continue;
      if (opinion.log < most_ - kMostUnlikely) continue;
      const unsigned bits = bitsOf(opinion.off);
      for (std::size_t i = 0; i < sights_.size(); ++i) {
        const unsigned more = bits | 1u << i;
        if (more == bits || tried[more]) continue;
        tried[more] = true;
        Opinion less = opinion;
        if (!leaveOut(i, less)) continue;
        add(less);
        next.push_back(std::move(less));
      }
    }
    opinions = std::move(next);
  }
}

// Those off all at once: a fit to the others, where they fix one.
void SubsetPosterior::tryWithout(const std::vector<bool>& off) {
  Opinion opinion;
  Symmetric2s pull(sights_.size());
  Parameters gradient{};
  for (std::size_t i = 0; i < off.size(); ++i) {
    if (off[i]) {
      opinion.off.push_back(i);
      continue;
    }
    pull[0][i] = pull[2][i] = sights_[i].squaredWeight;
    add(sights_[i], gradient, opinion.squares);
  }
  if (sights_.size() - opinion.off.size() < kFewestLeft) return;
  opinion.inverse = sumOfProducts(slopes_->tracks, pull);
  double determinant = 0.0;
  if (!invertDetermined(opinion.inverse, &determinant)) return;
  opinion.logDeterminant = std::log(determinant);
  opinion.step = multiplied(opinion.inverse, gradient);
  opinion.squares = std::max(opinion.squares - dot(opinion.step, gradient), 0.0);
  setCounts(opinion.off.size());
  add(opinion);
}

void SubsetPosterior::add(Opinion& opinion) {
  opinion.log = logOf(opinion);
  if (opinion.log > most_) {
    const double part = std::exp(most_ - opinion.log);
    total_ *= part;
    for (double& element : moments_) element *= part;
    most_ = opinion.log;
  }
  const double variance = (noise_.freedom * noise_.variance + opinion.squares) / freedomOf(opinion);
  const double probability = std::exp(opinion.log - most_);
  total_ += probability;
  for (std::size_t k = 0; k < 8; ++k) {
    for (std::size_t l = 0; l < 8; ++l) {
      const std::size_t kl = k * 8 + l;
      const double square = opinion.step[k] * opinion.step[l] + variance * opinion.inverse[kl];
      moments_[kl] += probability * square;
    }
  }
}

// With R the squares of n tracks and A their normal matrix, the likelihood
// (2 pi s^2)^-n exp(-R / 2 s^2), integrated over the parameters, is
// det(A)^-1/2 (2 pi s^2)^-m/2 exp(-R / 2 s^2), m = 2 n - 8; over a variance s^2 of which f errors
// have told v (scaled inverse chi-squared),
// det(A)^-1/2 pi^-m/2 Gamma((f + m) / 2) (f v + R)^-(f + m)/2, but for what f and v alone decide.
// That just these k of all N tracks are off has the prior k! (N - k)! / N! of each number's.
double SubsetPosterior::logOf(const Opinion& opinion) const {
  const double half = 0.5 * freedomOf(opinion);
  const double squares = noise_.freedom * noise_.variance + opinion.squares;
  double log =
      ofCount_[opinion.off.size()] - half * std::log(squares) - 0.5 * opinion.logDeterminant;
  const double variance = 0.5 * squares / half;
  const bool many = sights_.size() > kMost;
  const Symmetric2s all = many ? responses(slopes_->tracks, opinion.inverse) : Symmetric2s();
  for (std::size_t i : opinion.off) {
    const Sight& sight = sights_[i];
    const Point r = residualOf(sight, opinion);
    // The mean square of r were it a good one's.
    const double ofFit =
        many ? all[0][i] + all[2][i] : covarianceOf(sight.slopes, opinion.inverse).trace();
    const double least = variance * (2.0 / sight.squaredWeight + ofFit);
    const double area = kPi * std::log1p(reach_ * reach_ / least) * (r.x * r.x + r.y * r.y + least);
    log += sight.logOdds - std::log(sight.squaredWeight * area);
  }
  return log;
}

Symmetric2 SubsetPosterior::covarianceAt(Point base) const {
  const double scale = slopes_->place.to.scale;
  return times(1.0 / (scale * scale * total_),
               covarianceOf(slopes_->place.slopesAt(base), moments_));
}

}  // namespace cornerpin
