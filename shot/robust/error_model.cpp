// SPDX-License-Identifier: BSD-3-Clause
#include "shot/robust/error_model.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "shot/plane/extent.h"
#include "shot/plane/median.h"

namespace cornerpin {

namespace {

constexpr double kTwoLog2 = 1.3862943611198906;  // the squared median error over the variance
constexpr double kLeastArea = 1e-6;              // places on a line still have strays around them
constexpr std::size_t kFewestFullVotes = 8;
constexpr double kLeastRemaining = 0.25;

}  // namespace

// The median square of the t distribution's errors is freedom * (2^(2 / freedom) - 1) times
// the squared spread; that of normal errors is 2 log 2 times their variance.
double ErrorModel::sigma() const {
  static const auto perSpread = [] {
    std::array<double, kNormalFreedom + 1> factors{};
    for (int f = 1; f <= kNormalFreedom; ++f) {
      factors[static_cast<std::size_t>(f)] = std::sqrt(f * (std::exp2(2.0 / f) - 1.0) / kTwoLog2);
    }
    return factors;
  }();
  return spread * perSpread[static_cast<std::size_t>(freedom)];
}

double strayArea(const Points& present) {
  const auto [low, high] = boxAround(withoutFarOff(present));
  return std::max((high.x - low.x) * (high.y - low.y), kLeastArea);
}

double remainingErrors(double goodMatches) {
  return std::max(2.0 * goodMatches - kParameters, kLeastRemaining * 2.0 * goodMatches);
}

std::vector<double> votesOf(const Matches& matches) {
  const std::size_t count = matches.size();
  std::vector<double> votes(matches.squaredWeights().begin(),
                            matches.squaredWeights().begin() + static_cast<std::ptrdiff_t>(count));
  const std::size_t full = std::min(std::max(count / 4, kFewestFullVotes), count);
  const double most = ranked(votes, count - full);
  double sum = 0.0;
  for (double& vote : votes) sum += vote = std::min(vote, most);
  const double perVote = static_cast<double>(count) / sum;
  for (double& vote : votes) vote *= perVote;
  return votes;
}

}  // namespace cornerpin
