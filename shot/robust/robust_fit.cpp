// SPDX-License-Identifier: BSD-3-Clause
#include "shot/robust/robust_fit.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

#include "shot/fit/homography_fit.h"
#include "shot/fit/residuals.h"
#include "shot/plane/extent.h"
#include "shot/robust/chance.h"
#include "shot/robust/continued_mixture.h"
#include "shot/robust/rival.h"
#include "shot/robust/width_choice.h"

namespace cornerpin {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Of a frame without a sign of a bad track.
constexpr double kChance = 1e-3;    // that one of its normal errors lies as far as none may
constexpr double kMostAbove = 2.0;  // that sigma may be above the recent one, in standard errors

// Of a frame that is searched without samples: its sigma over the recent one.
constexpr double kMostGrown = 1.5;

// Where the loss bends, in spreads of the mixture. At 4.7, 2.4 and 1.3 the three losses keep
// 95 % of what plain squares get out of normal errors. These are wider: bad matches are far off
// it, and the good ones are to count in full.
double bendOf(Loss loss) {
  if (loss == Loss::Tukey) return 7.0;
  return loss == Loss::Cauchy ? 3.0 : 1.7;
}

// A match on or behind the horizon is a bad one, for which only Tukey's loss has a finite cost.
Matches inFront(const Matches& matches, const Homography& h) {
  std::vector<bool> front(matches.size());
  for (std::size_t i = 0; i < front.size(); ++i) {
    front[i] = denominator(h, matches.base()[i]) > kHorizon;
  }
  return matches.subset(front);
}

// The fit with the loss from the best of the search. Its width is what the mixture's spread says,
// unless heavy tails leave open how wide the errors are and no frame before tells which tracks keep
// to the surface.
WidthChoice lossFit(const Matches& matches, const MixtureFit& best, const Prior& prior, Loss loss) {
  const Matches front = inFront(matches, best.h);
  const double width = bendOf(loss) * best.errors.spread;
  const bool told = prior.recentSigma > 0.0 || best.errors.freedom == kNormalFreedom;
  if (loss == Loss::Tukey && !told) return chooseWidth(front, best.h, width);
  return {fitHomography(front, best.h, loss, width), width};
}

RobustFit finished(const Matches& matches, const MixtureFit& best, const Prior& prior, Loss loss) {
  RobustFit fit;
  fit.loss = loss;
  if (!best.found) return fit;
  const WidthChoice end = lossFit(matches, best, prior, loss);
  fit.sigma = best.errors.sigma();
  fit.freedom = best.errors.freedom;
  fit.width = end.width;
  fit.found = std::isfinite(end.fit.cost) && isFinite(end.fit.h);
  fit.h = end.fit.h;
  fit.good = goodMatches(matches, fit.h, fit.sigma);
  fit.goodCount = countOf(fit.good);
  return fit;
}

double chanceOfAgreement(const Matches& matches, const Homography& h, double area) {
  std::vector<double> squares;
  squaredResiduals(matches, h, squares);
  return chanceOf(std::move(squares), area);
}

// Whether there is nothing else to find: the best keeps the known matches, and the others do not
// lead elsewhere.
bool isSettled(const MixtureSearch& search, const Matches& matches, const Prior& prior,
               std::uint64_t seed) {
  return search.found() &&
         keepsKnown(matches, search.best(), prior, kMostGrown * prior.recentSigma) &&
         !hasRivalOrBetter(matches, search.best(), prior, seed);
}

RobustFit searchedFit(const Matches& matches, const std::vector<Start>& starts,
                      const AnotherStart& another, const Prior& prior,
                      const RobustOptions& options) {
  MixtureSearch search(matches, prior);
  for (const Start& start : starts) search.from(start);
  bool settled = isSettled(search, matches, prior, options.seed);
  if (!settled && another) {
    if (const std::optional<Start> start = another()) search.from(*start);
    settled = isSettled(search, matches, prior, options.seed);
  }
  Origin origin;
  origin.grounds = Grounds::Searched;
  if (search.found()) {
    origin.firstStage = search.stage();
    origin.firstGood = search.good();
  }
  if (settled) {
    search.finish();
  } else {
    search.fromSamples(options.seed);
  }
  origin.stage = search.stage();
  origin.budgetSpent = search.budgetSpent();
  RobustFit fit = finished(matches, search.best(), prior, options.loss);
  if (fit.found) {
    origin.chance = chanceOfAgreement(matches, fit.h, search.best().errors.area);
    origin.rivalled = !settled && hasRival(matches, search.best(), prior, options.seed);
  }
  fit.origin = origin;
  return fit;
}

// The best of the plain fits from the starts. Its cost gives the sigma of normal errors.
RobustFit plainFit(const Matches& matches, const std::vector<Start>& starts, Grounds grounds) {
  RobustFit best;
  best.origin.grounds = grounds;
  double cost = kInfinity;
  for (const Start& start : starts) {
    const HomographyFit fit = fitHomography(matches, start.h);
    if (!(fit.cost < cost) || !isFinite(fit.h)) continue;
    cost = fit.cost;
    best.h = fit.h;
    best.origin.stage = start.stage;
    best.found = true;
  }
  best.good.assign(matches.size(), true);
  best.goodCount = matches.size();
  const double count = static_cast<double>(matches.size());
  double weights = 0.0;
  for (double squaredWeight : matches.squaredWeights()) weights += squaredWeight;
  if (best.found) {
    best.sigma = std::max(std::sqrt(cost / weights * count / remainingErrors(count)), kSigmaFloor);
  }
  return best;
}

// Whether a plain fit, whose largest squared error is known, shows no sign of a bad match.
bool isClean(const RobustFit& fit, double count, double largest, double recentSigma) {
  const double farthest = -2.0 * std::log(kChance / count) * fit.sigma * fit.sigma;
  return fit.sigma <= (1.0 + kMostAbove / std::sqrt(2.0 * count - kParameters)) * recentSigma &&
         largest <= farthest;
}

// Plain squares where they show no sign of a bad match; not found otherwise.
RobustFit cleanFit(const Matches& matches, const Start& start, double recentSigma) {
  RobustFit fit = plainFit(matches, {start}, Grounds::NoBadTrack);
  if (!fit.found) return fit;
  std::vector<double> squares;
  squaredResiduals(matches, fit.h, squares);
  const double largest = *std::max_element(squares.begin(), squares.end());
  fit.found = isClean(fit, static_cast<double>(matches.size()), largest, recentSigma);
  if (fit.found) {
    const auto [low, high] = boxAround(matches.present());
    const double area = (high.x - low.x) * (high.y - low.y);
    fit.origin.chance = chanceOf(matches.size(), matches.size(), largest, area);
  }
  return fit;
}

// As in the frames before; not found where it is not.
RobustFit continuedFit(const Matches& matches, const Start& start, const Prior& prior, Loss loss) {
  const MixtureFit mixture = continuedMixture(matches, start.h, prior);
  RobustFit fit = finished(matches, mixture, prior, loss);
  if (!fit.found) return fit;
  fit.origin.stage = start.stage;
  fit.origin.grounds = Grounds::Continued;
  fit.origin.chance = chanceOfAgreement(matches, fit.h, mixture.errors.area);
  return fit;
}

}  // namespace

RobustFit fitRobustly(const Matches& matches, const std::vector<Start>& starts, const Prior& prior,
                      const RobustOptions& options, const AnotherStart& another) {
  if (matches.size() < kFewestForRobust) return plainFit(matches, starts, Grounds::TooFew);
  if (prior.recentSigma > 0.0 && !starts.empty()) {
    RobustFit clean = cleanFit(matches, starts.front(), prior.recentSigma);
    if (clean.found) return clean;
    RobustFit continued = continuedFit(matches, starts.front(), prior, options.loss);
    if (continued.found) return continued;
  }
  return searchedFit(matches, starts, another, prior, options);
}

}  // namespace cornerpin
