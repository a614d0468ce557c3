// SPDX-License-Identifier: BSD-3-Clause
#include "shot/robust/sample_score.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "shot/fit/residuals.h"
#include "tests/shot/robust/random_errors.h"
#include "tests/support/processor.h"

using namespace cornerpin;
using errors::kView;

namespace {

constexpr double kLeast = 1e-3;
constexpr double kNoBound = HUGE_VAL;

// The exponent, and the mantissa as if the logarithm were straight in between.
double roughLog2(double value) {
  int exponent = 0;
  const double mantissa = std::frexp(value, &exponent);  // from 0.5 on, below 1
  return exponent - 1 + (2.0 * mantissa - 1.0);
}

double plainly(const Matches& matches, const std::vector<double>& votes, const Homography& h) {
  const double least = kLeast * kLeast;
  double sum = 0.0;
  for (std::size_t i = 0; i < matches.size(); ++i) {
    const bool front = denominator(h, matches[i].base) > kHorizon;
    const double square = front ? squaredResidual(matches[i], h) : 4.0;
    sum += votes[i] * (roughLog2(std::min(square, 4.0) + least) - roughLog2(least));
  }
  return sum;
}

Matches scattered(int count) {
  errors::Random random(20240717);
  Matches matches;
  for (int i = 0; i < count; ++i) {
    const Point base = random.place();
    const double length = i % 3 == 0 ? random.uniform() : random.normalLength(1e-3);
    matches.add(errors::matchAt(base, kView, length, random.angle()));
  }
  return matches;
}

std::vector<double> votesFor(std::size_t count) {
  std::vector<double> votes;
  for (std::size_t i = 0; i < count; ++i) votes.push_back(0.5 + 0.1 * static_cast<double>(i % 11));
  return votes;
}

}  // namespace

TEST(SampleScore, IsTheSumOfTheLogarithmsAboveTheLeast) {
  for (int count : {4, 15, 16, 17, 100}) {
    const Matches matches = scattered(count);
    const std::vector<double> votes = votesFor(matches.size());
    const double expected = plainly(matches, votes, kView);
    EXPECT_NEAR(SampleScore(matches, votes, kLeast).of(kView, kNoBound), expected, 1e-3 * expected)
        << count;
  }
}

TEST(SampleScore, IsZeroForExactMatches) {
  const Matches matches = {{{0, 0}, {0, 0}}, {{1, 0}, {1, 0}}, {{0.5, 0.25}, {0.5, 0.25}}};
  EXPECT_EQ(SampleScore(matches, {1, 1, 1}, kLeast).of(kIdentity, kNoBound), 0.0);
}

TEST(SampleScore, TakesAllThatIsFarOrBehindTheHorizonForEquallyBad) {
  const Homography h = {{{1, 0, 0}, {0, 1, 0}, {1, 0, 1}}};
  const SampleScore far({{{0, 0}, {2, 0}}}, {1}, kLeast);
  const SampleScore farther({{{0, 0}, {200, 0}}}, {1}, kLeast);
  const SampleScore behind({{{-2, 0}, {2, 0}}}, {1}, kLeast);
  const SampleScore onIt({{{-1, 0}, {0, 0}}}, {1}, kLeast);
  EXPECT_EQ(farther.of(h, kNoBound), far.of(h, kNoBound));
  EXPECT_EQ(behind.of(h, kNoBound), far.of(h, kNoBound));
  EXPECT_EQ(onIt.of(h, kNoBound), far.of(h, kNoBound));
  const SampleScore nearer({{{0, 0}, {1, 0}}}, {1}, kLeast);
  EXPECT_NEAR(far.of(h, kNoBound) - nearer.of(h, kNoBound), 2.0, 1e-3);
}

TEST(SampleScore, EndsAboveTheBound) {
  const Matches matches = scattered(400);
  const SampleScore score(matches, std::vector<double>(400, 1.0), kLeast);
  const double whole = score.of(kView, kNoBound);
  EXPECT_EQ(score.of(kView, whole), whole);
  EXPECT_GT(score.of(kView, 0.999 * whole), 0.999 * whole);
  const double early = score.of(kView, 0.25 * whole);
  EXPECT_GT(early, 0.25 * whole);
  EXPECT_LT(early, 0.5 * whole) << "without looking at the rest";
}

// Also of matches behind the horizon.
TEST(SampleScore, HasTheSameBitsInEveryVariant) {
  const Homography tilted = {{{1, 0.1, 0}, {0, 1, 0.2}, {1, 0.5, 1}}};
  for (int count : {1, 7, 16, 33, 300}) {
    const Matches matches = scattered(count);
    const std::vector<double> votes = votesFor(matches.size());
    for (const Homography& h : {kView, tilted}) {
      const SampleScore plain(matches, votes, kLeast, sampleScoreVariants().front());
      const double whole = plain.of(h, kNoBound);
      for (const SampleScoreVariant& variant : sampleScoreVariants()) {
        const SampleScore score(matches, votes, kLeast, variant);
        EXPECT_EQ(score.of(h, kNoBound), whole) << variant.name;
        EXPECT_EQ(score.of(h, 0.5 * whole), plain.of(h, 0.5 * whole)) << variant.name;
      }
    }
  }
}

TEST(SampleScoreVariants, AreThoseThatTheProcessorRuns) {
  std::vector<std::string> expected = {"base"};
  if (processor::flags().count("avx2") > 0) expected.emplace_back("avx2");
  std::vector<std::string> names;
  for (const SampleScoreVariant& variant : sampleScoreVariants()) names.emplace_back(variant.name);
  EXPECT_EQ(names, expected);
}

TEST(SampleScoreVariants, AreDifferentFunctions) {
  const auto& variants = sampleScoreVariants();
  for (std::size_t i = 1; i < variants.size(); ++i) EXPECT_NE(variants[i].run, variants[i - 1].run);
}
