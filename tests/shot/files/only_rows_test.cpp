// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/only_rows.h"

#include <gtest/gtest.h>

using namespace cornerpin;

TEST(OnlyRows, ListsWhatEachHas) {
  const DifferenceNames names = {"a.csv", "b.csv"};
  EXPECT_EQ(onlyRows("frames", OnlyIn<int>{{1, 2, 3, 7}, {}}, names),
            "frames        4 only in a.csv: 1-3, 7\n");
  EXPECT_EQ(
      onlyRows("tracks", OnlyIn<std::string>{{"sign"}, {"1", "2", "3", "4", "5", "6", "7"}}, names),
      "tracks        1 only in a.csv: sign\n"
      "              7 only in b.csv: 1, 2, 3, 4, 5 and 2 more\n");
  EXPECT_EQ(onlyRows("frames", OnlyIn<int>{}, names), "");
}

TEST(OnlyRows, ListsFramesAsStretches) { EXPECT_EQ(listed({1, 2, 3, 5, 8, 9}), "1-3, 5, 8-9"); }
