// SPDX-License-Identifier: BSD-3-Clause
#include "shot/robust/mixture_search.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "shot/fit/residuals.h"
#include "shot/plane/median.h"
#include "shot/robust/quad_samples.h"

namespace cornerpin {

namespace {

// Heavy tails fit any errors a little better than normal ones do: by this much, in units of the
// score, they have to be better to be believed.
constexpr double kForHeavyTails = 2.0;

// Ten likely sigmas: a fit as coarse as this explains bad matches too, and so does not tell how
// many samples are needed.
constexpr double kCoarseSigma = 0.01;

// The square of the distance from which on all errors of a sample are equally bad: as wide as the
// surface.
constexpr double kFarthest = 4.0;

// A surface that shrinks to this many spreads over half its width shows nothing but errors.
constexpr double kLeastWidth = 2.0;

// Two fits that differ by less than this, in spreads, are one: the search has been there.
constexpr double kSameFit = 0.05;

constexpr std::ptrdiff_t kRefinedSamples = 4;

// The quantiles of the errors that give a walk its first spread. Up from heavy tails: the closest
// quarter is good even where three quarters of the matches are bad. Down from normal errors: half.
constexpr double kCloseShare = 0.25;
constexpr double kHalf = 0.5;

// Samples meet their own four matches, not the rest: their spread starts this much wider.
constexpr double kSampledWidening = 2.0;
constexpr double kFirstStrays = 0.1;

// Of a positive number, within 0.09: its exponent, and its mantissa as if the logarithm were
// straight in between.
double roughLog2(double value) {
  std::int64_t bits = 0;
  std::memcpy(&bits, &value, sizeof bits);
  return static_cast<double>(bits) * 0x1p-52;
}

// The standard deviation of normal errors of which this share lies within the share's quantile.
double sigmaOf(const std::vector<double>& squares, double share) {
  const auto rank = static_cast<std::size_t>(share * static_cast<double>(squares.size()));
  const double square = ranked(squares, rank);
  if (!std::isfinite(square)) return 1.0;
  return std::max(std::sqrt(square / (-2.0 * std::log1p(-share))), kSigmaFloor);
}

bool alike(const MixtureFit& a, const MixtureFit& b) {
  const double most = kSameFit * b.errors.spread;
  for (std::size_t i = 0; i < 9; ++i) {
    if (!(std::fabs(a.h[i / 3][i % 3] - b.h[i / 3][i % 3]) <= most)) return false;
  }
  return a.errors.freedom == b.errors.freedom &&
         std::fabs(a.errors.spread - b.errors.spread) <= most;
}

// The least length that a small step of length 1 at p, in front of the horizon, becomes, or down to
// 0.7 of it.
double leastGrowth(const Homography& h, Point p) {
  const auto [Xx, Xy, Yx, Yy] = derivative(h, p);
  return std::fabs(Xx * Yy - Xy * Yx) / std::sqrt(Xx * Xx + Xy * Xy + Yx * Yx + Yy * Yy);
}

// Whether the fit flattens the surface around most of its good matches to hardly more than their
// errors. Matches that stand at one place or on one line, as stuck tracks do, are met so whatever
// they show.
bool isFlattened(const Matches& matches, const MixtureFit& fit) {
  const double least = kLeastWidth * fit.errors.spread;
  const std::vector<bool> good = goodMatches(matches, fit.h, fit.errors.sigma());
  std::size_t flat = 0;
  for (std::size_t i = 0; i < good.size(); ++i) {
    if (good[i] && !(leastGrowth(fit.h, matches.base()[i]) > least)) ++flat;
  }
  return 2 * flat > countOf(good);
}

}  // namespace

std::vector<bool> goodMatches(const Matches& matches, const Homography& h, double sigma) {
  const double bound = kGoodWithin * kGoodWithin * sigma * sigma;
  std::vector<double> squares;
  squaredResiduals(matches, h, squares);
  std::vector<bool> good(squares.size());
  for (std::size_t i = 0; i < squares.size(); ++i) good[i] = squares[i] <= bound;
  return good;
}

std::size_t countOf(const std::vector<bool>& flags) {
  return static_cast<std::size_t>(std::count(flags.begin(), flags.end(), true));
}

MixtureSearch::MixtureSearch(const Matches& matches, const Prior& prior)
    : matches_(matches),
      prior_(prior),
      votes_(votesOf(matches)),
      area_(strayArea(matches.present())) {}

// A start near the answer may still have all matches off by the motion of a frame.
void MixtureSearch::from(const Start& start) {
  std::vector<double> squares;
  squaredResiduals(matches_, start.h, squares);
  walk(start, {1, 2, 4, 16}, sigmaOf(squares, kCloseShare));
  walk(start, {16, 4, 2, 1}, sigmaOf(squares, kHalf));
}

void MixtureSearch::fromSamples(std::uint64_t seed) {
  QuadSamples samples(matches_, prior_.confidence, seed);
  std::vector<Sample> best;
  std::vector<double> squares;
  Sample sample;
  std::size_t needed = QuadSamples::kMost;
  for (std::size_t drawn = 0; drawn < needed; ++drawn) {
    if (!samples.draw(sample.h)) continue;
    squaredResiduals(matches_, sample.h, squares);
    sample.score = scoreOf(squares);
    rank(sample, best, needed);
  }
  for (const Sample& one : best) {
    walk({Stage::Sampled, one.h}, {1, 2, 4, 16}, kSampledWidening * likelySigma());
  }
}

// Puts the sample among the best where it belongs there. A new best one says how many samples are
// needed; one that flattens the surface is passed over.
void MixtureSearch::rank(const Sample& sample, std::vector<Sample>& best,
                         std::size_t& needed) const {
  const auto place =
      std::upper_bound(best.begin(), best.end(), sample.score,
                       [](double score, const Sample& other) { return score < other.score; });
  if (place - best.begin() == kRefinedSamples) return;
  if (place == best.begin()) {
    const ErrorModel errors = {1, kSampledWidening * likelySigma(), kFirstStrays, area_};
    const MixtureFit fit = fitMixture(matches_, sample.h, errors, prior_);
    if (!fit.found || isFlattened(matches_, fit)) return;
    // A coarse fit of many does not end the search for a close one of few.
    if (fit.errors.sigma() <= kCoarseSigma) {
      needed = QuadSamples::needed(goodOf(fit), matches_.size());
    }
  }
  best.insert(place, sample);
  if (best.end() - best.begin() > kRefinedSamples) best.pop_back();
}

// Through the degrees of freedom, each fit from the one before; ends where a walk has been.
void MixtureSearch::walk(const Start& start, std::initializer_list<int> freedoms, double spread) {
  MixtureFit fit;
  fit.h = start.h;
  fit.errors.spread = spread;
  fit.errors.area = area_;
  for (int freedom : freedoms) {
    fit.errors.freedom = freedom;
    fit = fitMixture(matches_, fit.h, fit.errors, prior_);
    if (!fit.found) return;
    for (const MixtureFit& other : seen_) {
      if (alike(fit, other)) return;
    }
    seen_.push_back(fit);
    consider(fit, start.stage);
  }
}

void MixtureSearch::consider(const MixtureFit& fit, Stage stage) {
  double score = fit.score;
  if (fit.errors.freedom < kNormalFreedom) score += kForHeavyTails;
  if (score >= bestScore_ || isFlattened(matches_, fit)) return;
  bestScore_ = score;
  best_ = fit;
  stage_ = stage;
}

// The sum of the logarithms of the errors: follows the many matches that are close rather than the
// few that are not.
double MixtureSearch::scoreOf(const std::vector<double>& squares) const {
  const double least = likelySigma() * likelySigma();
  double sum = 0.0;
  for (std::size_t i = 0; i < squares.size(); ++i) {
    sum += votes_[i] * roughLog2(std::min(squares[i], kFarthest) + least);
  }
  return sum;
}

double MixtureSearch::likelySigma() const {
  return prior_.recentSigma > 0.0 ? std::min(prior_.recentSigma, kLikelySigma) : kLikelySigma;
}

std::size_t MixtureSearch::goodOf(const MixtureFit& fit) const {
  return countOf(goodMatches(matches_, fit.h, fit.errors.sigma()));
}

}  // namespace cornerpin
