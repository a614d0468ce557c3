// SPDX-License-Identifier: BSD-3-Clause
#include "shot/robust/mixture_fit.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "shot/fit/homography_fit.h"

namespace cornerpin {

namespace {

constexpr double kTwoPi = 6.283185307179586;
constexpr double kMostStrays = 0.95;

// In spreads.
constexpr double kSameFit = 0.05;

// Rounds creep alike where each change is the last one times a number below 1, but for so much in
// direction (the cosine). A leap is no longer than so many changes, and no more than halves the
// spread or the share of strays.
constexpr double kAlike = 0.9;
constexpr double kLongest = 10.0;
constexpr double kLeast = 0.5;

double distance(const Homography& a, const Homography& b) {
  double most = 0.0;
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) most = std::max(most, std::fabs(a[i][j] - b[i][j]));
  }
  return most;
}

// Whether a round from one to the other changes the spread, and h in spreads, by less than `same`.
bool isSettled(const MixtureFit& from, const MixtureFit& to, double same) {
  return std::fabs(to.errors.spread - from.errors.spread) <= same * from.errors.spread &&
         distance(from.h, to.h) <= same * to.errors.spread;
}

// What a round changes: the transform in spreads, the spread and the share of strays by parts.
using Change = std::array<double, 11>;

Change changeOf(const MixtureFit& from, const MixtureFit& to) {
  Change change;
  for (std::size_t i = 0; i < 9; ++i) {
    change[i] = (to.h[i / 3][i % 3] - from.h[i / 3][i % 3]) / to.errors.spread;
  }
  change[9] = (to.errors.spread - from.errors.spread) / to.errors.spread;
  change[10] = (to.errors.strays - from.errors.strays) / to.errors.strays;
  return change;
}

double dot(const Change& a, const Change& b) {
  double sum = 0.0;
  for (std::size_t i = 0; i < a.size(); ++i) sum += a[i] * b[i];
  return sum;
}

void leap(const Change& change, double times, MixtureFit& fit) {
  ErrorModel& errors = fit.errors;
  for (std::size_t i = 0; i < 9; ++i) fit.h[i / 3][i % 3] += times * change[i] * errors.spread;
  const auto grown = [&](double by) { return std::max(1.0 + times * by, kLeast); };
  errors.spread = std::max(errors.spread * grown(change[9]), kSigmaFloor);
  errors.strays = std::min(errors.strays * grown(change[10]), kMostStrays);
}

// Cuts rounds that creep short: after two of them, as far as they would get by themselves when
// changes go on shrinking as they do (Aitken's extrapolation).
class Leaps {
 public:
  void after(const Change& change, MixtureFit& fit) {
    const double before = dot(last_, last_);
    const double both = dot(last_, change);
    last_ = change;
    const bool creeps =
        both > 0.0 && both < before && both * both > kAlike * kAlike * before * dot(change, change);
    if (!creeps) return;
    leap(change, std::min(both / (before - both), kLongest), fit);
    last_ = {};
  }

 private:
  Change last_{};
};

const MixtureVariant& variant() {
  static const MixtureVariant fastest = mixtureVariants().back();
  return fastest;
}

}  // namespace

bool alike(const MixtureFit& a, const MixtureFit& b) {
  const double most = kSameFit * b.errors.spread;
  return a.errors.freedom == b.errors.freedom &&
         std::fabs(a.errors.spread - b.errors.spread) <= most && distance(a.h, b.h) <= most;
}

MixtureFitter::MixtureFitter(const Matches& matches, const Prior& prior)
    : matches_(matches),
      votes_(votesOf(matches)),
      odds_(prior.odds),
      lowSigma_(std::min(prior.lowSigma, kLikelySigma)),
      squaredWeights_(matches.squaredWeights().size()) {
  votes_.resize(squaredWeights_.size());
  odds_.resize(squaredWeights_.size(), 1.0);
}

MixtureFit MixtureFitter::fit(const Homography& start, const ErrorModel& errors,
                              const std::vector<MixtureFit>& seen) {
  constexpr End kEnd = {3e-3, 60};  // far below what tells two fits apart
  MixtureFit fit;
  fit.h = start;
  fit.errors = errors;
  return run(fit, kEnd, seen);
}

MixtureFit MixtureFitter::settled(const MixtureFit& fit) {
  constexpr End kSettled = {1e-9, 1000};
  return run(fit, kSettled, {});
}

MixtureFit MixtureFitter::run(MixtureFit fit, End end, const std::vector<MixtureFit>& seen) {
  fit.found = false;
  Leaps leaps;
  for (int rounds = 0; rounds < end.mostRounds; ++rounds) {
    const MixtureFit before = fit;
    if (!round(fit)) return fit;
    for (const MixtureFit& other : seen) {
      if (alike(fit, other)) return fit;
    }
    if (isSettled(before, fit, end.same)) break;
    leaps.after(changeOf(before, fit), fit);
  }
  judge(fit);
  return fit;
}

// The expectation step and a step of each parameter; false where the matches do not fix h.
bool MixtureFitter::round(MixtureFit& fit) {
  MixtureSums sums;
  variant().weigh(inputOf(fit), squaredWeights_.data(), sums);
  fit.errors.spread = nextSpread(fit.errors, sums);
  // As if half a stray and half a good match had been seen before: the share is never 0.
  const double count = static_cast<double>(matches_.size());
  fit.errors.strays = std::clamp((count - sums.good + 0.5) / (count + 1.0), 0.0, kMostStrays);
  Homography next;
  if (!gaussNewtonStep(matches_, squaredWeights_, fit.h, next)) return false;
  fit.h = next;
  return true;
}

MixtureInput MixtureFitter::inputOf(const MixtureFit& fit) const {
  const ErrorModel& errors = fit.errors;
  const double variance = errors.spread * errors.spread;
  return {squaresInput(matches_, fit.h),
          matches_.squaredWeights().data(),
          votes_.data(),
          odds_.data(),
          errors.freedom,
          1.0 / (errors.freedom * variance),
          (1.0 - errors.strays) / (kTwoPi * variance),
          errors.strays / errors.area};
}

// The maximisation step of the spread, in fewer rounds.
//
// Two coordinates for each good match, less the eight parameters, are the errors that remain to
// tell the spread: D = 2 sum p - 8 (`remainingErrors`). With a prior the eight count as known
// errors of size e. The plain step is
//     s'^2 = (sum u r^2 + 8 e^2) / (D + 8).
// It creeps where tails are heavy. Since u (1 + q) = p (f + 2) / f for each match,
//     sum u + sum u r^2 / (f s^2) = (f + 2) / f sum p,
// and where s stays as it is, the step says sum u r^2 / s^2 = D + 8 (1 - e^2 / s^2). There, then,
//     sum u = sum p + (2 sum p - D - 8 (1 - e^2 / s^2)) / f.
// That over the sum of u as it is here is a factor that is 1 where the step ends; multiplied into
// sum u r^2 it gets there sooner. Without the eight parameters it makes the step
// sum u r^2 / (2 sum u): C. Liu, D. B. Rubin, Y. N. Wu, "Parameter expansion to accelerate EM",
// Biometrika 85 (1998).
double MixtureFitter::nextSpread(const ErrorModel& errors, const MixtureSums& sums) const {
  const double variance = errors.spread * errors.spread;
  const double remaining = remainingErrors(sums.good);
  // The low sigma, as a spread.
  const double low = lowSigma_ * errors.spread / errors.sigma();
  const double known = low > 0.0 ? kParameters : 0.0;
  const double squaresAtRest = std::max(remaining + known * (1.0 - low * low / variance), 0.0);
  const double factorsAtRest = sums.good + (2.0 * sums.good - squaresAtRest) / errors.freedom;
  const double square =
      (sums.squares * (factorsAtRest / sums.factors) + known * low * low) / (remaining + known);
  return std::max(std::sqrt(square), kSigmaFloor);
}

// The score: with the density of a t distribution in the plane, (1 + q)^(-(f + 2) / 2) over
// 2 pi s^2, a match's likelihood is (1 - strays) times that plus strays over the area.
void MixtureFitter::judge(MixtureFit& fit) const {
  const double score = ofParameters(fit.errors) - variant().logLikelihood(inputOf(fit));
  fit.found = std::isfinite(score) && isFinite(fit.h);
  if (fit.found) fit.score = score;
}

// The score of the errors that the parameters explain by themselves.
double MixtureFitter::ofParameters(const ErrorModel& errors) const {
  if (!(lowSigma_ > 0.0)) return -kParameters * std::log(std::min(errors.spread, kLikelySigma));
  const double part = lowSigma_ / errors.sigma();
  return kParameters * (0.5 * part * part + std::log(errors.sigma() / errors.spread));
}

}  // namespace cornerpin
