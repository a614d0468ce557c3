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

TEST(LossWeight, IsOneNearZeroWhateverTheLoss) {
  for (Loss loss : {Loss::None, Loss::Huber, Loss::Cauchy, Loss::Tukey}) {
    EXPECT_EQ(lossWeight(loss, 0.0, 3.0), 1.0);
  }
}

TEST(LossWeight, DependsOnTheResidualInWidthsAlone) {
  EXPECT_EQ(lossWeight(Loss::Tukey, 1.5, 3.0), 0.5625);
  EXPECT_EQ(lossWeight(Loss::Cauchy, 6.0, 3.0), 0.2);
  EXPECT_EQ(lossWeight(Loss::Huber, 12.0, 3.0), 0.25);
}

TEST(LossWeight, OfWhatIsFarIsNothingForTukeyAlone) {
  EXPECT_EQ(lossWeight(Loss::Tukey, 1e9, 1.0), 0.0);
  EXPECT_GT(lossWeight(Loss::Cauchy, 1e9, 1.0), 0.0);
  EXPECT_EQ(lossWeight(Loss::Huber, 1e9, 1.0), 1e-9);
}

// By hand: of (1 - t)^2 with t = r^2 / w^2 it is -2 / ((1 - t) w^2), of 1 / (1 + t) it is
// -1 / ((1 + t) w^2), of 1 / sqrt(t) it is -1 / (2 t w^2).
TEST(LogWeightSlope, IsTheWeightsOwnOverTheWeight) {
  EXPECT_EQ(logWeightSlope(Loss::None, 5.0, 1.0), 0.0);
  EXPECT_EQ(logWeightSlope(Loss::Tukey, 1.0, 2.0), -2.0 / 3.0);
  EXPECT_EQ(logWeightSlope(Loss::Tukey, 4.0, 2.0), 0.0);
  EXPECT_EQ(logWeightSlope(Loss::Tukey, 9.0, 2.0), 0.0);
  EXPECT_EQ(logWeightSlope(Loss::Cauchy, 16.0, 3.0), -0.04);
  EXPECT_EQ(logWeightSlope(Loss::Huber, 16.0, 3.0), -1.0 / 32.0);
  EXPECT_EQ(logWeightSlope(Loss::Huber, 4.0, 3.0), 0.0);
}

TEST(BentSquare, HasTheLossBesideItsWeight) {
  EXPECT_EQ(bentSquare(Loss::None, 25.0, 1.0).loss, 25.0);
  EXPECT_NEAR(bentSquare(Loss::Tukey, 2.25, 3.0).loss, 3.0 * (1.0 - 0.75 * 0.75 * 0.75), 1e-15);
  EXPECT_EQ(bentSquare(Loss::Tukey, 2.25, 3.0).weight, 0.5625);
  EXPECT_EQ(bentSquare(Loss::Tukey, 1e9, 3.0).loss, 3.0);
  EXPECT_EQ(bentSquare(Loss::Huber, 16.0, 1.0).loss, 7.0);
  EXPECT_EQ(bentSquare(Loss::Huber, 16.0, 1.0).weight, 0.25);
}

TEST(BentWeights, AreThoseOfEachSquare) {
  for (Loss loss : {Loss::None, Loss::Huber, Loss::Cauchy, Loss::Tukey}) {
    const std::vector<double> squares = {0.0, 1.0, 4.0, 25.0, 2.25, 1e9};
    const std::vector<double> weights = bentWeights(loss, squares, 2.0);
    ASSERT_EQ(weights.size(), squares.size());
    for (std::size_t i = 0; i < squares.size(); ++i) {
      EXPECT_EQ(weights[i], bentSquare(loss, squares[i], 2.0).weight) << nameOf(loss) << " " << i;
    }
  }
}

TEST(Loss, HasAName) {
  EXPECT_STREQ(nameOf(Loss::None), "none");
  EXPECT_STREQ(nameOf(Loss::Huber), "huber");
  EXPECT_STREQ(nameOf(Loss::Cauchy), "cauchy");
  EXPECT_STREQ(nameOf(Loss::Tukey), "tukey");
}
