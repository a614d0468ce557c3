// SPDX-License-Identifier: BSD-3-Clause
#include <cornerpin/shot.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/shot/interface/plain_shot.h"
#include "tests/support/files.h"
#include "tests/support/process.h"

using namespace cornerpin::shot;

TEST(DescribeFile, SaysWhatIsInTracks) {
  const TemporaryFolder folder;
  const std::string path = folder / "a.csv";
  writeFile(path, "track,frame,x,y\na,0,1,2\na,1,3,4\nb,1,5,6\n");
  const FileDescription file = describeFile(path);
  EXPECT_EQ(file.text.rfind("file          " + path + "\n", 0), 0u) << file.text;
  EXPECT_NE(file.text.find("\nrows          3\n"), std::string::npos) << file.text;
  EXPECT_NE(file.text.find("\nframes        0-1  (2 frames)\n"), std::string::npos) << file.text;
  EXPECT_TRUE(file.notes.empty());
}

TEST(DescribeFile, SaysWhatAResultIsAsTheCommandDoes) {
  const TemporaryFolder folder;
  const std::string path = folder / "a.json";
  solve(readTracks(CORNERPIN_DATA "/screen4.csv")).write(path);
  EXPECT_EQ(describeFile(path).text, runProgram({CORNERPIN_PROGRAM, "info", path}).out);
  const std::string coloured = describeFile(path, true).text;
  EXPECT_EQ(coloured, runProgram({CORNERPIN_PROGRAM, "info", path, "--color", "always"}).out);
  EXPECT_NE(coloured, describeFile(path).text);
}

TEST(DescribeFile, TellsTheFileThatItRefuses) {
  try {
    describeFile("no/such/file.csv");
    FAIL() << "not refused";
  } catch (const InputError& error) {
    EXPECT_EQ(error.file, "no/such/file.csv");
  }
}
