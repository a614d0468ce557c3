// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/layer_motion.h"

#include <gtest/gtest.h>

using namespace cornerpin;

TEST(KeyedPair, GoesStraightBetweenKeysAndStaysOutsideOfThem) {
  KeyedPair pair;
  EXPECT_FALSE(pair.isThere());
  pair.add({10.0, {100.0, -4.0}, 2});
  pair.add({2.5, {40.0, 8.0}, 1});
  EXPECT_TRUE(pair.isThere());
  EXPECT_EQ(pair.arrange(), nullptr);
  EXPECT_EQ(pair.at(0.0, {}).x, 40.0);
  EXPECT_EQ(pair.at(2.5, {}).y, 8.0);
  EXPECT_EQ(pair.at(5.0, {}).x, 60.0);
  EXPECT_EQ(pair.at(5.0, {}).y, 4.0);
  EXPECT_EQ(pair.at(10.0, {}).x, 100.0);
  EXPECT_EQ(pair.at(99.0, {}).y, -4.0);
}

// On the way from a large number nothing would be left of its digits.
TEST(KeyedPair, KeepsTheNumbersOfItsKeys) {
  KeyedPair pair;
  pair.add({0.0, {1e17, 1e17}, 1});
  pair.add({1.0, {0.1, -0.1}, 2});
  pair.arrange();
  EXPECT_EQ(pair.at(1.0, {}).x, 0.1);
  EXPECT_EQ(pair.at(1.0, {}).y, -0.1);
}

TEST(KeyedPair, HasOneValueOrNone) {
  KeyedPair pair;
  EXPECT_EQ(pair.at(3.0, {7.0, 8.0}).y, 8.0);
  pair.set({1.0, 2.0});
  EXPECT_TRUE(pair.isThere());
  EXPECT_EQ(pair.at(3.0, {7.0, 8.0}).y, 2.0);
}

TEST(KeyedPair, NamesTheSecondKeyOfAFrame) {
  KeyedPair pair;
  for (const std::uint32_t line : {5u, 6u, 7u}) pair.add({line == 6u ? 1.0 : 2.0, {}, line});
  const KeyedPair::Key* twice = pair.arrange();
  ASSERT_NE(twice, nullptr);
  EXPECT_EQ(twice->line, 7u);
}

TEST(LayerMotion, IsPlacedByBothEnds) {
  LayerMotion motion;
  EXPECT_FALSE(motion.isThere());
  motion.rotation.set({30.0, 30.0});
  EXPECT_TRUE(motion.isThere());
  motion.position.set({5.0, 6.0});
  EXPECT_FALSE(motion.isPlaced());
  motion.anchor.set({1.0, 2.0});
  EXPECT_TRUE(motion.isPlaced());
  Placement placement = motion.at(0.0);
  EXPECT_EQ(placement.anchor.y, 2.0);
  EXPECT_EQ(placement.position.x, 5.0);
  EXPECT_EQ(placement.scale.x, 1.0);
  EXPECT_EQ(placement.degrees, 30.0);
  motion.scale.set({50.0, 300.0});
  placement = motion.at(0.0);
  EXPECT_EQ(placement.scale.x, 0.5);
  EXPECT_EQ(placement.scale.y, 3.0);
}
