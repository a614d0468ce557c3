// SPDX-License-Identifier: BSD-3-Clause
#include "shot/robust/continued_mixture.h"

#include <gtest/gtest.h>

#include "shot/robust/mixture_search.h"
#include "shot/robust/robust_fit.h"
#include "tests/shot/robust/random_errors.h"

using namespace cornerpin;
using errors::kView;

namespace {

constexpr double kNoise = 1e-3;

// Matches that were good in all frames before, of which the last `lost` are off now, and matches
// that never were, all of them off.
struct Frame {
  Frame(int known, int lost, int bad) {
    errors::Random random(20240716);
    for (int i = 0; i < known + bad; ++i) {
      const Point base = random.place();
      const double angle = random.angle();
      Match match = errors::matchAt(base, kView, random.normalLength(kNoise), angle);
      if (i >= known - lost) match.present = random.place();
      matches.add(match);
      prior.odds.push_back(i < known ? 8.0 : 1.0 / 8.0);
    }
    prior.recentSigma = 1.5 * kNoise;
    prior.lowSigma = kNoise;
    prior.freedom = kNormalFreedom;
  }

  MixtureFit fit(const Homography& start = kView) const {
    return continuedMixture(matches, start, prior);
  }

  Matches matches;
  Prior prior;
};

// A tenth of the surface's width away.
Homography away() {
  Homography h = kView;
  h[0][2] += 0.2;
  h[1][1] *= 1.1;
  return h;
}

}  // namespace

TEST(ContinuedMixture, IsWhatASearchFinds) {
  const Frame frame(40, 2, 30);
  MixtureSearch search(frame.matches, frame.prior);
  search.from({Stage::Neighbour, kView});
  search.fromSamples(1);
  const MixtureFit fit = frame.fit(away());
  ASSERT_TRUE(fit.found);
  ASSERT_EQ(search.best().errors.freedom, kNormalFreedom);
  EXPECT_NEAR(fit.errors.spread, search.best().errors.spread, 0.02 * kNoise);
  for (std::size_t i = 0; i < 9; ++i) {
    EXPECT_NEAR(fit.h[i / 3][i % 3], search.best().h[i / 3][i % 3], 0.02 * kNoise);
  }
}

TEST(ContinuedMixture, HasTheTailsOfTheFrameSearchedLast) {
  Frame frame(40, 0, 0);
  for (int freedom : {1, 4, 16}) {
    frame.prior.freedom = freedom;
    frame.prior.recentSigma = 2.0 * kNoise;
    EXPECT_EQ(frame.fit().errors.freedom, freedom);
  }
  frame.prior.freedom = 0;
  EXPECT_FALSE(frame.fit().found);
}

TEST(ContinuedMixture, TakesTwentyFourMatchesOfEightToOne) {
  EXPECT_FALSE(Frame(23, 0, 5).fit().found);
  Frame frame(24, 0, 5);
  EXPECT_TRUE(frame.fit().found);
  frame.prior.odds[3] = 7.9;
  EXPECT_FALSE(frame.fit().found);
}

// A known one is off: 24 of 25 are good.
TEST(ContinuedMixture, TakesAsManyThatAreGoodNow) {
  EXPECT_TRUE(Frame(25, 1, 0).fit().found);
  EXPECT_FALSE(Frame(24, 1, 0).fit().found);
}

TEST(ContinuedMixture, KeepsAllButATenthOfTheKnown) {
  EXPECT_TRUE(Frame(50, 5, 0).fit().found);
  EXPECT_FALSE(Frame(50, 6, 0).fit().found);
}

TEST(ContinuedMixture, HasNoLargerSigmaThanLately) {
  Frame frame(40, 0, 10);
  const double sigma = frame.fit().errors.sigma();
  frame.prior.recentSigma = 1.01 * sigma;
  EXPECT_TRUE(frame.fit().found);
  frame.prior.recentSigma = 0.99 * sigma;
  EXPECT_FALSE(frame.fit().found);
}

TEST(ContinuedMixture, LeavesSoManyOthersToASearchForARival) {
  EXPECT_TRUE(Frame(40, 0, 37).fit().found);
  EXPECT_FALSE(Frame(40, 0, 38).fit().found);
}

TEST(ContinuedMixture, IsNotFoundWhereTheKnownLieOnOneLine) {
  Frame frame(0, 0, 0);
  for (int i = 0; i < 30; ++i) frame.matches.add({{0.05 * i, 0.02}, {0.05 * i, 0.02}});
  frame.prior.odds.assign(30, 8.0);
  EXPECT_FALSE(frame.fit(kIdentity).found);
}

// The same from every seed, as none is used.
TEST(ContinuedMixture, SparesTheSearch) {
  const Frame frame(40, 2, 30);
  Prior untold = frame.prior;
  untold.freedom = 0;
  const RobustFit searched = fitRobustly(frame.matches, {{Stage::Library, kView}}, untold, {});
  EXPECT_EQ(searched.origin.grounds, Grounds::Searched);
  for (std::uint64_t seed : {std::uint64_t{1}, std::uint64_t{2}}) {
    RobustOptions options;
    options.seed = seed;
    const RobustFit fit =
        fitRobustly(frame.matches, {{Stage::Library, kView}}, frame.prior, options);
    EXPECT_EQ(fit.origin.grounds, Grounds::Continued);
    EXPECT_EQ(fit.origin.stage, Stage::Library);
    EXPECT_EQ(fit.origin.chance, searched.origin.chance);
    EXPECT_EQ(fit.freedom, kNormalFreedom);
    EXPECT_EQ(fit.good, searched.good);
    EXPECT_EQ(fit.goodCount, 38u);
    EXPECT_NEAR(fit.sigma, searched.sigma, 0.02 * kNoise);
    for (std::size_t i = 0; i < 9; ++i) {
      EXPECT_NEAR(fit.h[i / 3][i % 3], searched.h[i / 3][i % 3], 0.02 * kNoise);
    }
  }
}

// No four matches so close to one line are a sample: draws from them do not end before their budget
// is spent.
TEST(KeepsKnown, SparesTheSamples) {
  errors::Random random(20240718);
  Matches matches;
  for (int i = 0; i < 100; ++i) {
    const Point base = {-1.0 + i / 50.0, 2e-5 * (random.uniform() - 0.5)};
    matches.add({base, {base.x + random.normalLength(kNoise) - kNoise, base.y}});
  }
  const std::vector<Start> starts = {{Stage::Neighbour, kIdentity}};
  const Prior prior;
  MixtureSearch search(matches, prior);
  search.from(starts.front());
  ASSERT_TRUE(search.found());
  const double sigma = search.best().errors.sigma();
  const auto spendsAll = [&](double odds, double recentSigma) {
    Prior prior;
    prior.odds.assign(matches.size(), odds);
    prior.recentSigma = recentSigma;
    prior.freedom = kNormalFreedom;
    const RobustFit fit = fitRobustly(matches, starts, prior, {});
    EXPECT_EQ(fit.origin.grounds, Grounds::Searched);
    EXPECT_EQ(fit.origin.stage, Stage::Neighbour);
    return fit.origin.budgetSpent;
  };
  EXPECT_FALSE(spendsAll(8.0, sigma / 1.4));
  EXPECT_TRUE(spendsAll(8.0, sigma / 1.6));
  EXPECT_TRUE(spendsAll(7.9, sigma / 1.4));
}

TEST(KeepsKnown, SparesAnotherStart) {
  Frame frame(40, 2, 30);
  int asked = 0;
  const AnotherStart another = [&]() -> std::optional<Start> {
    ++asked;
    return Start{Stage::Library, kView};
  };
  const auto groundsOf = [&] {
    const std::vector<Start> starts = {{Stage::Neighbour, kView}};
    return fitRobustly(frame.matches, starts, frame.prior, {}, another).origin.grounds;
  };
  EXPECT_EQ(groundsOf(), Grounds::Continued);
  frame.prior.freedom = 0;
  EXPECT_EQ(groundsOf(), Grounds::Searched);
  EXPECT_EQ(asked, 0);
  frame.prior.odds.assign(frame.matches.size(), 7.9);
  EXPECT_EQ(groundsOf(), Grounds::Searched);
  EXPECT_EQ(asked, 1);
}

// As many others are looked at, but where they agree on nothing there is nothing else to find.
TEST(KeepsKnown, SparesTheRestOfTheSearchBesideAsManyStrays) {
  Frame frame(40, 0, 45);
  int asked = 0;
  const AnotherStart another = [&]() -> std::optional<Start> {
    ++asked;
    return std::nullopt;
  };
  const auto originOf = [&] {
    const std::vector<Start> starts = {{Stage::Neighbour, kView}};
    return fitRobustly(frame.matches, starts, frame.prior, {}, another).origin;
  };
  EXPECT_EQ(originOf().grounds, Grounds::Searched);
  EXPECT_EQ(asked, 0);
  for (std::size_t i = 40; i < 85; ++i) {
    Match match = frame.matches[i];
    match.present = map(away(), match.base);
    frame.matches.set(i, match);
    frame.prior.odds[i] = 1.0;
  }
  originOf();
  EXPECT_EQ(asked, 1);
}
