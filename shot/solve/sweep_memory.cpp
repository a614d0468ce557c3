// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/sweep_memory.h"

#include <algorithm>

#include "shot/plane/median.h"

namespace cornerpin {

namespace {

constexpr std::size_t kRecentFrames = 5;
constexpr double kLowShare = 0.1;  // of the sigmas that are lower yet

}  // namespace

Prior SweepMemory::priorFor(const Matches& matches) const {
  Prior prior;
  prior.recentSigma = recentSigma();
  prior.lowSigma = lowSigma();
  prior.freedom = freedom_;
  prior.odds.resize(matches.size());
  prior.confidence.resize(matches.size());
  for (std::size_t i = 0; i < matches.size(); ++i) {
    const Record& record = records_[static_cast<std::size_t>(matches.tracks()[i])];
    prior.odds[i] = (1.0 + record.good) / (1.0 + record.seen - record.good);
    prior.confidence[i] = matches.weights()[i] * ((1.0 + record.good) / (2.0 + record.seen));
  }
  return prior;
}

void SweepMemory::rememberErrors(double sigma, int freedom) {
  freedom_ = freedom;
  sigmas_.push_back(sigma);
  sortedSigmas_.insert(std::upper_bound(sortedSigmas_.begin(), sortedSigmas_.end(), sigma), sigma);
}

double SweepMemory::sigmaOf(const RobustFit& fit) const {
  if (fit.origin.grounds != Grounds::TooFew) return fit.sigma;
  return std::max(fit.sigma, sigmas_.empty() ? kLikelySigma : recentSigma());
}

void SweepMemory::rememberGood(const Matches& matches, const std::vector<bool>& good) {
  for (std::size_t i = 0; i < matches.size(); ++i) {
    Record& record = records_[static_cast<std::size_t>(matches.tracks()[i])];
    ++record.seen;
    if (good[i]) ++record.good;
  }
}

double SweepMemory::recentSigma() const {
  if (sigmas_.empty()) return 0.0;
  const std::size_t count = std::min(sigmas_.size(), kRecentFrames);
  return lowerMedian({sigmas_.end() - static_cast<std::ptrdiff_t>(count), sigmas_.end()});
}

double SweepMemory::lowSigma() const {
  if (sortedSigmas_.empty()) return 0.0;
  const auto last = static_cast<double>(sortedSigmas_.size() - 1);
  return sortedSigmas_[static_cast<std::size_t>(kLowShare * last)];
}

}  // namespace cornerpin
