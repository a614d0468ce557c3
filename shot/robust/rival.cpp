// SPDX-License-Identifier: BSD-3-Clause
#include "shot/robust/rival.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "shot/robust/mixture_search.h"

namespace cornerpin {

namespace {

// A track more makes a transform thousands of times as likely: of so many fewer it is no rival.
constexpr std::size_t kFewer = 2;
constexpr std::size_t kFewestMatches = 6;         // of fewer, some transform meets nearly all
constexpr double kMostLess = 13.815510557964274;  // log 1e6
constexpr double kBetter = 2.0;                   // as samples have to be

std::vector<double> chosenOf(const std::vector<double>& values, const std::vector<bool>& chosen) {
  std::vector<double> result;
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (chosen[i]) result.push_back(values[i]);
  }
  return result;
}

// What a search among the others leads to; not found where that is not about as likely.
MixtureFit otherOf(const Matches& matches, const MixtureFit& best, const Prior& prior,
                   std::uint64_t seed) {
  const std::vector<bool> good = goodMatches(matches, best.h, best.errors.sigma());
  std::vector<bool> bad = good;
  bad.flip();
  const std::size_t least = countOf(good) - std::min(countOf(good), kFewer);
  if (isTooFewForRival(countOf(bad), countOf(good))) return {};

  const Matches others = matches.subset(bad);
  const Prior ofOthers = {prior.recentSigma, prior.lowSigma, prior.freedom,
                          chosenOf(prior.odds, bad), chosenOf(prior.confidence, bad)};
  MixtureSearch amongOthers(others, ofOthers);
  amongOthers.fromSamples(seed, least);
  if (!amongOthers.found()) return {};
  MixtureSearch amongAll(matches, prior);
  amongAll.from({Stage::Sampled, amongOthers.best().h});
  if (!amongAll.found()) return {};
  MixtureFit other = amongAll.best();
  other.found = other.score < best.score + kMostLess;
  return other;
}

// Whether fewer than half of either's good matches are good for both.
bool isApart(const Matches& matches, const MixtureFit& a, const MixtureFit& b) {
  const std::vector<bool> ofA = goodMatches(matches, a.h, a.errors.sigma());
  const std::vector<bool> ofB = goodMatches(matches, b.h, b.errors.sigma());
  std::size_t shared = 0;
  for (std::size_t i = 0; i < ofA.size(); ++i) shared += ofA[i] && ofB[i];
  return 2 * shared < std::min(countOf(ofA), countOf(ofB));
}

}  // namespace

bool isTooFewForRival(std::size_t bad, std::size_t good) {
  return bad < std::max(good - std::min(good, kFewer), kFewestMatches);
}

bool hasRival(const Matches& matches, const MixtureFit& best, const Prior& prior,
              std::uint64_t seed) {
  const MixtureFit other = otherOf(matches, best, prior, seed);
  return other.found && isApart(matches, other, best);
}

bool hasRivalOrBetter(const Matches& matches, const MixtureFit& best, const Prior& prior,
                      std::uint64_t seed) {
  const MixtureFit other = otherOf(matches, best, prior, seed);
  return other.found && (other.score < best.score - kBetter || isApart(matches, other, best));
}

}  // namespace cornerpin
