// SPDX-License-Identifier: BSD-3-Clause
#include "shot/robust/chance.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "shot/robust/error_model.h"
#include "tests/shot/robust/random_errors.h"

using namespace cornerpin;

namespace {

constexpr double kPi = 3.141592653589793;

double choices(int n, int k) { return k == 0 ? 1.0 : choices(n - 1, k - 1) * n / k; }

double plainly(int n, int k, double square, double area) {
  return std::log10((n - 4) * choices(n, k) * choices(k, 4) * std::pow(kPi * square / area, k - 4));
}

}  // namespace

TEST(ChanceOf, IsTheNumberOfFalseAlarms) {
  // 2 transforms' worth of sizes, one way to choose all six, 15 ways to choose four of them:
  // 30 (pi 1e-4 / 4)^2 = 1.85e-7.
  EXPECT_NEAR(chanceOf(6, 6, 1e-4, 4.0), -6.73, 1e-9);
  for (int n : {7, 20, 60}) {
    for (int k : {5, 6, 7}) {
      EXPECT_NEAR(chanceOf(static_cast<std::size_t>(n), static_cast<std::size_t>(k), 1e-3, 2.5),
                  plainly(n, k, 1e-3, 2.5), 0.0051)
          << k << " of " << n;
    }
  }
}

TEST(ChanceOf, IsRoundedToTheHundredth) {
  const double hundredths = 100.0 * chanceOf(20, 12, 1e-3, 2.5);
  EXPECT_NEAR(hundredths, std::round(hundredths), 1e-9);
}

TEST(ChanceOf, TakesAPlaceForCertainWhereTheAreaIsNoLargerThanTheError) {
  // All but the choice of the four matches is certain then: 6 sizes, 210 choices.
  EXPECT_NEAR(chanceOf(10, 10, 1.0, 0.5), std::log10(6.0 * 210.0), 0.0051);
  EXPECT_NEAR(chanceOf(10, 10, 1.0, 0.0), std::log10(6.0 * 210.0), 0.0051);
}

// Of all sizes, by the logarithms of factorials.
TEST(ChanceOf, IsTheLeastOfAllSizesHoweverManyThereAre) {
  const auto logFactorial = [](int n) { return std::lgamma(n + 1.0) / std::log(10.0); };
  errors::Random random(5);
  for (int n : {5, 6, 12, 60, 300, 1500, 4000}) {
    for (double good : {0.0, 0.3, 0.7, 0.95, 1.0}) {
      std::vector<double> squares;
      for (int i = 0; i < n; ++i) {
        const Point place = random.place();
        const double square = place.x * place.x + place.y * place.y;
        squares.push_back(i < good * n ? 1e-6 * square : square);
      }
      std::vector<double> sorted = squares;
      std::sort(sorted.begin(), sorted.end());
      double least = HUGE_VAL;
      for (int k = 5; k <= n; ++k) {
        const double one = std::min(kPi * sorted[static_cast<std::size_t>(k - 1)] / 3.0, 1.0);
        const double transforms = std::log10(n - 4.0) + logFactorial(n) - logFactorial(n - k) -
                                  logFactorial(4) - logFactorial(k - 4);
        least = std::min(least, transforms + (k - 4) * std::log10(one));
      }
      EXPECT_NEAR(chanceOf(squares, 3.0), least, 0.0051) << n << " " << good;
    }
  }
}

TEST(ChanceOf, TakesTheSizeThatChanceExplainsLeast) {
  std::vector<double> squares = {0.3, 4e-6, 1e-6, 9e-6, 1e-6, 2e-6, 8e-6, 0.5, 5e-6, INFINITY};
  double least = HUGE_VAL;
  std::vector<double> sorted = squares;
  std::sort(sorted.begin(), sorted.end());
  for (int k = 5; k <= 9; ++k) {
    const double square = sorted[static_cast<std::size_t>(k - 1)];
    least = std::min(least, plainly(10, k, std::min(square, 4.0 / kPi), 4.0));
  }
  EXPECT_NEAR(chanceOf(squares, 4.0), least, 0.0051);
  EXPECT_NEAR(least, plainly(10, 7, 9e-6, 4.0), 1e-9) << "the seven close ones";
}

TEST(ChanceOf, SeesNoErrorBelowTheLeastSigma) {
  const std::vector<double> exact(8, 0.0);
  EXPECT_NEAR(chanceOf(exact, 4.0), plainly(8, 8, kSigmaFloor * kSigmaFloor, 4.0), 0.0051);
  EXPECT_EQ(chanceOf(8, 8, 0.0, 4.0), chanceOf(exact, 4.0));
}

// Errors of a transform that has nothing to do with the matches: the number of accidents among so
// many pictures is at most what the count says, here for one transform in place of all.
TEST(ChanceOf, BoundsHowOftenChanceAgrees) {
  constexpr int kPictures = 20000;
  constexpr int kCount = 12;
  errors::Random random(20240716);
  int accidents = 0;
  for (int picture = 0; picture < kPictures; ++picture) {
    std::vector<double> squares;
    for (int i = 0; i < kCount; ++i) {
      const Point there = random.place();
      squares.push_back(there.x * there.x + there.y * there.y);
    }
    // Through four matches, which it meets exactly.
    std::fill(squares.begin(), squares.begin() + 4, 0.0);
    // Of the 495 quadruples of the picture this is one.
    if (chanceOf(squares, 4.0) <= 0.0) ++accidents;
  }
  EXPECT_GT(accidents, 0);
  EXPECT_LE(accidents, kPictures / 495);
}
