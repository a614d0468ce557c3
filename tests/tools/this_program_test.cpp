// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/this_program.h"

#include <gtest/gtest.h>

#include <regex>

#include "tests/support/process.h"

using namespace cornerpin;

TEST(ThisProgram, IsTheOneThatSaysItsVersion) {
  const Program program = thisProgram();
  EXPECT_EQ(program.name, "cornerpin");
  const std::string said = runProgram({CORNERPIN_PROGRAM, "--version"}).out;
  EXPECT_EQ(said.rfind("cornerpin " + program.version + "\n", 0), 0u) << said;
  EXPECT_TRUE(
      std::regex_match(program.commit, std::regex("([0-9a-f]{40}([0-9a-f]{24})?(-modified)?)?")))
      << program.commit;
}
