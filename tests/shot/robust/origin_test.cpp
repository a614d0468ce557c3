// SPDX-License-Identifier: BSD-3-Clause
#include "shot/robust/origin.h"

#include <gtest/gtest.h>

using namespace cornerpin;

namespace {

Origin searched(Stage stage, std::optional<Stage> first, std::size_t firstGood) {
  return {stage, Grounds::Searched, first, firstGood};
}

}  // namespace

TEST(Stage, HasAName) {
  EXPECT_STREQ(nameOf(Stage::Library), "library");
  EXPECT_STREQ(nameOf(Stage::Neighbour), "neighbour");
  EXPECT_STREQ(nameOf(Stage::Sampled), "sampled");
}

TEST(DescribeOrigin, SaysNothingWhereNothingWasDone) { EXPECT_EQ(describe({}, 20, 31), ""); }

TEST(DescribeOrigin, SaysWhyNothingWasSearched) {
  Origin origin;
  origin.grounds = Grounds::TooFew;
  EXPECT_EQ(describe(origin, 5, 5), "too few tracks to tell a bad one");
  origin.grounds = Grounds::NoBadTrack;
  EXPECT_EQ(describe(origin, 31, 31), "no sign of a bad track");
  origin.grounds = Grounds::Continued;
  EXPECT_EQ(describe(origin, 20, 31), "the tracks that were good before agree as they did");
}

TEST(DescribeOrigin, SaysHowManyTracksTheStartFits) {
  EXPECT_EQ(describe(searched(Stage::Library, Stage::Library, 20), 25, 31),
            "the library's solve fits 20 of 31 tracks");
  EXPECT_EQ(describe(searched(Stage::Neighbour, Stage::Neighbour, 20), 25, 31),
            "the neighbour's transform fits 20 of 31 tracks");
}

TEST(DescribeOrigin, AddsHowManyASampleFits) {
  EXPECT_EQ(describe(searched(Stage::Sampled, Stage::Library, 20), 25, 31),
            "the library's solve fits 20 of 31 tracks, this one 25 of 31 tracks");
  EXPECT_EQ(describe(searched(Stage::Sampled, Stage::Neighbour, 4), 25, 31),
            "the neighbour's transform fits 4 of 31 tracks, this one 25 of 31 tracks");
}

TEST(DescribeOrigin, SaysWhereNoStartLedOn) {
  EXPECT_EQ(describe(searched(Stage::Sampled, std::nullopt, 0), 25, 31),
            "nothing to start from, this one 25 of 31 tracks");
  EXPECT_EQ(describe(searched(Stage::Library, std::nullopt, 0), 0, 31), "nothing to start from");
}

TEST(IsLikelyByChance, CountsMoreThanOnePictureInAMillion) {
  Origin origin;
  EXPECT_FALSE(isLikelyByChance(origin));  // not counted
  origin.chance = -6.0;
  EXPECT_FALSE(isLikelyByChance(origin));
  origin.chance = -5.99;
  EXPECT_TRUE(isLikelyByChance(origin));
}
