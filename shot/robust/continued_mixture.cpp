// SPDX-License-Identifier: BSD-3-Clause
#include "shot/robust/continued_mixture.h"

#include <cstddef>
#include <vector>

#include "shot/fit/homography_fit.h"
#include "shot/robust/mixture_search.h"
#include "shot/robust/rival.h"

namespace cornerpin {

namespace {

constexpr double kKnownOdds = 8.0;
constexpr std::size_t kFewest = 24;
constexpr double kLeastKept = 0.9;

// Plain squares of matches that nearly all agree are there after two steps from a neighbour.
constexpr int kSteps = 2;
// Those steps may leave errors so much larger than they are at the end.
constexpr double kWidening = 2.0;

std::vector<bool> knownMatches(const Prior& prior) {
  std::vector<bool> known(prior.odds.size());
  for (std::size_t i = 0; i < known.size(); ++i) known[i] = prior.odds[i] >= kKnownOdds;
  return known;
}

bool fitPlainly(const Matches& matches, const std::vector<bool>& chosen, Homography& h) {
  std::vector<double> squaredWeights = matches.squaredWeights();
  for (std::size_t i = 0; i < chosen.size(); ++i) {
    if (!chosen[i]) squaredWeights[i] = 0.0;
  }
  for (int step = 0; step < kSteps; ++step) {
    Homography next;
    if (!gaussNewtonStep(matches, squaredWeights, h, next)) return false;
    h = next;
  }
  return true;
}

}  // namespace

bool keepsKnown(const Matches& matches, const MixtureFit& fit, const Prior& prior,
                double mostSigma) {
  const double sigma = fit.errors.sigma();
  const std::vector<bool> known = knownMatches(prior);
  const std::size_t knownCount = countOf(known);
  if (knownCount < kFewest || !(sigma <= mostSigma)) return false;
  const std::vector<bool> good = goodMatches(matches, fit.h, sigma);
  std::size_t kept = 0;
  for (std::size_t i = 0; i < good.size(); ++i) kept += known[i] && good[i];
  const std::size_t goodCount = countOf(good);
  return goodCount >= kFewest &&
         static_cast<double>(kept) >= kLeastKept * static_cast<double>(knownCount);
}

MixtureFit continuedMixture(const Matches& matches, const Homography& start, const Prior& prior) {
  const std::vector<bool> known = knownMatches(prior);
  Homography h = start;
  if (prior.freedom == 0 || countOf(known) < kFewest || !fitPlainly(matches, known, h)) return {};
  ErrorModel errors;
  errors.freedom = prior.freedom;
  errors.spread = kWidening * prior.recentSigma;
  errors.area = strayArea(matches.present());
  MixtureFit fit = MixtureFitter(matches, prior).fit(h, errors);
  fit.found = fit.found && keepsKnown(matches, fit, prior, prior.recentSigma);
  if (!fit.found) return fit;
  const std::size_t good = countOf(goodMatches(matches, fit.h, fit.errors.sigma()));
  fit.found = isTooFewForRival(matches.size() - good, good);
  return fit;
}

}  // namespace cornerpin
