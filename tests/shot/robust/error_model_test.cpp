// SPDX-License-Identifier: BSD-3-Clause
#include "shot/robust/error_model.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using namespace cornerpin;

namespace {

// With squared weights 1, 2, 3 .. count.
Matches weightedMatches(int count) {
  Matches matches;
  for (int i = 1; i <= count; ++i) matches.add({{0, 0}, {0, 0}, std::sqrt(1.0 * i)});
  return matches;
}

// The votes are 1, 2, 3 .. most, most, most over their mean.
void expectVotesUpTo(int most, int count) {
  const std::vector<double> votes = votesOf(weightedMatches(count));
  ASSERT_EQ(votes.size(), static_cast<std::size_t>(count));
  double sum = 0.0;
  for (int i = 1; i <= count; ++i) sum += std::min(i, most);
  for (int i = 1; i <= count; ++i) {
    EXPECT_NEAR(votes[static_cast<std::size_t>(i - 1)], std::min(i, most) * count / sum, 1e-12)
        << i << " of " << count;
  }
}

}  // namespace

// Normal errors lie within 1.1774 sigmas with even chance, those of the t distribution within a
// squared length of r^2 with a chance of 1 - (1 + r^2 / (f sigma^2))^(-f / 2).
TEST(ErrorModel, HasTheNormalSigmaOfTheSameMedian) {
  for (int freedom : {1, 2, 4, 16}) {
    ErrorModel errors;
    errors.freedom = freedom;
    errors.spread = 0.01;
    const double median = errors.sigma() * std::sqrt(2.0 * std::log(2.0));
    const double q = median * median / (freedom * 1e-4);
    EXPECT_NEAR(std::pow(1.0 + q, -0.5 * freedom), 0.5, 1e-14) << freedom;
  }
}

TEST(StrayArea, IsThatOfTheBoxWithoutFarOffPlaces) {
  Matches matches;
  for (double x : {0.0, 1.0, 3.0}) {
    for (double y : {-1.0, 0.0, 0.5}) matches.add({{0.0, 0.0}, {x, y}, 1.0});
  }
  EXPECT_EQ(strayArea(matches.present()), 3.0 * 1.5);
  matches.add({{0.0, 0.0}, {1e30, -1e30}, 1.0});
  EXPECT_EQ(strayArea(matches.present()), 3.0 * 1.5);
}

TEST(StrayArea, IsNeverZero) {
  EXPECT_EQ(strayArea({{0, 0}, {1, 0}, {0.5, 0}}), 1e-6);
  EXPECT_EQ(strayArea({{3, 4}}), 1e-6);
}

TEST(Votes, AreTheSquaredWeightsOverTheirMeanUpToTheEighthHeaviest) {
  expectVotesUpTo(1, 8);
  expectVotesUpTo(2, 9);
  expectVotesUpTo(13, 20);
  expectVotesUpTo(25, 32);
}

TEST(Votes, OfMoreThanThirtyTwoEndAtTheUpperQuartile) {
  expectVotesUpTo(28, 35);
  expectVotesUpTo(28, 36);
  expectVotesUpTo(76, 100);
}

TEST(Votes, OfFewMatchesAreAllAlike) {
  for (int count : {1, 5, 8}) {
    for (double vote : votesOf(weightedMatches(count))) EXPECT_EQ(vote, 1.0) << count;
  }
}

TEST(Votes, DoNotDependOnTheUnitOfTheWeights) {
  Matches other;
  for (int i = 1; i <= 20; ++i) other.add({{0, 0}, {0, 0}, std::sqrt(1.0 * i) * 0x1p-300});
  EXPECT_EQ(votesOf(other), votesOf(weightedMatches(20)));
}

TEST(RemainingErrors, AreAllButEightOrAQuarter) {
  EXPECT_EQ(remainingErrors(100.0), 192.0);
  EXPECT_EQ(remainingErrors(6.0), 4.0);
  EXPECT_EQ(remainingErrors(16.0 / 3.0), 8.0 / 3.0);  // where both are the same
  EXPECT_EQ(remainingErrors(5.0), 2.5);
  EXPECT_EQ(remainingErrors(0.0), 0.0);
}
