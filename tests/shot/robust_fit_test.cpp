// SPDX-License-Identifier: BSD-3-Clause
#include "shot/robust_fit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>

using namespace cornerpin;

namespace {

constexpr unsigned kSeed = 20240712;

const Homography kIdentity = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
const Homography kView = {{{0.9, 0.2, 0.3}, {-0.25, 0.8, -0.2}, {0.12, -0.1, 1}}};

struct Shot {
  Matches matches;
  std::vector<double> confidence;
};

// The first `bad` matches lie anywhere.
Shot shotWith(int good, int bad, double noise, unsigned seed) {
  std::mt19937 random(seed);
  const auto uniform = [&] { return 2.0 * static_cast<double>(random()) / 4294967296.0 - 1.0; };
  Shot shot;
  for (int i = 0; i < good + bad; ++i) {
    const Point from = {uniform(), uniform()};
    Point to = map(kView, from);
    to = i < bad ? Point{1.2 * uniform(), 1.2 * uniform()}
                 : Point{to.x + noise * uniform(), to.y + noise * uniform()};
    shot.matches.add({from, to, 1.0});
    shot.confidence.push_back(1.0);
  }
  return shot;
}

double cornerError(const Homography& h) {
  double worst = 0.0;
  for (Point p : {Point{-1, -1}, Point{1, -1}, Point{1, 1}, Point{-1, 1}}) {
    const Point a = map(h, p);
    const Point b = map(kView, p);
    worst = std::max(worst, std::hypot(a.x - b.x, a.y - b.y));
  }
  return worst;
}

RobustFit fitOf(const Shot& shot, std::uint64_t seed = 1) {
  RobustOptions options;
  options.seed = seed;
  return fitRobustly(shot.matches, {{Stage::Neighbour, kIdentity}}, shot.confidence, options);
}

}  // namespace

TEST(RobustFit, HoldsWithEightyPercentOfTheMatchesWrong) {
  for (unsigned seed = kSeed; seed < kSeed + 50; ++seed) {
    const RobustFit fit = fitOf(shotWith(20, 80, 2e-3, seed));
    ASSERT_TRUE(fit.found) << "seed " << seed;
    EXPECT_LT(cornerError(fit.h), 0.015) << "seed " << seed;
    EXPECT_NEAR(static_cast<double>(fit.inliers), 20.0, 2.0);
  }
}

TEST(RobustFit, SamplesWhereThereIsNothingToStartFrom) {
  const Shot shot = shotWith(60, 20, 2e-3, kSeed);
  const RobustFit fit = fitRobustly(shot.matches, {}, shot.confidence, {});
  EXPECT_EQ(fit.stage, Stage::Sampled);
  EXPECT_LT(cornerError(fit.h), 5e-3);
}

TEST(RobustFit, HasTheSameBitsOnEveryRun) {
  const Shot shot = shotWith(30, 70, 2e-3, kSeed);
  const RobustFit first = fitOf(shot);
  const RobustFit second = fitOf(shot);
  EXPECT_EQ(std::memcmp(&first.h, &second.h, sizeof first.h), 0);
}

TEST(RobustFit, FindsTheSameSurfaceFromAnySeed) {
  const Shot shot = shotWith(40, 60, 2e-3, kSeed);
  const RobustFit first = fitOf(shot, 1);
  const RobustFit second = fitOf(shot, 987654321);
  for (std::size_t i = 0; i < 9; ++i) {
    EXPECT_NEAR(first.h[i / 3][i % 3], second.h[i / 3][i % 3], 1e-4);
  }
}

TEST(RobustFit, DrawsNoSamplesWhereTheNeighbourFits) {
  const Shot shot = shotWith(90, 10, 2e-3, kSeed);
  RobustOptions options;
  const RobustFit fit =
      fitRobustly(shot.matches, {{Stage::Neighbour, kView}}, shot.confidence, options);
  EXPECT_EQ(fit.stage, Stage::Neighbour);
  EXPECT_EQ(fit.inliers, 90u);
  EXPECT_LT(cornerError(fit.h), 5e-3);
}

TEST(RobustFit, MeasuresTheScaleOfTheGoodMatches) {
  std::mt19937 random(kSeed);
  const Shot shot = shotWith(400, 100, 0.0, kSeed);
  Matches noisy;
  const auto uniform = [&] { return static_cast<double>(random()) / 4294967296.0 + 1e-12; };
  for (std::size_t i = 0; i < shot.matches.size(); ++i) {
    Match m = shot.matches[i];
    const double length = 0.004 * std::sqrt(-2.0 * std::log(uniform()));
    const double angle = 6.283185307179586 * uniform();
    m.to = {m.to.x + length * std::cos(angle), m.to.y + length * std::sin(angle)};
    noisy.add(m);
  }
  // 400 lengths: a standard error of some 4 %.
  EXPECT_NEAR(scaleOf(noisy, kView, 1e300), 0.004, 0.0006);
}

TEST(RobustFit, CountsFewMatchesAllAlike) {
  const Shot shot = shotWith(5, 0, 0.01, kSeed);
  const RobustFit fit = fitOf(shot);
  ASSERT_TRUE(fit.found);
  EXPECT_EQ(fit.inliers, 5u);
  const HomographyFit plain = fitHomography(shot.matches, kIdentity);
  EXPECT_EQ(std::memcmp(&fit.h, &plain.h, sizeof fit.h), 0);
}

TEST(Judge, PrefersTheTransformThatMoreMatchesFollow) {
  const Shot shot = shotWith(30, 70, 2e-3, kSeed);
  EXPECT_LT(judge(shot.matches, kView).score, judge(shot.matches, kIdentity).score);
  EXPECT_GE(judge(shot.matches, kView).count, 30u);
  EXPECT_LE(judge(shot.matches, kView).count, 33u);
}
