// SPDX-License-Identifier: BSD-3-Clause
#include "shot/compare/axis_change.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>
#include <utility>

#include "shot/plane/median.h"

namespace cornerpin {

namespace {

using Numbers = std::vector<double>;

// One step of the last digit apart is not the same; rounding in products is.
constexpr double kBelowOne = 1.0 - 1e-6;

// So far from what the pairs say a round number may be, however far apart they may be themselves.
constexpr double kRoundOff = 0.01;
double roundOff(const Allowed& allowed, double times) {
  return std::min(allowed.at(times), kRoundOff);
}

// A number with few digits within `allowed` of this one: a multiple of a half if possible, or else
// one with as few decimals as will do.
double rounded(double value, double allowed) {
  const double halves = std::round(2.0 * value) / 2.0;
  if (std::fabs(halves - value) <= allowed) return halves;
  double power = 1.0;
  for (int decimals = 1; decimals <= 12; ++decimals) {
    power *= 10.0;
    const double round = std::round(value * power) / power;
    if (std::fabs(round - value) <= allowed) return round;
  }
  return value;
}

double largest(const Numbers& numbers) {
  double most = 0.0;
  for (double v : numbers) most = std::max(most, std::fabs(v));
  return most;
}

double medianPlus(const AxisPairs& pairs, double times) {
  Numbers plus(pairs.first.size());
  for (std::size_t i = 0; i < plus.size(); ++i) plus[i] = pairs.second[i] - times * pairs.first[i];
  return lowerMedian(std::move(plus));
}

// With the middle of all moves.
AxisChange movedBy(const AxisPairs& pairs, double times, const Allowed& allowed) {
  const AxisChange exact = {times, medianPlus(pairs, times)};
  const AxisChange round = {times, rounded(exact.plus, roundOff(allowed, times))};
  return agreeing(pairs, round, allowed) >= agreeing(pairs, exact, allowed) ? round : exact;
}

// Whether those that agree have three different coordinates in the first file.
bool isWellFounded(const AxisPairs& pairs, const AxisChange& change, const Allowed& allowed) {
  Numbers seen;
  const double apart = 2.0 * allowed.first + allowed.least;
  const double most = allowed.at(change.times);
  for (std::size_t i = 0; i < pairs.first.size() && seen.size() < 3; ++i) {
    const double v = pairs.first[i];
    if (std::fabs(change(v) - pairs.second[i]) > most) continue;
    const bool isNew =
        std::all_of(seen.begin(), seen.end(), [&](double s) { return std::fabs(s - v) > apart; });
    if (isNew) seen.push_back(v);
  }
  return seen.size() == 3;
}

// Scales with few digits, or over such, that carry the largest coordinate as far.
Numbers roundScales(double times, double most, const Allowed& allowed) {
  Numbers scales;
  double power = 1.0;
  for (int decimals = 0; decimals <= 9; ++decimals, power *= 10.0) {
    for (const double scale :
         {std::round(times * power) / power, power / std::round(power / times)}) {
      const bool isNear = std::fabs(scale - times) * most <= 2.0 * roundOff(allowed, times);
      if (isNear && std::isfinite(scale) && scale != 0.0) scales.push_back(scale);
    }
  }
  return scales;
}

// The first round scale under which as many agree; `withScale` makes a change of a scale.
template <class F>
AxisChange roundedScale(const AxisPairs& pairs, const AxisChange& exact, const Allowed& allowed,
                        F withScale) {
  const std::size_t count = agreeing(pairs, exact, allowed);
  for (double scale : roundScales(exact.times, largest(pairs.first), allowed)) {
    const AxisChange round = withScale(scale);
    if (agreeing(pairs, round, allowed) >= count) return round;
  }
  return exact;
}

// The middle of the quotients, of coordinates that are no smaller than most.
std::optional<AxisChange> scaled(const AxisPairs& pairs, const Allowed& allowed) {
  Numbers sizes(pairs.first.size());
  std::transform(pairs.first.begin(), pairs.first.end(), sizes.begin(),
                 [](double v) { return std::fabs(v); });
  const double large = lowerMedian(std::move(sizes));
  Numbers quotients;
  for (std::size_t i = 0; i < pairs.first.size(); ++i) {
    if (std::fabs(pairs.first[i]) >= large && pairs.first[i] != 0.0)
      quotients.push_back(pairs.second[i] / pairs.first[i]);
  }
  if (quotients.empty()) return std::nullopt;
  const AxisChange exact = {lowerMedian(std::move(quotients)), 0.0};
  return roundedScale(pairs, exact, allowed, [](double scale) { return AxisChange{scale, 0.0}; });
}

// The line of least squares through the pairs that a line carries nearly.
AxisChange improved(const AxisPairs& pairs, const AxisChange& line, double within) {
  double n = 0.0;
  double meanA = 0.0;
  double meanB = 0.0;
  double aa = 0.0;
  double ab = 0.0;
  for (std::size_t i = 0; i < pairs.first.size(); ++i) {
    const double a = pairs.first[i];
    const double b = pairs.second[i];
    if (std::fabs(line(a) - b) > within) continue;
    n += 1.0;
    const double da = a - meanA;
    meanA += da / n;
    meanB += (b - meanB) / n;
    aa += da * (a - meanA);
    ab += da * (b - meanB);
  }
  if (!(aa > 0.0)) return line;
  return {ab / aa, meanB - ab / aa * meanA};
}

// The middle of the slopes between coordinates that are half of all apart in their order.
std::optional<AxisChange> scaledAndMoved(const AxisPairs& pairs, const Allowed& allowed) {
  std::vector<std::size_t> order(pairs.first.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::sort(order.begin(), order.end(),
            [&](std::size_t i, std::size_t k) { return pairs.first[i] < pairs.first[k]; });
  Numbers slopes;
  const std::size_t half = order.size() / 2;
  for (std::size_t i = 0; half > 0 && i + half < order.size(); ++i) {
    const std::size_t low = order[i];
    const std::size_t high = order[i + half];
    const double run = pairs.first[high] - pairs.first[low];
    if (run > 0.0) slopes.push_back((pairs.second[high] - pairs.second[low]) / run);
  }
  if (slopes.empty()) return std::nullopt;
  const double slope = lowerMedian(std::move(slopes));
  if (slope == 0.0) return std::nullopt;
  AxisChange line = {slope, medianPlus(pairs, slope)};
  constexpr double kNearly = 4.0;
  const AxisChange better = improved(pairs, line, kNearly * allowed.at(slope));
  if (agreeing(pairs, better, allowed) >= agreeing(pairs, line, allowed)) line = better;
  const auto withScale = [&](double scale) { return movedBy(pairs, scale, allowed); };
  line = roundedScale(pairs, line, allowed, withScale);
  return line;
}

}  // namespace

double Allowed::at(double times) const {
  return std::max(kBelowOne * (std::fabs(times) * first + second), least);
}

std::size_t agreeing(const AxisPairs& pairs, const AxisChange& change, const Allowed& allowed) {
  const double most = allowed.at(change.times);
  std::size_t count = 0;
  for (std::size_t i = 0; i < pairs.first.size(); ++i) {
    count += std::fabs(change(pairs.first[i]) - pairs.second[i]) <= most ? 1 : 0;
  }
  return count;
}

AxisChange axisChange(const AxisPairs& pairs, const Allowed& allowed) {
  AxisChange best;
  std::size_t apart = pairs.first.size() - agreeing(pairs, best, allowed);
  const auto offer = [&](const std::optional<AxisChange>& change) {
    if (!change || (change->scales() && !isWellFounded(pairs, *change, allowed))) return;
    const std::size_t left = pairs.first.size() - agreeing(pairs, *change, allowed);
    if (2 * left > apart) return;
    best = *change;
    apart = left;
  };
  if (apart > 0) offer(movedBy(pairs, 1.0, allowed));
  if (apart > 0) offer(movedBy(pairs, -1.0, allowed));
  if (apart > 0) offer(scaled(pairs, allowed));
  if (apart > 0) offer(scaledAndMoved(pairs, allowed));
  return best;
}

}  // namespace cornerpin
