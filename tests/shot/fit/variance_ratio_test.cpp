// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/variance_ratio.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace cornerpin;

namespace {

// The density of the F distribution, integrated in steps of u = 1 / (1 + x).
double integrated(double ratio, double above, double below) {
  const double a = above, b = below;
  const double scale = std::tgamma(a + b) / std::tgamma(a) / std::tgamma(b) * std::pow(a / b, a);
  const auto density = [&](double u) {
    const double x = (1.0 - u) / u;
    return scale * std::pow(x, a - 1.0) * std::pow(1.0 + a / b * x, -a - b) / (u * u);
  };
  constexpr int kSteps = 20000;
  const double end = 1.0 / (1.0 + ratio);
  double sum = 0.0;
  for (int i = 0; i < kSteps; ++i) sum += density(end * (i + 0.5) / kSteps);
  return sum * end / kSteps;
}

}  // namespace

TEST(ChanceOfRatio, IsTheTailOfTheDensity) {
  for (std::size_t above : {1u, 2u, 3u, 7u}) {
    for (std::size_t below : {1u, 2u, 5u, 20u}) {
      for (double ratio : {0.1, 1.0, 2.5, 12.0}) {
        const double expected =
            integrated(ratio, static_cast<double>(above), static_cast<double>(below));
        EXPECT_NEAR(chanceOfRatio(ratio, above, below) / expected, 1.0, 1e-6)
            << above << " " << below << " " << ratio;
      }
    }
  }
}

// One in a thousand, from the tables of the F distribution.
TEST(ChanceOfRatio, HasThePrintedQuantiles) {
  EXPECT_NEAR(chanceOfRatio(14.91, 1, 5), 1e-3, 2e-6);
  EXPECT_NEAR(chanceOfRatio(11.28, 2, 5), 1e-3, 2e-6);
  EXPECT_NEAR(chanceOfRatio(6.02, 3, 10), 1e-3, 2e-6);
}

TEST(ChanceOfRatio, IsCertainFromZeroOnAndNothingAtInfinity) {
  EXPECT_EQ(chanceOfRatio(0.0, 3, 4), 1.0);
  EXPECT_EQ(chanceOfRatio(HUGE_VAL, 3, 4), 0.0);
}
