// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/unused_track.h"

#include <gtest/gtest.h>

#include <set>

using namespace cornerpin;

TEST(UnusedTrack, IsCountedByItsReason) {
  EXPECT_EQ(describe({}), "");
  EXPECT_EQ(describe({{"a", Unused::Dropped}}), "1 dropped");
  EXPECT_EQ(describe({{"a", Unused::AbsentInBase},
                      {"b", Unused::Dropped},
                      {"c", Unused::NoWeight},
                      {"d", Unused::Dropped}}),
            "1 of weight 0, 2 dropped, 1 absent in the base frame");
}

TEST(UnusedTrack, HasWordsOfItsOwnForEveryReason) {
  std::set<std::string> names;
  std::set<std::string> texts;
  for (Unused why : kReasonsUnused) {
    names.insert(nameOf(why));
    texts.insert(describe({{"a", why}}));
  }
  EXPECT_EQ(names.size(), 7u);
  EXPECT_EQ(texts.size(), 7u);
  EXPECT_EQ(names.count("") + texts.count("1 "), 0u);
}
