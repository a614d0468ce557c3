// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/this_program.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "tests/support/process.h"

using namespace cornerpin;

TEST(ThisProgram, IsTheOneThatSaysItsVersionAndCommit) {
  const ProgramVersion program = thisProgram();
  EXPECT_EQ(program.name, "cornerpin");
  const std::string said = runProgram({CORNERPIN_PROGRAM, "--version"}).out;
  const std::string commit = program.commit.empty() ? "" : "commit " + program.commit + "\n";
  EXPECT_EQ(said.rfind("cornerpin " + program.version + "\n" + commit + "LAPACK ", 0), 0u) << said;
}

TEST(ThisProgram, HasACommitOfHexadecimalDigitsOrNone) {
  std::string commit = thisProgram().commit;
  const std::size_t mark = commit.find("-modified");
  EXPECT_TRUE(mark == std::string::npos || commit.substr(mark) == "-modified") << commit;
  commit = commit.substr(0, mark);
  EXPECT_EQ(commit.find_first_not_of("0123456789abcdef"), std::string::npos) << commit;
  EXPECT_TRUE(commit.empty() || commit.size() == 40 || commit.size() == 64) << commit;
}
