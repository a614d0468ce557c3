// SPDX-License-Identifier: BSD-3-Clause
#include "shot/trust/final_weights.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/shot/lists.h"

using namespace cornerpin;

namespace {

// One match 5 px from its place and one that meets it.
const Matches kMatches = lists::matches({{{10, 20}, {13, 24}, 0.5}, {{30, 40}, {30, 40}, 3.0}});

// The horizon is at x = 100.
const Homography kFalling = {{{1, 0, 0}, {0, 1, 0}, {-0.01, 0, 1}}};

// Exact matches before the horizon and behind it.
Matches aroundTheHorizon() {
  Matches matches;
  for (Point p : {Point{0, 0}, Point{50, 10}, Point{150, 10}}) {
    matches.add({p, map(kFalling, p), 2.0});
  }
  return matches;
}

double lossWeightOf(Loss loss, double width) {
  return lossWeights(kMatches, kIdentity, {0, 0}, loss, width)[0];
}

}  // namespace

// The transform may have any factor: behind the horizon is what `front` is not beside.
TEST(SquaresFrom, AreThoseOfResidualsAndInfiniteBehindTheHorizon) {
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_NEAR(squaresFrom(kMatches, kIdentity, {0, 0})[0], 25.0, 1e-13);
  EXPECT_NEAR(squaresFrom(kMatches, kIdentity, {0, 0})[1], 0.0, 1e-13);
  const Matches matches = aroundTheHorizon();
  const std::vector<double> before = squaresFrom(matches, kFalling, {10, 0});
  const std::vector<double> behind = squaresFrom(matches, kFalling, {110, 0});
  for (std::size_t i = 0; i < 2; ++i) {
    EXPECT_NEAR(before[i], 0.0, 1e-18);
    EXPECT_EQ(behind[i], infinity);
  }
  EXPECT_EQ(before[2], infinity);
  EXPECT_NEAR(behind[2], 0.0, 1e-18);
}

// A loss weighs squares, a match's weight what is squared.
TEST(LossWeights, AreTheMatchesOwnTimesTheRootOfTheLosss) {
  EXPECT_DOUBLE_EQ(lossWeightOf(Loss::Tukey, 10), 0.5 * 0.75);              // 1 - (5 / 10)^2
  EXPECT_DOUBLE_EQ(lossWeightOf(Loss::Cauchy, 10), 0.5 / std::sqrt(1.25));  // 1 + (5 / 10)^2
  EXPECT_DOUBLE_EQ(lossWeightOf(Loss::Huber, 2.5), 0.5 * std::sqrt(0.5));   // 2.5 / 5
  EXPECT_EQ(lossWeightOf(Loss::None, 2.5), 0.5);
  for (Loss loss : {Loss::None, Loss::Huber, Loss::Cauchy, Loss::Tukey}) {
    EXPECT_EQ(lossWeights(kMatches, kIdentity, {0, 0}, loss, 2.5)[1], 3.0) << nameOf(loss);
  }
}

TEST(LossWeights, AreZeroWhereTukeysLossIsFlat) {
  EXPECT_EQ(lossWeightOf(Loss::Tukey, 5.0), 0.0);
  EXPECT_GT(lossWeightOf(Loss::Tukey, 5.01), 0.0);
}

TEST(LossWeights, AreZeroBehindTheHorizon) {
  for (Loss loss : {Loss::None, Loss::Huber, Loss::Cauchy, Loss::Tukey}) {
    const std::vector<double> before =
        lossWeights(aroundTheHorizon(), kFalling, {10, 0}, loss, 1.0);
    EXPECT_EQ(before, (std::vector<double>{2, 2, 0})) << nameOf(loss);
    const std::vector<double> behind =
        lossWeights(aroundTheHorizon(), kFalling, {110, 0}, loss, 1.0);
    EXPECT_EQ(behind, (std::vector<double>{0, 0, 2})) << nameOf(loss);
  }
}

// What a match pulls is its loss's weight times its residual: moved a little along an axis, over
// the weight. Huber's loss pulls alike from 4 px on, the others pull more the further off.
TEST(LossStiffness, IsByWhatThePullGrowsWithTheResidual) {
  constexpr double kStep = 1e-6;
  const Point r = {3.0, 4.0};
  const Matches matches = {{{1, 2}, {4, 6}, 0.5}};
  for (Loss loss : {Loss::None, Loss::Huber, Loss::Cauchy, Loss::Tukey}) {
    const double width = loss == Loss::Huber ? 4.0 : 12.0;
    const auto pull = [&](double x, double y) {
      const double weight = lossWeight(loss, std::hypot(x, y), width);
      return Point{weight * x, weight * y};
    };
    const double scale = 2.0 * kStep * lossWeight(loss, 5.0, width);
    const Symmetric2 k = lossStiffness(matches, kIdentity, loss, width)[0];
    const Point right = pull(r.x + kStep, r.y), left = pull(r.x - kStep, r.y);
    const Point below = pull(r.x, r.y + kStep), above = pull(r.x, r.y - kStep);
    EXPECT_NEAR(k.xx, (right.x - left.x) / scale, 1e-7) << nameOf(loss);
    EXPECT_NEAR(k.xy, (below.x - above.x) / scale, 1e-7) << nameOf(loss);
    EXPECT_NEAR(k.yy, (below.y - above.y) / scale, 1e-7) << nameOf(loss);
  }
}

// At 5 px of 6 Tukey's loss has bent back.
TEST(LossStiffness, IsNothingAlongAResidualThatPullsTheLessTheLargerItIs) {
  const Symmetric2 k = lossStiffness(kMatches, kIdentity, Loss::Tukey, 6.0)[0];
  EXPECT_NEAR(k.xx * 3.0 + k.xy * 4.0, 0.0, 1e-14);
  EXPECT_NEAR(k.xy * 3.0 + k.yy * 4.0, 0.0, 1e-14);
  EXPECT_NEAR(k.xx * -4.0 + k.xy * 3.0, -4.0, 1e-14);
}

TEST(LossStiffness, IsTheIdentityOfAMatchThatIsMet) {
  const Symmetric2 k = lossStiffness(kMatches, kIdentity, Loss::Tukey, 6.0)[1];
  EXPECT_EQ(k.xx, 1.0);
  EXPECT_EQ(k.xy, 0.0);
  EXPECT_EQ(k.yy, 1.0);
}

TEST(GoodWeights, AreTheMatchesOwnWithinThreeAndAHalfSigmas) {
  for (double sigma : {5 / 3.49, 5 / 3.51}) {
    const std::vector<double> weights = goodWeights(kMatches, kIdentity, {0, 0}, sigma);
    EXPECT_EQ(weights, (std::vector<double>{sigma > 5 / 3.5 ? 0.5 : 0.0, 3.0}));
  }
}

TEST(GoodWeights, AreZeroBehindTheHorizon) {
  EXPECT_EQ(goodWeights(aroundTheHorizon(), kFalling, {10, 0}, 1.0),
            (std::vector<double>{2, 2, 0}));
  EXPECT_EQ(goodWeights(aroundTheHorizon(), kFalling, {110, 0}, 1.0),
            (std::vector<double>{0, 0, 2}));
}
