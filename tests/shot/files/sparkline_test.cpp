// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/sparkline.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace cornerpin;

TEST(Sparkline, DrawsEighthsOfTheLargest) {
  EXPECT_EQ(sparkline({0, 1, 2, 3, 4, 5, 6, 7, 8}, 20), "▁▂▃▄▅▆▇██");
  EXPECT_EQ(sparkline({0, 0.99, 8}, 20), "▁▁█");
}

TEST(Sparkline, TakesTheHighestOfWhatABlockStandsFor) {
  EXPECT_EQ(sparkline({0, 8, 1, 1, 4, 0}, 3), "█▂▅");
  EXPECT_EQ(sparkline({1, 8, 0, 0, 4}, 2), "█▅");
}

TEST(Sparkline, MarksWhatIsNotFinite) {
  EXPECT_EQ(sparkline({0, std::nan(""), 8, HUGE_VAL}, 9), "▁x█x");
  EXPECT_EQ(sparkline({std::nan(""), 1, 8, 8}, 2), "x█");
  EXPECT_EQ(sparkline({8, std::nan(""), 8, 8}, 2), "x█");
}

TEST(Sparkline, DrawsNothingOfNothing) {
  EXPECT_EQ(sparkline({}, 9), "");
  EXPECT_EQ(sparkline({1.0}, 0), "");
  EXPECT_EQ(sparkline({0.0, 0.0}, 9), "▁▁");
}
