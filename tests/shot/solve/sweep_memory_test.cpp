// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/sweep_memory.h"

#include <gtest/gtest.h>

#include "tests/shot/lists.h"

using namespace cornerpin;

namespace {

double recentOf(const std::vector<double>& sigmas) {
  SweepMemory memory(0);
  for (double sigma : sigmas) memory.rememberErrors(sigma, 16);
  return memory.priorFor({}).recentSigma;
}

double lowOf(const std::vector<double>& sigmas) {
  SweepMemory memory(0);
  for (double sigma : sigmas) memory.rememberErrors(sigma, 16);
  return memory.priorFor({}).lowSigma;
}

// 1 .. count in an order in which neither end stands where it belongs.
std::vector<double> shuffled(int count) {
  std::vector<double> numbers;
  for (int i = 0; i < count; ++i) numbers.push_back((i * 7 + 5) % count + 1);
  return numbers;
}

Matches seenTracks(const std::vector<int>& tracks, double weight = 1.0) {
  Matches matches;
  for (int track : tracks) matches.add({{}, {}, weight, track});
  return matches;
}

}  // namespace

TEST(SweepMemory, HasNoSigmaBeforeAFrameWasSearched) {
  EXPECT_EQ(recentOf({}), 0.0);
  EXPECT_EQ(lowOf({}), 0.0);
}

TEST(SweepMemory, TakesTheLowerMiddleOfTheFirstSigmas) {
  EXPECT_EQ(recentOf({4}), 4.0);
  EXPECT_EQ(recentOf({4, 2}), 2.0);
  EXPECT_EQ(recentOf({4, 2, 9}), 4.0);
  EXPECT_EQ(recentOf({4, 2, 9, 3}), 3.0);
}

// Whatever one frame or two are like, the recent sigma stays that of the others.
TEST(SweepMemory, TakesTheMedianOfTheLastFiveSigmas) {
  EXPECT_EQ(recentOf({1, 900, 2, 800, 3}), 3.0);
  EXPECT_EQ(recentOf({1, 1, 1, 9, 8, 7, 6, 5}), 7.0);
  EXPECT_EQ(recentOf({1, 9, 8, 7, 1, 1}), 7.0);  // of six the first does not count
  EXPECT_EQ(recentOf({9, 9, 1, 1, 9, 1}), 1.0);
}

// The one that a tenth of the others, rounded down, are below.
TEST(SweepMemory, TakesTheLowestTenthsSigmaOfAllFrames) {
  EXPECT_EQ(lowOf({5, 3, 4}), 3.0);
  EXPECT_EQ(lowOf(shuffled(10)), 1.0);
  EXPECT_EQ(lowOf(shuffled(11)), 2.0);
  EXPECT_EQ(lowOf(shuffled(20)), 2.0);
  EXPECT_EQ(lowOf(shuffled(22)), 3.0);
}

TEST(SweepMemory, HasEvenOddsForATrackThatItHasNotSeen) {
  const Prior prior = SweepMemory(2).priorFor(seenTracks({1}, 3.0));
  EXPECT_EQ(prior.odds, (std::vector<double>{1.0}));
  EXPECT_EQ(prior.confidence, (std::vector<double>{1.5}));  // half of its weight
}

TEST(SweepMemory, CountsTheFramesInWhichATrackWasGood) {
  SweepMemory memory(3);
  memory.rememberGood(seenTracks({0, 2}), {true, false});
  memory.rememberGood(seenTracks({0, 1, 2}), {true, true, false});
  memory.rememberGood(seenTracks({0, 1}), {false, true});
  // Good in 2 frames of 3, in 2 of 2, in none of 2.
  const Prior prior = memory.priorFor(seenTracks({2, 0, 1}, 0.5));
  EXPECT_EQ(prior.odds, (std::vector<double>{1.0 / 3, 3.0 / 2, 3.0 / 1}));
  EXPECT_EQ(prior.confidence,
            (std::vector<double>{0.5 * (1.0 / 4), 0.5 * (3.0 / 5), 0.5 * (3.0 / 4)}));
}

TEST(SweepMemory, KnowsTheTailsOfTheFrameSearchedLast) {
  SweepMemory memory(0);
  EXPECT_EQ(memory.priorFor({}).freedom, 0);
  memory.rememberErrors(2.0, 4);
  memory.rememberErrors(1.0, 2);
  EXPECT_EQ(memory.priorFor({}).freedom, 2);
}

// Four tracks leave nothing over.
TEST(SweepMemory, TakesNoFrameOfFewTracksForLessNoisyThanTheRecentOnes) {
  RobustFit few;
  few.origin.grounds = Grounds::TooFew;
  few.sigma = 0.5 * kLikelySigma;
  SweepMemory memory(0);
  EXPECT_EQ(memory.sigmaOf(few), kLikelySigma);
  for (double sigma : {3.0, 5.0, 4.0}) memory.rememberErrors(sigma, 16);
  EXPECT_EQ(memory.sigmaOf(few), 4.0);
  few.sigma = 7.0;
  EXPECT_EQ(memory.sigmaOf(few), 7.0);
  few.sigma = 0.5;
  for (Grounds told : {Grounds::Searched, Grounds::NoBadTrack}) {
    few.origin.grounds = told;
    EXPECT_EQ(memory.sigmaOf(few), 0.5);
  }
}
