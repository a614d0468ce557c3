// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/residuals.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "tests/support/processor.h"

using namespace cornerpin;

namespace {

const Homography kHalf = {{{1, 0, 1}, {0, 1, 0}, {0, 0, 2}}};  // (x, y) to ((x + 1) / 2, y / 2)

// Residuals (3, 4) and (0, -1).
const Matches kTwo = {{{1, 2}, {4, 5}, 2.0}, {{3, 4}, {2, 1}, 0.5}};

// The third coordinate is x + 1.
const Homography kBowed = {{{1, 0, 0}, {0, 1, 0}, {1, 0, 1}}};

}  // namespace

TEST(Residual, PointsFromTheImageToThePresentPlace) {
  EXPECT_EQ(residual(kTwo[0], kHalf).x, 3.0);
  EXPECT_EQ(residual(kTwo[0], kHalf).y, 4.0);
  EXPECT_EQ(residual(kTwo[1], kHalf).x, 0.0);
  EXPECT_EQ(residual(kTwo[1], kHalf).y, -1.0);
}

TEST(SquaredResidual, IsTheSquaredLength) {
  EXPECT_EQ(squaredResidual(kTwo[0], kHalf), 25.0);
  EXPECT_EQ(squaredResidual(kTwo[1], kHalf), 1.0);
}

TEST(WeightedSquares, MultiplyEachByItsSquaredWeight) {
  EXPECT_EQ(weightedSquares(kTwo, kHalf), 4.0 * 25.0 + 0.25 * 1.0);
  EXPECT_EQ(weightedSquares({}, kHalf), 0.0);
}

TEST(RmsResidual, TakesAllMatchesAlike) { EXPECT_EQ(rmsResidual(kTwo, kHalf), std::sqrt(13.0)); }

TEST(RmsResidual, IsNotANumberWithoutMatches) { EXPECT_TRUE(std::isnan(rmsResidual({}, kHalf))); }

TEST(RmsResidual, IsNotANumberWhereAMatchIsCarriedNowhere) {
  EXPECT_TRUE(std::isnan(rmsResidual({{{0, 0}, {0, 0}}, {{-1, 0.5}, {0, 0}}}, kBowed)));
}

TEST(SquaredResiduals, AreThoseOfTheSingleMatches) {
  const Homography h = {{{1.1, 0.2, 0.3}, {-0.1, 0.9, 0.4}, {0.05, -0.02, 1.0}}};
  Matches matches;
  for (int i = 0; i < 7; ++i) matches.add({{0.1 * i, 1 - 0.3 * i}, {0.2 * i, 0.5}, 3.0});
  std::vector<double> squares(20, -1.0);
  squaredResiduals(matches, h, squares);
  ASSERT_EQ(squares.size(), 7u);
  for (std::size_t i = 0; i < 7; ++i) {
    EXPECT_NEAR(squares[i], squaredResidual(matches[i], h), 1e-15 * (1.0 + squares[i])) << i;
  }
}

TEST(SquaredResiduals, AreInfiniteOnAndBehindTheHorizon) {
  std::vector<double> squares;
  for (double s : {0.98e-6, 0.0, -2.0}) {
    squaredResiduals({{{s - 1.0, 0}, {0, 0}}}, kBowed, squares);
    EXPECT_EQ(squares[0], HUGE_VAL) << s;
  }
  squaredResiduals({{{1.02e-6 - 1.0, 0}, {0, 0}}}, kBowed, squares);
  EXPECT_NEAR(squares[0] * 1.02e-6 * 1.02e-6, 1.0, 1e-5);
}

TEST(SquaredResiduals, HaveTheSameBitsInEveryVariant) {
  const Homography tilted = {{{1.1, 0.2, 0.3}, {-0.1, 0.9, 0.4}, {0.7, -0.6, 1.0}}};
  Matches matches;
  for (int i = 0; i < 41; ++i) {
    matches.add({{std::cos(1.1 * i) - 0.5, std::sin(0.9 * i)}, {std::sin(1.7 * i), 0.1 * i}});
    std::vector<double> base(3, -1.0);
    squaredResiduals(matches, tilted, base, squaresVariants().front());
    for (const SquaresVariant& variant : squaresVariants()) {
      std::vector<double> fast;
      squaredResiduals(matches, tilted, fast, variant);
      EXPECT_EQ(fast, base) << variant.name << ", " << matches.size() << " matches";
    }
  }
}

TEST(SquaresVariants, AreThoseThatTheProcessorRuns) {
  std::vector<std::string> expected = processor::kernelVariants();
  expected.front() = "base";
  std::vector<std::string> names;
  for (const SquaresVariant& variant : squaresVariants()) names.emplace_back(variant.name);
  EXPECT_EQ(names, expected);
}
