// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/loss.h"

#include <gtest/gtest.h>

using namespace cornerpin;

TEST(LossWeight, IsTheSlopeOfTheLossOverThatOfTheSquare) {
  EXPECT_EQ(lossWeight(Loss::None, 5.0, 1.0), 1.0);
  EXPECT_EQ(lossWeight(Loss::Tukey, 0.5, 1.0), 0.5625);
  EXPECT_EQ(lossWeight(Loss::Tukey, 1.0, 1.0), 0.0);
  EXPECT_EQ(lossWeight(Loss::Cauchy, 2.0, 1.0), 0.2);
  EXPECT_EQ(lossWeight(Loss::Huber, 0.5, 1.0), 1.0);
  EXPECT_EQ(lossWeight(Loss::Huber, 4.0, 1.0), 0.25);
}
