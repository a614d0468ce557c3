// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include "tests/support/files.h"
#include "tests/support/process.h"

TEST(WriteManual, WritesThePageAndTheCompletions) {
  const TemporaryFolder folder;
  EXPECT_EQ(runProgram({CORNERPIN_WRITE_MANUAL, folder.path().string()}).code, 0);
  EXPECT_EQ(folder.entryCount(), 4u);
  for (const char* name : {"cornerpin.1", "cornerpin.bash", "_cornerpin", "cornerpin.fish"}) {
    EXPECT_EQ(readFile(folder / name), readFile(std::string(CORNERPIN_MANUAL "/") + name)) << name;
  }
}

TEST(WriteManual, SaysWhereItCannotWrite) {
  const Outcome run = runProgram({CORNERPIN_WRITE_MANUAL, "/nowhere"});
  EXPECT_EQ(run.code, 1);
  EXPECT_EQ(run.err, "write_manual: /nowhere/cornerpin.1: No such file or directory\n");
  EXPECT_EQ(runProgram({CORNERPIN_WRITE_MANUAL}).code, 2);
}
