// SPDX-License-Identifier: BSD-3-Clause
#include "shot/trust/shot_noise.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace cornerpin;

namespace {

// Frames whose own variances are `variance` times own / chi-squared of `own`, estimated from
// `freedom` errors each; own 0: all the same.
std::vector<NoiseEstimate> frames(int count, double variance, double own, double freedom) {
  std::mt19937_64 random(5);
  std::vector<NoiseEstimate> result;
  for (int i = 0; i < count; ++i) {
    std::chi_squared_distribution<double> errors(freedom);
    double actual = variance;
    if (own > 0.0) actual *= own / std::chi_squared_distribution<double>(own)(random);
    result.push_back({actual * errors(random) / freedom, freedom});
  }
  return result;
}

}  // namespace

TEST(ShotNoise, IsTheLowerMedianOfTheFrames) {
  const NoiseEstimate noise = shotNoise({{5, 8}, {1, 8}, {3, 8}, {2, 8}, {4, 8}, {9, 8}});
  EXPECT_EQ(noise.variance, 3.0);
}

TEST(ShotNoise, IsNotKnownFromFewerThanFiveFrames) {
  EXPECT_EQ(shotNoise({{1, 8}, {1, 8}, {1, 8}, {1, 8}}).freedom, 0.0);
  EXPECT_GT(shotNoise({{1, 8}, {1, 8}, {1, 8}, {1, 8}, {1, 8}}).freedom, 0.0);
  // What has no freedom or is exact tells nothing.
  EXPECT_EQ(shotNoise({{1, 8}, {1, 8}, {1, 8}, {1, 8}, {1, 0}, {0, 8}}).freedom, 0.0);
}

// Equal variances differ by the errors alone: all frames together tell them.
TEST(ShotNoise, HasTheFreedomOfAllFramesWhereTheyDoNotDiffer) {
  EXPECT_EQ(shotNoise({{1, 8}, {1.1, 8}, {0.9, 8}, {1, 6}, {1, 8}}).freedom, 38.0);
}

// The freedom of the distribution that the frames' variances are drawn from, of 4,000 frames.
TEST(ShotNoise, HasAsMuchFreedomAsTheFramesAreAlike) {
  for (double own : {4.0, 8.0, 30.0}) {
    const double found = shotNoise(frames(4000, 1.0, own, 60)).freedom;
    std::printf("frames drawn with freedom %.0f: %.1f\n", own, found);
    EXPECT_NEAR(found / own, 1.0, 0.2);
  }
}

TEST(Pooled, NoiseIsTheMeanByFreedom) {
  const NoiseEstimate noise = pooled({2.0, 2.0}, {1.0, 6.0});
  EXPECT_DOUBLE_EQ(noise.variance, 1.25);
  EXPECT_DOUBLE_EQ(noise.freedom, 8.0);
}

TEST(Pooled, NoiseOfAFrameThatSaysNothingIsTheShots) {
  const NoiseEstimate noise = pooled({std::nan(""), 0.0}, {1.0, 4.0});
  EXPECT_EQ(noise.variance, 1.0);
  EXPECT_EQ(noise.freedom, 4.0);
}

TEST(Pooled, NoiseIsTheFramesOwnWhereTheShotSaysNothing) {
  const NoiseEstimate noise = pooled({4.0, 2.0}, {0.0, 0.0});
  EXPECT_EQ(noise.variance, 4.0);
  EXPECT_EQ(noise.freedom, 2.0);
}

// Of 8 errors the standard error of a variance is a half of it: the bound is 1 + 2 * 0.5.
TEST(Pooled, NoiseIsTheFramesOwnWhereThatIsFarAboveTheShots) {
  EXPECT_LT(pooled({1.99, 8.0}, {1.0, 100.0}).variance, 1.2);
  EXPECT_EQ(pooled({2.01, 8.0}, {1.0, 100.0}).variance, 2.01);
  EXPECT_EQ(pooled({2.01, 8.0}, {1.0, 100.0}).freedom, 8.0);
  EXPECT_GT(pooled({0.01, 8.0}, {1.0, 100.0}).variance, 0.9);
}

TEST(EstimatedNoise, HasAFactorThatBecomesOne) {
  EXPECT_DOUBLE_EQ(estimatedNoiseFactor(8.0), std::exp(1.0) - 1.0);
  EXPECT_NEAR(estimatedNoiseFactor(1e6), 1.0, 1e-5);
}

// Of 400,000 round errors each: known to about 0.0002.
TEST(EstimatedNoise, LeavesTwoDeviationsTheirMeaning) {
  constexpr int kErrors = 400000;
  std::mt19937_64 random(3);
  std::normal_distribution<double> normal;
  for (double freedom : {1.0, 2.0, 8.0, 50.0}) {
    std::chi_squared_distribution<double> errors(freedom);
    int within = 0;
    for (int i = 0; i < kErrors; ++i) {
      const double x = normal(random), y = normal(random);
      const double trace = 2.0 * errors(random) / freedom * estimatedNoiseFactor(freedom);
      if (x * x + y * y <= 4.0 * trace) ++within;
    }
    EXPECT_NEAR(static_cast<double>(within) / kErrors, 1.0 - std::exp(-4.0), 0.001) << freedom;
  }
}

// Of errors that are normal, whatever their number.
TEST(QuietNoise, IsThatOfTheFramesWhereTheyDoNotDiffer) {
  for (double freedom : {4.0, 8.0, 60.0}) {
    const NoiseEstimate noise = quietNoise(frames(4000, 2.0, 0.0, freedom), {});
    EXPECT_NEAR(noise.variance, 2.0, 0.15) << freedom;
    EXPECT_EQ(noise.freedom, 16.0);
  }
}

TEST(QuietNoise, IsThatOfTheQuietestTenth) {
  // 60 frames of 8 errors each; in 50 of them bad tracks enlarge the variance.
  std::vector<NoiseEstimate> shot = frames(60, 1.0, 0.0, 8);
  for (std::size_t i = 10; i < shot.size(); ++i) shot[i].variance *= 30.0;
  const double noise = quietNoise(shot, {}).variance;
  EXPECT_GT(noise, 0.5);
  EXPECT_LT(noise, 4.0);
}

TEST(QuietNoise, OfFewFramesIsWhatIsLikely) {
  const std::vector<NoiseEstimate> four(4, {1, 8});
  EXPECT_EQ(quietNoise(four, {0.3, 4}).variance, 0.3);
  EXPECT_EQ(quietNoise(four, {0.3, 4}).freedom, 4.0);
  EXPECT_EQ(quietNoise(std::vector<NoiseEstimate>(5, {1, 8}), {0.3, 4}).freedom, 16.0);
  // What has no freedom or is exact tells nothing.
  EXPECT_EQ(quietNoise({{1, 8}, {1, 8}, {1, 8}, {1, 8}, {1, 0}, {0, 8}}, {0.3, 4}).freedom, 4.0);
}
