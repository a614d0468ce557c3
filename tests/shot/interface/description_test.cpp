// SPDX-License-Identifier: BSD-3-Clause
#include <cornerpin/shot.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/shot/interface/plain_shot.h"
#include "tests/support/files.h"
#include "tests/support/process.h"

using namespace cornerpin::shot;

TEST(FileKindOf, TellsWhatAFileHoldsByItsBeginning) {
  const TemporaryFolder folder;
  const std::string path = folder / "a";
  const auto kindOf = [&](const std::string& text) {
    writeFile(path, text);
    const FileKind kind = fileKindOf(path);
    return kind.holds + " as " + kind.format;
  };
  EXPECT_EQ(kindOf("track,frame,x,y\n"), "tracks as csv");
  EXPECT_EQ(kindOf("name;y;frame;track;x\n"), "tracks as csv");
  EXPECT_EQ(kindOf("track,frame,x\n"), " as csv");
  EXPECT_EQ(kindOf("tr\"ack,frame,x,y\n"), " as csv");
  EXPECT_EQ(kindOf("{\n\"cornerpin_tracks\":1,\"picture\":{},\"tracks\":[]}"), "tracks as json");
  EXPECT_EQ(kindOf("{\"cornerpin\":2}"), "result as json");
  EXPECT_EQ(kindOf("{\"sign\":[]}"), " as json");
  EXPECT_EQ(kindOf("Adobe After Effects 8.0 Keyframe Data\n"), "tracks as keyframes");
  EXPECT_EQ(kindOf("# What is in here\n"), " as csv");
  EXPECT_EQ(kindOf(""), " as ");
  EXPECT_EQ(kindOf(std::string("\x89PNG\0\0\0", 7)), " as ");
}

TEST(FileKindOf, KnowsResultsThatWereWritten) {
  const TemporaryFolder folder;
  const Result result = solve(readTracks(CORNERPIN_DATA "/screen4.csv"));
  for (const char* format : {"json", "csv"}) {
    const std::string path = folder / (std::string("a.") + format);
    result.write(path);
    EXPECT_EQ(fileKindOf(path).holds, "result") << path;
    EXPECT_EQ(fileKindOf(path).format, format);
  }
}

TEST(FileKindOf, RefusesAFileThatCannotBeRead) {
  const TemporaryFolder folder;
  for (const std::string& path : {folder / "none.csv", folder.path().string(), std::string("-")}) {
    EXPECT_THROW(fileKindOf(path), InputError) << path;
  }
}

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
