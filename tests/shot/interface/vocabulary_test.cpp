// SPDX-License-Identifier: BSD-3-Clause
#include <cornerpin/shot.h>
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "tests/support/process.h"

using namespace cornerpin::shot;

TEST(Version, IsThatOfTheCommand) {
  const Version own = version();
  const std::string line = own.program + " " + own.version + "\n";
  EXPECT_EQ(own.program, "cornerpin");
  EXPECT_EQ(runProgram({CORNERPIN_PROGRAM, "--version"}).out.rfind(line, 0), 0u);
}

TEST(FileFormats, AreTold) {
  std::set<std::string> words;
  for (const FileFormat& format : fileFormats()) {
    words.insert(format.word);
    EXPECT_FALSE(format.what.empty()) << format.word;
    EXPECT_TRUE(format.readsTracks || format.writesPins) << format.word;
    if (!format.extension.empty()) {
      EXPECT_EQ(fileFormatOf("a" + format.extension), format.word);
    }
  }
  EXPECT_EQ(words.size(), fileFormats().size());
  EXPECT_EQ(words.count("csv") + words.count("json") + words.count("nk"), 3u);
}

TEST(FileFormatOf, GoesByTheEndOfTheName) {
  EXPECT_EQ(fileFormatOf("shots/a.CSV"), "csv");
  EXPECT_EQ(fileFormatOf("a.b.json"), "json");
  for (const char* path : {"", "-", "a", "a.txt", "json", "a.csv/b"}) {
    EXPECT_EQ(fileFormatOf(path), "") << path;
  }
}

TEST(Printable, HasNoControlCharacters) {
  EXPECT_EQ(printable("a\x1b[2J\nb"), "a?[2J?b");
  EXPECT_EQ(printable("t\xc3\xa9t\xc3\xa9"), "t\xc3\xa9t\xc3\xa9");
}

TEST(ShellWord, IsInQuotesWhereItNeedsThem) {
  EXPECT_EQ(shellWord("a.csv"), "a.csv");
  EXPECT_EQ(shellWord("a b.csv"), "'a b.csv'");
}

TEST(SlipsBetween, CountsThem) {
  EXPECT_EQ(slipsBetween("solve", "solve"), 0u);
  EXPECT_EQ(slipsBetween("solve", "slove"), 1u);
  EXPECT_EQ(slipsBetween("solve", "sole"), 1u);
  EXPECT_EQ(slipsBetween("", "abc"), 3u);
}
