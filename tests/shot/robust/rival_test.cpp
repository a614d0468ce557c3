// SPDX-License-Identifier: BSD-3-Clause
#include "shot/robust/rival.h"

#include <gtest/gtest.h>

#include <vector>

#include "shot/robust/mixture_search.h"
#include "shot/robust/robust_fit.h"
#include "tests/shot/robust/random_errors.h"

using namespace cornerpin;

namespace {

// Matches around the view; then so many that are moved alike; then strays.
Matches groups(int kept, int moved, int strays, std::uint32_t seed) {
  errors::Random random(seed);
  Matches matches;
  for (int i = 0; i < kept + moved + strays; ++i) {
    const Point base = random.place();
    const double length = random.normalLength(1e-3);
    Match match = errors::matchAt(base, errors::kView, length, random.angle());
    if (i >= kept) match.present = {match.present.x + 0.15, match.present.y - 0.05};
    if (i >= kept + moved) match.present = random.place();
    matches.add(match);
  }
  return matches;
}

bool isRivalled(const Matches& matches, const Prior& prior = {}, std::uint64_t seed = 1) {
  MixtureSearch search(matches, prior);
  search.fromSamples(seed);
  EXPECT_TRUE(search.found());
  return hasRival(matches, search.best(), prior, seed);
}

constexpr std::uint32_t kShots = 10;

}  // namespace

TEST(HasRival, IsSoWhereTwoGroupsAreEquallyLarge) {
  for (std::uint32_t seed = 1; seed <= kShots; ++seed) {
    EXPECT_TRUE(isRivalled(groups(10, 10, 0, seed), {}, seed)) << seed;
    EXPECT_TRUE(isRivalled(groups(30, 30, 20, seed), {}, seed)) << seed;
  }
}

TEST(HasRival, IsNotSoWhereOneGroupIsLarger) {
  for (std::uint32_t seed = 1; seed <= kShots; ++seed) {
    EXPECT_FALSE(isRivalled(groups(14, 10, 0, seed))) << seed;
    EXPECT_FALSE(isRivalled(groups(14, 10, 20, seed))) << seed;
  }
}

TEST(HasRival, IsNotSoWhereTheOthersAreStrays) {
  for (std::uint32_t seed = 1; seed <= kShots; ++seed) {
    EXPECT_FALSE(isRivalled(groups(20, 0, 40, seed))) << seed;
    EXPECT_FALSE(isRivalled(groups(40, 0, 0, seed))) << seed;
    EXPECT_FALSE(isRivalled(groups(7, 0, 6, seed))) << seed;
  }
}

TEST(HasRival, GoesByWhatFramesBeforeSayOfTheTracks) {
  const Matches matches = groups(10, 10, 0, 1);
  Prior prior;
  for (int i = 0; i < 20; ++i) {
    prior.odds.push_back(i < 10 ? 20.0 : 0.05);
    prior.confidence.push_back(1.0);
  }
  EXPECT_FALSE(isRivalled(matches, prior));
}

// Among the strays there is nothing but what leads back.
TEST(HasRivalOrBetter, IsSoToo) {
  const Prior prior;  // looked at as long as there is a search
  const Matches rivals = groups(20, 20, 0, 1);
  MixtureSearch ofRivals(rivals, prior);
  ofRivals.fromSamples(1);
  int back = 0;
  EXPECT_TRUE(hasRivalOrBetter(rivals, ofRivals.best(), {}, 1));
  for (std::uint32_t seed = 1; seed <= kShots; ++seed) {
    const Matches matches = groups(20, 0, 40, seed);
    MixtureSearch search(matches, prior);
    search.fromSamples(1);
    MixtureFit best = search.best();
    EXPECT_FALSE(hasRivalOrBetter(matches, best, {}, 1)) << seed;
    best.score += 2.5;
    back += hasRivalOrBetter(matches, best, {}, 1);
    EXPECT_FALSE(hasRival(matches, best, {}, 1)) << seed;
  }
  EXPECT_GT(back, 0);
}

TEST(HasRival, TakesSixMatchesAndTwoFewerThanTheGoodOnesAtLeast) {
  EXPECT_TRUE(isTooFewForRival(17, 20));
  EXPECT_FALSE(isTooFewForRival(18, 20));
  EXPECT_TRUE(isTooFewForRival(5, 4));
  EXPECT_FALSE(isTooFewForRival(6, 4));
  EXPECT_FALSE(isTooFewForRival(6, 1));
}

TEST(RobustFit, SaysWhetherItHasARival) {
  const auto originOf = [](const Matches& matches) {
    Prior prior;
    prior.confidence.assign(matches.size(), 1.0);
    return fitRobustly(matches, {{Stage::Neighbour, kIdentity}}, prior, {}).origin;
  };
  EXPECT_TRUE(originOf(groups(10, 10, 0, 1)).rivalled);
  EXPECT_FALSE(originOf(groups(14, 10, 0, 1)).rivalled);
}
