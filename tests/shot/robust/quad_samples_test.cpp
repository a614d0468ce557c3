// SPDX-License-Identifier: BSD-3-Clause
#include "shot/robust/quad_samples.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>
#include <set>
#include <vector>

#include "shot/fit/residuals.h"
#include "tests/shot/robust/random_errors.h"

using namespace cornerpin;

namespace {

constexpr std::uint32_t kSeed = 20240714;

// Errors by which a transform through four matches is told from that through four others.
Matches jitteredMatches(int count) {
  errors::Random random(kSeed);
  Matches matches;
  for (int i = 0; i < count; ++i) {
    const Point base = random.place();
    const double angle = random.angle();
    matches.add(errors::matchAt(base, errors::kView, random.normalLength(1e-3), angle));
  }
  return matches;
}

// The matches that a sample is exact for.
std::set<std::size_t> metBy(const Homography& h, const Matches& matches) {
  std::set<std::size_t> met;
  for (std::size_t i = 0; i < matches.size(); ++i) {
    if (squaredResidual(matches[i], h) < 1e-18) met.insert(i);
  }
  return met;
}

// What the numbers say: below each bound the upper half of a number times it, until four differ.
std::set<std::size_t> fourOf(std::mt19937_64& random, std::uint64_t pool) {
  std::set<std::size_t> four;
  while (four.size() < 4) four.insert(((random() >> 32) * pool) >> 32);
  return four;
}

// Of confidences 0, 7, 14 .. modulo the count, the places of the matches from the highest on.
std::vector<double> confidences(std::size_t count) {
  std::vector<double> result(count);
  for (std::size_t i = 0; i < count; ++i) result[i] = static_cast<double>(7 * i % count);
  return result;
}

// Whether samples of these four matches are transforms.
bool isDrawn(const Quad& base, const Quad& present) {
  Matches matches;
  for (std::size_t i = 0; i < 4; ++i) matches.add({base[i], present[i]});
  QuadSamples samples(matches, {}, 1);
  Homography h;
  const bool first = samples.draw(h);
  for (int i = 0; i < 20; ++i) EXPECT_EQ(samples.draw(h), first) << "in whatever order";
  return first;
}

std::vector<std::size_t> firstOf(std::size_t count) {
  std::vector<std::size_t> indices(count);
  std::iota(indices.begin(), indices.end(), std::size_t{0});
  return indices;
}

const Quad kSquare = {{{-1, -1}, {1, -1}, {1, 1}, {-1, 1}}};

// Three corners within a triangle of half this area, and one far off their line.
Quad thin(double twiceArea) { return {{{-1, 0}, {1, 0}, {0.2, twiceArea / 2}, {0.1, -1}}}; }

}  // namespace

TEST(QuadSamples, AreExactForTheFourThatTheNumbersChoose) {
  constexpr std::size_t kCount = 30;
  const Matches matches = jitteredMatches(kCount);
  const std::vector<double> confidence = confidences(kCount);
  std::vector<std::size_t> ranked(kCount);
  for (std::size_t i = 0; i < kCount; ++i) {
    ranked[kCount - 1 - static_cast<std::size_t>(confidence[i])] = i;
  }
  QuadSamples samples(matches, confidence, 5);
  std::mt19937_64 random(5);
  for (std::size_t drawn = 0; drawn < 400; ++drawn) {
    const std::size_t group = std::min<std::size_t>(kCount, 5 + drawn / 10);
    std::set<std::size_t> expected;
    for (std::size_t rank : fourOf(random, drawn % 2 == 0 ? group : kCount)) {
      expected.insert(ranked[rank]);
    }
    Homography h;
    if (samples.draw(h)) {
      const std::set<std::size_t> met = metBy(h, matches);
      EXPECT_TRUE(std::includes(met.begin(), met.end(), expected.begin(), expected.end())) << drawn;
      EXPECT_EQ(h[2][2], 1.0);
    }
  }
}

TEST(QuadSamples, DrawEveryOtherOneFromTheMostConfidentFive) {
  constexpr std::size_t kCount = 40;
  const Matches matches = jitteredMatches(kCount);
  std::vector<double> confidence(kCount, 0.5);
  const std::set<std::size_t> most = {3, 8, 21, 22, 39};
  for (std::size_t i : most) confidence[i] = 0.9;
  int found = 0;
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    QuadSamples samples(matches, confidence, seed);
    Homography h;
    for (int drawn = 0; drawn < 10; ++drawn) {
      if (!samples.draw(h) || drawn % 2 == 1) continue;
      const std::set<std::size_t> met = metBy(h, matches);
      EXPECT_TRUE(std::includes(most.begin(), most.end(), met.begin(), met.end())) << seed;
      ++found;
    }
  }
  EXPECT_GT(found, 50);
}

TEST(QuadSamples, DrawFromTheFirstMatchesWhereAllAreAlike) {
  const Matches matches = jitteredMatches(40);
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    QuadSamples alike(matches, std::vector<double>(40, 0.5), seed);
    QuadSamples unknown(matches, {}, seed);
    Homography a, b;
    if (!alike.draw(a)) continue;
    ASSERT_TRUE(unknown.draw(b));
    EXPECT_EQ(a, b);
    EXPECT_LT(*metBy(a, matches).rbegin(), 5u);
  }
}

TEST(QuadSamples, RefuseThreeMatchesNearlyOnOneLineInEitherFrame) {
  EXPECT_TRUE(isDrawn(thin(1.02e-4), thin(1.0)));
  EXPECT_FALSE(isDrawn(thin(0.98e-4), thin(1.0)));
  EXPECT_TRUE(isDrawn(thin(1.0), thin(1.02e-4)));
  EXPECT_FALSE(isDrawn(thin(1.0), thin(0.98e-4)));
}

TEST(QuadSamples, RefuseAQuadThatIsTurnedOver) {
  EXPECT_TRUE(isDrawn(kSquare, {{{-1, -0.5}, {1, -1}, {1, 1}, {-1, 0.5}}}));
  EXPECT_FALSE(isDrawn(kSquare, {{{1, -1}, {-1, -1}, {-1, 1}, {1, 1}}})) << "a mirror image";
  EXPECT_FALSE(isDrawn(kSquare, {{{-1, -1}, {1, -1}, {-1, 1}, {1, 1}}})) << "crossed";
  EXPECT_FALSE(isDrawn(kSquare, {{{-1, -1}, {1, -1}, {-0.2, -0.2}, {-1, 1}}})) << "dented";
}

TEST(QuadSamples, TurnAQuadByAnyAngle) {
  EXPECT_TRUE(isDrawn(kSquare, {{{1, 1}, {-1, 1}, {-1, -1}, {1, -1}}}));
}

TEST(QuadSamples, CountTheDrawsFromAllMatches) {
  // The group grows from 5 by one every ten draws: it has all 30 from the 250th draw on.
  const Matches matches = jitteredMatches(30);
  QuadSamples samples(matches, {}, 1);
  Homography h;
  for (int i = 0; i < 250; ++i) samples.draw(h);
  EXPECT_EQ(samples.drawnFromAll(), 125u);
  for (int i = 0; i < 50; ++i) samples.draw(h);
  EXPECT_EQ(samples.drawnFromAll(), 175u);
}

TEST(ForAllFours, CallsWithEveryFourOnce) {
  std::set<std::set<std::size_t>> fours;
  std::size_t calls = 0;
  forAllFours(7, [&](const std::array<std::size_t, 4>& four) {
    fours.insert({four.begin(), four.end()});
    ++calls;
  });
  EXPECT_EQ(calls, 35u);
  EXPECT_EQ(fours.size(), 35u);
  EXPECT_EQ(*fours.begin(), (std::set<std::size_t>{0, 1, 2, 3}));
  EXPECT_EQ(*fours.rbegin(), (std::set<std::size_t>{3, 4, 5, 6}));
  EXPECT_EQ(QuadSamples(jitteredMatches(7), {}, 1).quadruples(), 35.0);
}

// Until the chance that no draw was four of the good ones falls below one in a million, to the
// draw.
TEST(QuadSamplesNeeded, MissesFourGoodMatchesWithAChanceBelowOneInAMillion) {
  for (std::size_t count : {8u, 31u, 60u}) {
    const Matches matches = jitteredMatches(static_cast<int>(count));
    const QuadSamples samples(matches, {}, 1);
    for (std::size_t good = 5; good <= count; good += 3) {
      double chance = 1.0;  // that four drawn one after the other are good
      for (std::size_t i = 0; i < 4; ++i) {
        chance *= static_cast<double>(good - i) / static_cast<double>(count - i);
      }
      const std::size_t draws = samples.needed(firstOf(good));
      if (draws == QuadSamples::kMost || draws == QuadSamples::kFewest) continue;
      const double missed = static_cast<double>(draws) * std::log1p(-chance);
      EXPECT_LT(missed, std::log(1e-6)) << good << " of " << count;
      EXPECT_GT(missed, std::log(1e-6) + 2.0 * std::log1p(-chance)) << good << " of " << count;
    }
  }
}

TEST(QuadSamplesNeeded, IsWithinTheFewestAndTheMost) {
  const Matches matches = jitteredMatches(100);
  const QuadSamples samples(matches, {}, 1);
  EXPECT_EQ(samples.needed({}), QuadSamples::kMost);
  EXPECT_EQ(samples.needed(firstOf(4)), QuadSamples::kMost);
  EXPECT_EQ(samples.needed(firstOf(100)), QuadSamples::kFewest);
}

// Of so many good ones the same, down to a lower floor.
TEST(QuadSamplesNeeded, GoesBelowTheFewestWhereItIsKnownHowManyAreGood) {
  const Matches matches = jitteredMatches(60);
  const QuadSamples samples(matches, {}, 1);
  std::size_t between = 0;
  for (std::size_t good = 5; good <= 60; ++good) {
    const double chance = static_cast<double>(good * (good - 1) * (good - 2) * (good - 3)) /
                          (60.0 * 59.0 * 58.0 * 57.0);
    const double draws = std::ceil(std::log(1e-6) / std::log(1.0 - chance));
    const std::size_t needed = samples.needed(good);
    if (draws >= 500000.0) {
      EXPECT_EQ(needed, QuadSamples::kMost) << good;
    } else {
      EXPECT_NEAR(static_cast<double>(needed), std::max(draws, 32.0), 1e-6 * draws + 0.5) << good;
    }
    between += needed > 32 && needed < QuadSamples::kFewest;
  }
  EXPECT_GT(between, 5U);
  EXPECT_EQ(samples.needed(3), QuadSamples::kMost);
}

TEST(QuadSamplesNeeded, CountsOnlyTheQuadruplesThatLeadToATransform) {
  errors::Random random(kSeed);
  Matches spread;
  Matches inLine;
  for (int i = 0; i < 40; ++i) {
    const Point base = random.place();
    const Point onLine = {base.x, i < 6 ? 0.3 * base.x : base.y};
    spread.add({base, base});
    inLine.add({onLine, onLine});
  }
  // Of 70 those with at most two of the six: 15 with both of the others.
  const double usable = 15.0 / 70.0;
  const auto all = static_cast<double>(QuadSamples(spread, {}, 1).needed(firstOf(8)));
  const auto fewer = static_cast<double>(QuadSamples(inLine, {}, 1).needed(firstOf(8)));
  EXPECT_NEAR(fewer, all / usable, 1e-3 * fewer);
}
