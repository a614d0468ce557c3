// SPDX-License-Identifier: BSD-3-Clause
#include "shot/robust/mixture_search.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <utility>

#include "shot/fit/homography_fit.h"
#include "shot/fit/residuals.h"
#include "shot/plane/median.h"
#include "shot/robust/chance.h"

namespace cornerpin {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Heavy tails fit any errors a little better than normal ones do: by this much, in units of the
// score, they have to be better to be believed.
constexpr double kForHeavyTails = 2.0;

// By this much, a fit that samples led to has to be better than the best that every seed comes to:
// of two that are as likely, which one is found must not decide.
constexpr double kForSamples = 2.0;

// Ten likely sigmas: a fit as coarse as this explains bad matches too, and so does not end the
// search for a close one of few: of more than a quarter.
constexpr double kCoarseSigma = 0.01;
constexpr std::size_t kOfCoarse = 4;

double scoreOf(const MixtureFit& fit) {
  return fit.score + (fit.errors.freedom < kNormalFreedom ? kForHeavyTails : 0.0);
}

// A surface that shrinks to this many spreads over half its width shows nothing but errors.
constexpr double kLeastWidth = 2.0;

// Matches between 3 sigmas and these may be good for another fit close by; normal errors put 1 %
// beyond 3.
constexpr double kGoodUntil = 3.0;
constexpr double kStrayFrom = 12.0;
constexpr double kMostBetween = 0.05;
constexpr int kHalves = 4;

constexpr std::size_t kKeptSamples = 8;
// Two samples that share more than this of the matches that either is good for.
constexpr double kNearlySame = 0.9;

// The quantiles of the errors that give a walk its first spread. Up from heavy tails: the closest
// quarter is good even where three quarters of the matches are bad. Down from normal errors: half.
constexpr double kCloseShare = 0.25;
constexpr double kHalf = 0.5;

// Samples meet their own four matches, not the rest: their spread starts this much wider.
constexpr double kSampledWidening = 2.0;

// The standard deviation of normal errors of which this share lies within the share's quantile.
double sigmaOf(const std::vector<double>& squares, double share) {
  const auto rank = static_cast<std::size_t>(share * static_cast<double>(squares.size()));
  const double square = ranked(squares, rank);
  if (!std::isfinite(square)) return 1.0;
  return std::max(std::sqrt(square / (-2.0 * std::log1p(-share))), kSigmaFloor);
}

// The least length that a small step of length 1 at p, in front of the horizon, becomes, or down to
// 0.7 of it.
double leastGrowth(const Homography& h, Point p) {
  const auto [Xx, Xy, Yx, Yy] = derivative(h, p);
  return std::fabs(Xx * Yy - Xy * Yx) / std::sqrt(Xx * Xx + Xy * Xy + Yx * Yx + Yy * Yy);
}

// Whether the transform flattens the surface around most of its good matches to hardly more than
// their errors. Matches that stand at one place or on one line, as stuck tracks do, are met so
// whatever they show.
bool isFlattened(const Matches& matches, const Homography& h, double sigma, double spread) {
  const std::vector<bool> good = goodMatches(matches, h, sigma);
  std::size_t flat = 0;
  for (std::size_t i = 0; i < good.size(); ++i) {
    if (good[i] && !(leastGrowth(h, matches.base()[i]) > kLeastWidth * spread)) ++flat;
  }
  return 2 * flat > countOf(good);
}

bool isFlattened(const Matches& matches, const MixtureFit& fit) {
  return isFlattened(matches, fit.h, fit.errors.sigma(), fit.errors.spread);
}

std::vector<std::size_t> indicesOf(const std::vector<bool>& flags) {
  std::vector<std::size_t> indices;
  for (std::size_t i = 0; i < flags.size(); ++i) {
    if (flags[i]) indices.push_back(i);
  }
  return indices;
}

bool nearlySame(const std::vector<bool>& a, const std::vector<bool>& b) {
  std::size_t both = 0;
  std::size_t either = 0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    both += a[i] && b[i];
    either += a[i] || b[i];
  }
  return static_cast<double>(both) > kNearlySame * static_cast<double>(either);
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
      fitter_(matches, prior),
      area_(strayArea(matches.present())),
      score_(matches, fitter_.votes(), likelySigma()) {}

// A start near the answer may still have all matches off by the motion of a frame.
void MixtureSearch::from(const Start& start) {
  std::vector<double> squares;
  squaredResiduals(matches_, start.h, squares);
  walk(start, {1, 2, 4, 16}, sigmaOf(squares, kCloseShare));
  walk(start, {16, 4, 2, 1}, sigmaOf(squares, kHalf));
}

void MixtureSearch::fromSamples(std::uint64_t seed, std::size_t least) {
  const Best before = best_;
  const std::size_t seenBefore = seen_.size();
  QuadSamples samples(matches_, prior_.confidence, seed);
  drawUntilSure(samples, least);
  if (isAmbiguous()) refineAll();
  keepUnlessBetter(before);
  // What comes now must not depend on where samples led to.
  seen_.resize(seenBefore);
  finish();
}

void MixtureSearch::finish() {
  settle();
  fromHalves();
  settle();
}

// The best fit before the samples is the same for every seed.
void MixtureSearch::keepUnlessBetter(const Best& before) {
  if (!before.fit.found || best_.isNoAccident != before.isNoAccident) return;
  if (best_.score < before.score - kForSamples) return;
  best_ = before;
}

// Takes the best on to its optimum, which does not depend on the start.
void MixtureSearch::settle() {
  if (!found()) return;
  const MixtureFit there = fitter_.settled(best_.fit);
  if (!there.found) return;
  best_.fit = there;
  best_.score = scoreOf(there);
}

// Whether more matches lie between the good ones and the strays than normal errors explain.
bool MixtureSearch::isAmbiguous() const {
  if (!found()) return false;
  if (best_.fit.errors.freedom < kNormalFreedom) return true;
  const double variance = best_.fit.errors.sigma() * best_.fit.errors.sigma();
  std::vector<double> squares;
  squaredResiduals(matches_, best_.fit.h, squares);
  std::size_t near = 0;
  std::size_t good = 0;
  for (double square : squares) {
    near += square < kStrayFrom * kStrayFrom * variance;
    good += square <= kGoodUntil * kGoodUntil * variance;
  }
  return static_cast<double>(near - good) > kMostBetween * static_cast<double>(near);
}

// From fits to halves of the good matches, which lie on all sides of the best fit: so the best is
// the best around. The halves are the same for every seed.
void MixtureSearch::fromHalves() {
  if (!isAmbiguous()) return;
  std::mt19937_64 random(1);
  for (int half = 0; half < kHalves; ++half) {
    const std::vector<bool> good = goodMatches(matches_, best_.fit.h, best_.fit.errors.sigma());
    std::vector<double> squaredWeights = matches_.squaredWeights();
    for (std::size_t i = 0; i < good.size(); ++i) {
      const bool chosen = random() >> 63 != 0;
      if (!chosen || !good[i]) squaredWeights[i] = 0.0;
    }
    Homography step;
    Homography h;
    if (gaussNewtonStep(matches_, squaredWeights, best_.fit.h, step) &&
        gaussNewtonStep(matches_, squaredWeights, step, h)) {
      walk({best_.stage, h}, {1, 2, 4, 16}, best_.fit.errors.sigma() / 2.0);
    }
  }
}

// In stages, each as long as all before: the best samples of each tell how many are needed.
void MixtureSearch::drawUntilSure(QuadSamples& samples, std::size_t least) {
  const std::size_t most = samples.needed(least);
  std::size_t needed = std::min(most, QuadSamples::kFewest);
  while (samples.drawnFromAll() < needed) {
    const std::size_t until =
        std::min(needed, std::max(2 * samples.drawnFromAll(), QuadSamples::kFewest));
    if (2.0 * static_cast<double>(until) >= samples.quadruples()) {
      tryAll(samples);
      return;
    }
    Homography h;
    while (samples.drawnFromAll() < until) {
      if (samples.draw(h)) rank(h);
    }
    refine();
    needed = std::min(neededOf(samples), most);
  }
  budgetSpent_ = needed == QuadSamples::kMost;
}

void MixtureSearch::tryAll(const QuadSamples& samples) {
  samples_.clear();
  walked_.clear();
  forAllFours(matches_.size(), [&](const std::array<std::size_t, 4>& four) {
    Homography h;
    if (samples.through(four, h)) rank(h);
  });
  refine();
}

// Puts the transform among the best samples where it belongs there. One that would be the best but
// flattens the surface is passed over.
void MixtureSearch::rank(const Homography& h) {
  double worst = kInfinity;
  if (samples_.size() == kKeptSamples) worst = samples_.back().score;
  const Sample sample = {score_.of(h, worst), h, {}};
  if (!(sample.score < worst)) return;
  const auto place =
      std::upper_bound(samples_.begin(), samples_.end(), sample.score,
                       [](double score, const Sample& other) { return score < other.score; });
  const double spread = kSampledWidening * likelySigma();
  if (place == samples_.begin() && isFlattened(matches_, h, spread, spread)) return;
  samples_.insert(place, sample);
  if (samples_.size() > kKeptSamples) samples_.pop_back();
}

// Goes on from each of the best samples but those that are good for nearly the same matches as one
// before: they lead to the same.
void MixtureSearch::refine() {
  const double spread = kSampledWidening * likelySigma();
  for (Sample& sample : samples_) {
    if (!sample.good.empty()) continue;
    sample.good = goodMatches(matches_, sample.h, spread);
    const bool known =
        std::any_of(walked_.begin(), walked_.end(),
                    [&](const std::vector<bool>& other) { return nearlySame(other, sample.good); });
    if (known) continue;
    walked_.push_back(sample.good);
    refine(sample);
  }
}

// Where many fits are close together, samples that are good for the same matches may lead to
// different ones.
void MixtureSearch::refineAll() {
  for (const Sample& sample : samples_) refine(sample);
}

void MixtureSearch::refine(const Sample& sample) {
  walk({Stage::Sampled, sample.h}, {1, 2, 4, 16}, kSampledWidening * likelySigma());
}

std::size_t MixtureSearch::neededOf(const QuadSamples& samples) const {
  if (!found()) return QuadSamples::kMost;
  const double sigma = best_.fit.errors.sigma();
  std::vector<std::size_t> good = indicesOf(goodMatches(matches_, best_.fit.h, sigma));
  if (sigma > kCoarseSigma) good.resize(std::min(good.size(), matches_.size() / kOfCoarse));
  return samples.needed(good);
}

// Through the degrees of freedom, each fit from the one before; ends where a walk has been.
void MixtureSearch::walk(const Start& start, std::initializer_list<int> freedoms, double spread) {
  MixtureFit fit;
  fit.h = start.h;
  fit.errors.spread = spread;
  fit.errors.area = area_;
  for (int freedom : freedoms) {
    fit.errors.freedom = freedom;
    fit = fitter_.fit(fit.h, fit.errors, seen_);
    if (!fit.found) return;
    seen_.push_back(fit);
    consider(fit, start.stage);
  }
}

void MixtureSearch::consider(const MixtureFit& fit, Stage stage) {
  const double score = scoreOf(fit);
  const bool isWorse = score >= best_.score;
  if (isWorse && best_.isNoAccident) return;
  const bool isNoAccident = chanceOfAgreement(fit.h) <= kMostByChance;
  if (isNoAccident == best_.isNoAccident ? isWorse : best_.isNoAccident) return;
  if (isFlattened(matches_, fit)) return;
  best_ = {fit, score, isNoAccident, stage};
}

double MixtureSearch::chanceOfAgreement(const Homography& h) const {
  std::vector<double> squares;
  squaredResiduals(matches_, h, squares);
  return chanceOf(std::move(squares), area_);
}

double MixtureSearch::likelySigma() const {
  return prior_.recentSigma > 0.0 ? std::min(prior_.recentSigma, kLikelySigma) : kLikelySigma;
}

std::size_t MixtureSearch::goodOf(const MixtureFit& fit) const {
  return countOf(goodMatches(matches_, fit.h, fit.errors.sigma()));
}

}  // namespace cornerpin
