// SPDX-License-Identifier: BSD-3-Clause
#include "shot/robust/quad_samples.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <set>

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

// So many that the chance of having missed falls to 1 in 1,000, to the sample.
TEST(QuadSamplesNeeded, MissesFourGoodMatchesWithAChanceOfOneInAThousand) {
  for (std::size_t count : {7u, 20u, 31u, 100u, 1000u}) {
    for (std::size_t good = 1; good <= count; ++good) {
      const double share = static_cast<double>(good) / static_cast<double>(count);
      const double missed = 1.0 - std::pow(share, 4);
      double chance = missed;  // after one sample more
      std::size_t samples = 0;
      for (; samples < 5000 && chance >= 1e-3; ++samples) chance *= missed;
      EXPECT_EQ(QuadSamples::needed(good, count), std::max<std::size_t>(samples, 50))
          << good << " of " << count;
    }
  }
}

TEST(QuadSamplesNeeded, IsWithinFiftyAndFiveThousand) {
  EXPECT_EQ(QuadSamples::needed(0, 100), 5000u);
  EXPECT_EQ(QuadSamples::needed(4, 1000000), 5000u);
  EXPECT_EQ(QuadSamples::needed(100, 100), 50u);
  // log 1e-3 / log (1 - 1/16) = 107.03.
  EXPECT_EQ(QuadSamples::needed(50, 100), 107u);
}
