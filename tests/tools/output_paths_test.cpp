// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/output_paths.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>

#include "tests/support/child.h"
#include "tests/support/files.h"

using namespace cornerpin;

TEST(IsStandardOutput, KnowsBothNames) {
  EXPECT_TRUE(isStandardOutput("-"));
  EXPECT_TRUE(isStandardOutput("/dev/stdout"));
  EXPECT_FALSE(isStandardOutput(""));
  EXPECT_FALSE(isStandardOutput("stdout"));
}

TEST(RefuseInput, KnowsTheInputUnderEveryName) {
  const TemporaryFolder folder;
  const std::string in = folder / "in.csv";
  writeFile(in, "tracks");
  std::filesystem::create_symlink("in.csv", folder / "soft.csv");
  std::filesystem::create_hard_link(in, folder / "hard.csv");
  for (const char* name : {"in.csv", "./in.csv", "soft.csv", "hard.csv"}) {
    const std::string out = folder / name;
    try {
      refuseInput(in, out);
      ADD_FAILURE() << name;
    } catch (const std::invalid_argument& error) {
      EXPECT_EQ(error.what(), "\"" + out + "\" is the file that is read: not replaced");
    }
  }
}

TEST(RefuseInput, AllowsOtherFilesNoneAndDevices) {
  const TemporaryFolder folder;
  writeFile(folder / "in.csv", "tracks");
  writeFile(folder / "out.csv", "tracks");
  for (const std::string& out : {folder / "out.csv", folder / "new.csv", std::string()}) {
    EXPECT_NO_THROW(refuseInput(folder / "in.csv", out)) << out;
  }
  EXPECT_NO_THROW(refuseInput("/dev/null", "/dev/null"));
}

TEST(RefuseSame, NamesTheOptionsThatWantOneFile) {
  const TemporaryFolder folder;
  for (bool exists : {false, true}) {
    if (exists) writeFile(folder / "a", "");
    try {
      refuseSame("-o", folder / "a", "--explain", folder / "./a");
      ADD_FAILURE() << exists;
    } catch (const std::invalid_argument& error) {
      EXPECT_EQ(error.what(), "-o and --explain both want \"" + folder / "./a" + "\"");
    }
  }
}

TEST(RefuseSame, AllowsOtherFilesNoneAndDevices) {
  const TemporaryFolder folder;
  EXPECT_NO_THROW(refuseSame("-o", folder / "a", "--explain", folder / "b"));
  EXPECT_NO_THROW(refuseSame("-o", "", "--explain", ""));
  EXPECT_NO_THROW(refuseSame("-o", "/dev/null", "--explain", "/dev/null"));
}

TEST(Print, WritesOnStandardOutput) {
  const ChildRun run = runInChild([] { print("two\nlines\n"); });
  EXPECT_EQ(run.out, "two\nlines\n");
  EXPECT_EQ(run.err, "");
}
