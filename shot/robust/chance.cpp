// SPDX-License-Identifier: BSD-3-Clause
#include "shot/robust/chance.h"

#include <algorithm>
#include <cmath>

#include "shot/robust/error_model.h"

namespace cornerpin {

namespace {

constexpr double kPi = 3.141592653589793;
constexpr std::size_t kSample = 4;

// Of k out of n, the common logarithm.
double logChoices(std::size_t n, std::size_t k) {
  double sum = 0.0;
  for (std::size_t i = 1; i <= std::min(k, n - k); ++i) {
    sum += std::log10(static_cast<double>(n + 1 - i) / static_cast<double>(i));
  }
  return sum;
}

// That a stray lies within the distance of a place.
double logOfOne(double square, double area) {
  const double within = std::max(square, kSigmaFloor * kSigmaFloor);
  return std::log10(std::min(kPi * within / area, 1.0));
}

double toTheHundredth(double value) { return std::round(value * 100.0) / 100.0; }

}  // namespace

double chanceOf(std::size_t count, std::size_t agreeing, double square, double area) {
  return toTheHundredth(std::log10(static_cast<double>(count - kSample)) +
                        logChoices(count, agreeing) + logChoices(agreeing, kSample) +
                        static_cast<double>(agreeing - kSample) * logOfOne(square, area));
}

double chanceOf(std::vector<double> squares, double area) {
  std::sort(squares.begin(), squares.end());
  const std::size_t count = squares.size();
  const double tests = std::log10(static_cast<double>(count - kSample));
  double best = HUGE_VAL;
  double ofGroup = logChoices(count, kSample);  // C(n, k)
  double ofSample = 0.0;                        // C(k, 4)
  for (std::size_t k = kSample + 1; k <= count; ++k) {
    const auto size = static_cast<double>(k);
    ofGroup += std::log10((static_cast<double>(count) + 1.0 - size) / size);
    ofSample += std::log10(size / (size - kSample));
    const double all = static_cast<double>(k - kSample) * logOfOne(squares[k - 1], area);
    best = std::min(best, tests + ofGroup + ofSample + all);
  }
  return toTheHundredth(best);
}

}  // namespace cornerpin
