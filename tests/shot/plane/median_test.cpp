// SPDX-License-Identifier: BSD-3-Clause
#include "shot/plane/median.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace cornerpin;

TEST(Ranked, HasAsManyBeforeItAsItsRank) {
  const std::vector<double> numbers = {5, -1, 3, 3, 9, -7};
  const double sorted[] = {-7, -1, 3, 3, 5, 9};
  for (std::size_t rank = 0; rank < 6; ++rank) EXPECT_EQ(ranked(numbers, rank), sorted[rank]);
}

TEST(Median, OfAnOddCountIsTheMiddleOne) {
  EXPECT_EQ(lowerMedian({9, 1, 5}), 5.0);
  EXPECT_EQ(upperMedian({9, 1, 5}), 5.0);
  EXPECT_EQ(lowerMedian({4}), 4.0);
  EXPECT_EQ(upperMedian({4}), 4.0);
}

TEST(Median, OfAnEvenCountIsOneOfTheTwoMiddleOnes) {
  EXPECT_EQ(lowerMedian({9, 1, 7, 5}), 5.0);
  EXPECT_EQ(upperMedian({9, 1, 7, 5}), 7.0);
  EXPECT_EQ(lowerMedian({2, 1}), 1.0);
  EXPECT_EQ(upperMedian({2, 1}), 2.0);
}

TEST(Median, OfNoneIsNotANumber) {
  EXPECT_TRUE(std::isnan(lowerMedian({})));
  EXPECT_TRUE(std::isnan(upperMedian({})));
}

TEST(Median, MayBeInfinite) {
  EXPECT_EQ(lowerMedian({1, HUGE_VAL, HUGE_VAL}), HUGE_VAL);
  EXPECT_EQ(upperMedian({-HUGE_VAL, -HUGE_VAL, 0}), -HUGE_VAL);
}
