// SPDX-License-Identifier: BSD-3-Clause
#include "shot/compare/axis_change.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/shot/random.h"

using namespace cornerpin;

namespace {

constexpr Allowed kThreeDecimals = {0.0005, 0.0005, 1e-6};

// Numbers with three decimals, and what becomes of them, with three decimals too.
AxisPairs pairsBy(double times, double plus, std::uint32_t seed, int count = 50) {
  made::Random random(seed);
  AxisPairs pairs;
  for (int i = 0; i < count; ++i) {
    const double exact = random.real(0.0, 1900.0);
    pairs.first.push_back(std::round(1e3 * exact) / 1e3);
    pairs.second.push_back(std::round(1e3 * (times * exact + plus)) / 1e3);
  }
  return pairs;
}

void expectChange(const AxisPairs& pairs, double times, double plus) {
  const AxisChange found = axisChange(pairs, kThreeDecimals);
  EXPECT_EQ(found.times, times) << times << " " << plus;
  EXPECT_EQ(found.plus, plus) << times << " " << plus;
}

}  // namespace

TEST(AxisChange, IsFoundWithRoundNumbers) {
  expectChange(pairsBy(1.0, 0.0, 1), 1.0, 0.0);
  expectChange(pairsBy(1.0, 0.5, 2), 1.0, 0.5);
  expectChange(pairsBy(1.0, -17.0, 3), 1.0, -17.0);
  expectChange(pairsBy(-1.0, 1080.0, 4), -1.0, 1080.0);
  expectChange(pairsBy(-1.0, 1079.5, 5), -1.0, 1079.5);
  expectChange(pairsBy(0.5, 0.0, 6), 0.5, 0.0);
  expectChange(pairsBy(2.0, 0.0, 7), 2.0, 0.0);
  expectChange(pairsBy(-2.0, 2160.0, 8), -2.0, 2160.0);
  expectChange(pairsBy(0.5, 0.25, 9), 0.5, 0.25);
}

TEST(AxisChange, FindsScalesOverAWholeNumber) {
  made::Random random(3);
  AxisPairs pairs;
  for (int i = 0; i < 40; ++i) {
    pairs.first.push_back(random.real(0.0, 1920.0));
    pairs.second.push_back(pairs.first.back() / 1920.0);
  }
  const AxisChange found = axisChange(pairs, {0.0, 0.0, 1e-9});
  EXPECT_EQ(found.times, 1.0 / 1920.0);
  EXPECT_EQ(found.plus, 0.0);
}

TEST(AxisChange, IsNotChangedByAFifthThatIsBad) {
  for (std::uint32_t seed = 0; seed < 40; ++seed) {
    const bool flips = seed % 2 == 0;
    AxisPairs pairs = seed % 4 < 2 ? pairsBy(flips ? -1.0 : 1.0, 540.0, seed)
                                   : pairsBy(flips ? -0.5 : 0.25, 540.0, seed);
    const AxisChange good = axisChange(pairs, kThreeDecimals);
    made::Random random(seed + 100);
    for (std::size_t i = 0; i < 10; ++i) pairs.second[5 * i + seed % 5] = random.real(0.0, 2000.0);
    const AxisChange found = axisChange(pairs, kThreeDecimals);
    EXPECT_NEAR(found.times, good.times, 1e-6) << seed;
    EXPECT_NEAR(found.plus, good.plus, 1e-3) << seed;
    EXPECT_EQ(agreeing(pairs, found, kThreeDecimals), 40U) << seed;
  }
}

TEST(AxisChange, TakesAScaleOfThreeCoordinatesOnly) {
  const AxisChange two = axisChange({{10.0, 50.0, 10.0}, {20.0, 100.0, 20.0}}, kThreeDecimals);
  EXPECT_FALSE(two.scales());
  const AxisChange three = axisChange({{10.0, 50.0, 30.0}, {20.0, 100.0, 60.0}}, kThreeDecimals);
  EXPECT_EQ(three.times, 2.0);
}

TEST(AxisChange, IsMovedRatherThanFlippedWhereBothDo) {
  const AxisChange found = axisChange({{200.0, 200.0}, {880.0, 880.0}}, kThreeDecimals);
  EXPECT_EQ(found.times, 1.0);
  EXPECT_EQ(found.plus, 680.0);
}

TEST(AxisChange, IsNoneWithoutPairsAndForOthers) {
  EXPECT_TRUE(axisChange({}, kThreeDecimals).isNone());
  AxisPairs pairs;
  made::Random random(8);
  for (int i = 0; i < 60; ++i) {
    const double a = random.real(0.0, 1000.0);
    const double b = random.real(0.0, 1000.0);
    pairs.first.push_back(a);
    pairs.second.push_back(b);
  }
  EXPECT_TRUE(axisChange(pairs, kThreeDecimals).isNone());
}

TEST(Allowed, IsLessThanAStepOfTheLastDigit) {
  EXPECT_LT(kThreeDecimals.at(1.0), 0.001);
  EXPECT_GT(kThreeDecimals.at(1.0), 0.000999);
  EXPECT_GT(kThreeDecimals.at(-3.0), 0.001999);
  EXPECT_LT(kThreeDecimals.at(-3.0), 0.002);
  EXPECT_EQ((Allowed{0.0, 0.0, 0.25}.at(100.0)), 0.25);
}
