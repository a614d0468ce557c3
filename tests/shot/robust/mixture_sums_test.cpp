// SPDX-License-Identifier: BSD-3-Clause
#include "shot/robust/mixture_sums.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "shot/fit/residuals.h"
#include "tests/shot/robust/random_errors.h"
#include "tests/support/processor.h"

using namespace cornerpin;
using errors::kTwoPi;

namespace {

constexpr double kSpread = 2e-3;
constexpr double kStrays = 0.2;
constexpr double kArea = 3.0;

// Matches of which every third is far off, each with other weights, votes and odds.
struct Frame {
  explicit Frame(int count) {
    errors::Random random(7);
    for (int i = 0; i < count; ++i) {
      const Point base = random.place();
      const double angle = random.angle();
      const double length = random.normalLength(i % 3 == 0 ? 0.3 : kSpread);
      Match match = errors::matchAt(base, errors::kView, length, angle);
      match.weight = 0.5 + 0.01 * i;
      matches.add(match);
      votes.push_back(0.7 + 0.02 * i);
      odds.push_back(0.3 + 0.1 * i);
    }
    votes.resize(matches.squaredWeights().size(), 0.0);
    odds.resize(votes.size(), 1.0);
  }

  MixtureInput at(const Homography& h, int freedom) const {
    const double variance = kSpread * kSpread;
    return {squaresInput(matches, h),
            matches.squaredWeights().data(),
            votes.data(),
            odds.data(),
            freedom,
            1.0 / (freedom * variance),
            (1.0 - kStrays) / (kTwoPi * variance),
            kStrays / kArea};
  }

  Matches matches;
  std::vector<double> votes, odds;
};

// As it is defined, one match after the other.
struct Plain {
  Plain(const Frame& frame, const Homography& h, int freedom) {
    for (std::size_t i = 0; i < frame.matches.size(); ++i) {
      const double f = freedom;
      const double q = squaredResidual(frame.matches[i], h) / (f * std::pow(kSpread, 2));
      const bool front = denominator(h, frame.matches.base()[i]) > kHorizon;
      const double near = front
                              ? frame.odds[i] * (1.0 - kStrays) / (kTwoPi * std::pow(kSpread, 2)) *
                                    std::pow(1.0 + q, -0.5 * (f + 2.0))
                              : 0.0;
      const double share = near / (near + kStrays / kArea);
      const double factor = share * (f + 2.0) / (f * (1.0 + q));
      squaredWeights.push_back(std::pow(frame.matches[i].weight, 2) * factor);
      sums.good += frame.votes[i] * share;
      sums.factors += frame.votes[i] * factor;
      sums.squares += frame.votes[i] * factor * q * f * std::pow(kSpread, 2);
      logLikelihood += frame.votes[i] * std::log(near + kStrays / kArea);
    }
  }

  MixtureSums sums;
  std::vector<double> squaredWeights;
  double logLikelihood = 0.0;
};

// The second puts some matches behind the horizon.
const Homography kTilted = {{{1, 0.1, 0}, {0, 1, 0.1}, {1.5, -0.2, 1}}};

class MixtureSumsOf : public testing::TestWithParam<int> {};

}  // namespace

INSTANTIATE_TEST_SUITE_P(MixtureSums, MixtureSumsOf, testing::Values(1, 2, 4, 16));

TEST_P(MixtureSumsOf, AreThoseOfTheDefinition) {
  const Frame frame(41);
  for (const Homography& h : {errors::kView, kTilted}) {
    const Plain plain(frame, h, GetParam());
    std::vector<double> squaredWeights(frame.votes.size(), -1.0);
    MixtureSums sums;
    const MixtureInput in = frame.at(h, GetParam());
    mixtureVariants().front().weigh(in, squaredWeights.data(), sums);
    EXPECT_NEAR(sums.good, plain.sums.good, 1e-12 * plain.sums.good);
    EXPECT_NEAR(sums.factors, plain.sums.factors, 1e-12 * plain.sums.factors);
    EXPECT_NEAR(sums.squares, plain.sums.squares, 1e-12 * plain.sums.squares);
    for (std::size_t i = 0; i < squaredWeights.size(); ++i) {
      const double expected = i < 41 ? plain.squaredWeights[i] : 0.0;
      EXPECT_NEAR(squaredWeights[i], expected, 1e-12 * expected) << i;
    }
    EXPECT_NEAR(mixtureVariants().front().logLikelihood(in), plain.logLikelihood,
                1e-13 * std::fabs(plain.logLikelihood));
  }
}

TEST_P(MixtureSumsOf, HaveTheSameBitsInEveryVariant) {
  for (int count : {1, 4, 7, 33, 300}) {
    const Frame frame(count);
    for (const Homography& h : {errors::kView, kTilted}) {
      const MixtureInput in = frame.at(h, GetParam());
      std::vector<double> expected(frame.votes.size());
      MixtureSums sums;
      mixtureVariants().front().weigh(in, expected.data(), sums);
      const double logarithm = mixtureVariants().front().logLikelihood(in);
      for (const MixtureVariant& variant : mixtureVariants()) {
        std::vector<double> squaredWeights(frame.votes.size());
        MixtureSums other;
        variant.weigh(in, squaredWeights.data(), other);
        EXPECT_EQ(squaredWeights, expected) << variant.name;
        EXPECT_EQ(std::memcmp(&sums, &other, sizeof sums), 0) << variant.name;
        EXPECT_EQ(variant.logLikelihood(in), logarithm) << variant.name;
      }
    }
  }
}

// The logarithm of one number alone: all other matches have no vote, strays are as good as certain.
TEST(MixtureSums, TakeLogarithmsToSomeUnitsInTheLastPlace) {
  const Frame frame(4);
  for (double value = 1e-200; value < 1e200; value *= 1.37) {
    MixtureInput in = frame.at(errors::kView, 16);
    const std::vector<double> votes = {1.0, 0.0, 0.0, 0.0};
    in.votes = votes.data();
    in.density = 0.0;
    in.strays = value;
    const double expected = std::log(value);
    EXPECT_NEAR(mixtureVariants().front().logLikelihood(in), expected,
                1e-15 * std::fmax(std::fabs(expected), 1.0));
  }
}

TEST(MixtureVariants, AreThoseThatTheProcessorRuns) {
  std::vector<std::string> expected = {"base"};
  if (processor::flags().count("avx2") > 0) expected.emplace_back("avx2");
  std::vector<std::string> names;
  for (const MixtureVariant& variant : mixtureVariants()) names.emplace_back(variant.name);
  EXPECT_EQ(names, expected);
}

TEST(MixtureVariants, AreDifferentFunctions) {
  const auto& variants = mixtureVariants();
  for (std::size_t i = 1; i < variants.size(); ++i) {
    EXPECT_NE(variants[i].weigh, variants[i - 1].weigh);
    EXPECT_NE(variants[i].logLikelihood, variants[i - 1].logLikelihood);
  }
}
