// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <random>

#include "tests/flags/results.h"
#include "tests/support/same_bits.h"

namespace {

constexpr unsigned kSeed = 111;

Results randomValues(std::mt19937& random) {
  Results in(32);
  for (double& x : in) x = std::uniform_real_distribution<>(-0.9, 0.9)(random);
  return in;
}

TEST(Flags, OfTheIncludingProgramDoNotReachTheLibrary) {
  std::mt19937 random(kSeed);
  for (int trial = 0; trial < 500; ++trial) {
    const Results in = randomValues(random);
    const Results expected = plain::results(in.data());
    const Results actual = reckless::results(in.data());
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
      ASSERT_TRUE(sameBits(actual[i], expected[i])) << "result " << i << ", seed " << kSeed;
    }
  }
}

TEST(Flags, ReachTheArithmeticOfTheIncludingProgram) {
  std::mt19937 random(kSeed);
  int differing = 0;
  for (int trial = 0; trial < 100; ++trial) {
    const Results in = randomValues(random);
    differing +=
        plain::arithmeticOfTheIncluder(in.data()) != reckless::arithmeticOfTheIncluder(in.data());
  }
  EXPECT_GT(differing, 0);
}

}  // namespace
