// SPDX-License-Identifier: BSD-3-Clause
#include "shot/robust/chance.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "shot/robust/error_model.h"

namespace cornerpin {

namespace {

constexpr double kPi = 3.141592653589793;
constexpr std::size_t kSample = 4;
constexpr double kMany = 1e250;   // far from what a number can hold
constexpr double kMargin = 1e-6;  // far above what is lost in rounding

// Of k out of n, the common logarithm.
double logChoices(std::size_t n, std::size_t k) {
  double sum = 0.0;
  for (std::size_t i = 1; i <= std::min(k, n - k); ++i) {
    sum += std::log10(static_cast<double>(n + 1 - i) / static_cast<double>(i));
  }
  return sum;
}

// That a stray lies within the distance of a place.
double chanceOfOne(double square, double area) {
  const double within = std::max(square, kSigmaFloor * kSigmaFloor);
  return std::min(kPi * within / area, 1.0);
}

// The common logarithm, or up to 0.026 less: the exponent, and the mantissa as if the logarithm
// were straight in between.
double leastLog(double positive) {
  constexpr double kLog2 = 0.30102999566398120;
  std::int64_t bits;
  std::memcpy(&bits, &positive, sizeof bits);
  return kLog2 * (static_cast<double>(bits) * 0x1p-52 - 1023.0);
}

// Some of the matches.
struct Group {
  double transforms;  // that may have them all, over 10^exponent
  double exponent;
  double one;    // `chanceOfOne` of the farthest
  double power;  // matches beyond the sample

  template <class Log>
  double chance(Log log) const {
    return exponent + log(transforms) + power * log(one);
  }
};

// The closest 5, 6 ... of the matches. With one more, C(n, k) C(k, 4) grows by
// (n + 1 - k) / (k - 4).
std::vector<Group> groupsOf(const std::vector<double>& sortedSquares, double area) {
  const std::size_t count = sortedSquares.size();
  const auto n = static_cast<double>(count);
  double transforms = (n - kSample) * (n * (n - 1.0) * (n - 2.0) * (n - 3.0) / 24.0);
  double exponent = 0.0;
  std::vector<Group> groups;
  groups.reserve(count - kSample);
  for (std::size_t k = kSample + 1; k <= count; ++k) {
    const auto power = static_cast<double>(k - kSample);
    transforms *= (n + 1.0 - static_cast<double>(k)) / power;
    if (transforms > kMany || transforms < 1.0 / kMany) {
      exponent += std::log10(transforms);
      transforms = 1.0;
    }
    groups.push_back({transforms, exponent, chanceOfOne(sortedSquares[k - 1], area), power});
  }
  return groups;
}

double toTheHundredth(double value) { return std::round(value * 100.0) / 100.0; }

}  // namespace

double chanceOf(std::size_t count, std::size_t agreeing, double square, double area) {
  return toTheHundredth(std::log10(static_cast<double>(count - kSample)) +
                        logChoices(count, agreeing) + logChoices(agreeing, kSample) +
                        static_cast<double>(agreeing - kSample) *
                            std::log10(chanceOfOne(square, area)));
}

// Of the logarithms, only those of the groups that may come to less than the best.
double chanceOf(std::vector<double> squares, double area) {
  std::sort(squares.begin(), squares.end());
  const std::vector<Group> groups = groupsOf(squares, area);
  const auto exact = [](const Group& group) {
    return group.chance([](double x) { return std::log10(x); });
  };
  const auto first = std::min_element(
      groups.begin(), groups.end(),
      [](const Group& a, const Group& b) { return a.chance(leastLog) < b.chance(leastLog); });
  double best = exact(*first);
  for (const Group& group : groups) {
    if (group.chance(leastLog) < best + kMargin) best = std::min(best, exact(group));
  }
  return toTheHundredth(best);
}

}  // namespace cornerpin
