// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/this_program.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

using namespace cornerpin;

TEST(ThisProgram, IsCalledCornerpinAndHasTheVersionOfTheSource) {
  EXPECT_EQ(thisProgram().name, "cornerpin");
  EXPECT_EQ(thisProgram().version, CORNERPIN_VERSION);
}

TEST(ThisProgram, HasACommitOfHexadecimalDigitsOrNone) {
  std::string commit = thisProgram().commit;
  const std::size_t mark = commit.find("-modified");
  EXPECT_TRUE(mark == std::string::npos || commit.substr(mark) == "-modified") << commit;
  commit = commit.substr(0, mark);
  EXPECT_EQ(commit.find_first_not_of("0123456789abcdef"), std::string::npos) << commit;
  EXPECT_TRUE(commit.empty() || commit.size() == 40 || commit.size() == 64) << commit;
}
