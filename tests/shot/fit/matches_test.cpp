// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/matches.h"

#include <gtest/gtest.h>

using namespace cornerpin;

namespace {

Matches counted(int count) {
  Matches matches;
  for (int i = 0; i < count; ++i) {
    const double n = i + 1.0;
    matches.add({{n, 2 * n}, {-n, 3 * n}, n / 2, 10 * i});
  }
  return matches;
}

void expectEqual(const Match& a, const Match& b) {
  EXPECT_EQ(a.base.x, b.base.x);
  EXPECT_EQ(a.base.y, b.base.y);
  EXPECT_EQ(a.present.x, b.present.x);
  EXPECT_EQ(a.present.y, b.present.y);
  EXPECT_EQ(a.weight, b.weight);
  EXPECT_EQ(a.track, b.track);
}

}  // namespace

TEST(Matches, GiveBackWhatWasAdded) {
  const Matches matches = {{{1, 2}, {3, 4}, 0.5, 6}, {{7, 8}, {9, 10}, 11, 12}};
  ASSERT_EQ(matches.size(), 2u);
  expectEqual(matches[0], {{1, 2}, {3, 4}, 0.5, 6});
  expectEqual(matches[1], {{7, 8}, {9, 10}, 11, 12});
  EXPECT_EQ(matches.base()[1].y, 8.0);
  EXPECT_EQ(matches.present()[1].x, 9.0);
  EXPECT_EQ(matches.weights()[1], 11.0);
  EXPECT_EQ(matches.tracks()[1], 12);
}

TEST(Matches, AreEmptyUntilOneIsAdded) {
  Matches matches;
  EXPECT_TRUE(matches.empty());
  matches.add({});
  EXPECT_FALSE(matches.empty());
  EXPECT_EQ(matches[0].weight, 1.0) << "of a match that has not been given another";
}

TEST(Matches, FillTheSquaredWeightsUpAsThePlaces) {
  for (int count : {1, 3, 4, 5, 8, 9}) {
    const Matches matches = counted(count);
    ASSERT_EQ(matches.squaredWeights().size(), matches.base().paddedSize());
    ASSERT_EQ(matches.present().paddedSize(), matches.base().paddedSize());
    for (std::size_t i = 0; i < matches.squaredWeights().size(); ++i) {
      const double weight = i < matches.size() ? matches.weights()[i] : 0.0;
      EXPECT_EQ(matches.squaredWeights()[i], weight * weight) << count << " " << i;
    }
  }
}

TEST(Matches, OfANumberAreWhatTheyAreSetTo) {
  for (int count : {1, 4, 6}) {
    const Matches expected = counted(count);
    Matches matches(expected.size());
    EXPECT_EQ(matches[0].weight, 0.0);
    for (std::size_t i = matches.size(); i-- > 0;) matches.set(i, expected[i]);
    for (std::size_t i = 0; i < matches.size(); ++i) expectEqual(matches[i], expected[i]);
    EXPECT_EQ(matches.squaredWeights(), expected.squaredWeights());
  }
}

TEST(Matches, SubsetKeepsTheOrderOfTheChosen) {
  const Matches all = counted(5);
  const Matches some = all.subset({false, true, false, true, true});
  ASSERT_EQ(some.size(), 3u);
  expectEqual(some[0], all[1]);
  expectEqual(some[1], all[3]);
  expectEqual(some[2], all[4]);
}

TEST(Matches, ChangeTheUnitOfBothPlacesAndNothingElse) {
  const Matches there = counted(2).in({{10, 20}, 0.5});
  ASSERT_EQ(there.size(), 2u);
  expectEqual(there[1], {{-4, -8}, {-6, -7}, 1.0, 10});
}
