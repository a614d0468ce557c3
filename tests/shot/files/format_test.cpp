// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/format.h"

#include <gtest/gtest.h>

#include <string>

using namespace cornerpin;

TEST(Formats, HaveAWordOfTheirOwn) {
  for (const FormatFacts& facts : allFormats()) {
    EXPECT_EQ(formatNamed(facts.word), facts.format);
    EXPECT_EQ(&factsOf(facts.format), &facts);
  }
  EXPECT_EQ(formatNamed("CSV"), std::nullopt);
  EXPECT_EQ(formatNamed(""), std::nullopt);
}

TEST(FormatOf, GoesByExtensionsThatTellOneFormat) {
  EXPECT_EQ(formatOf("a.csv"), Format::Csv);
  EXPECT_EQ(formatOf("b/a.JSON"), Format::Json);
  EXPECT_EQ(formatOf("a.nk"), Format::Nk);
  EXPECT_EQ(formatOf("a.2dt"), Format::Blocks);
  EXPECT_EQ(formatOf("a.rz2"), Format::Rz2);
  EXPECT_EQ(formatOf("a.usda"), Format::Usda);
  for (const char* path : {"a.txt", "a.py", "a", "-", "", ".csv/a"}) {
    EXPECT_EQ(formatOf(path), std::nullopt) << path;
  }
}

TEST(FormatIn, TellsCountedFormatsByTheirFirstKey) {
  EXPECT_EQ(formatIn("2\na\n0\n0\n02\n0\n1\n1 2 3\n"), Format::Points);
  EXPECT_EQ(formatIn("# x\n1\n# 1\n0\n1\n1 2 3\n"), Format::Points);
  EXPECT_EQ(formatIn("1\n1 2 3\n0\n1\n1 2 3\n"), Format::Points);
  EXPECT_EQ(formatIn("2\na\n0\nb\n1\n1 0.5 0.5 1\n"), Format::Uv);
  EXPECT_EQ(formatIn("2\n01\n1\n1 0.5 0.5 1\n"), Format::Uv);
  EXPECT_EQ(formatIn("2\n01\n1\n1 0.5 0.5\n"), Format::Uv);
  EXPECT_EQ(formatIn("2\n\na\n0\nb\n1\n1 0.5 0.5\n"), Format::Uv);
  EXPECT_EQ(formatIn("1\na\n0\n"), Format::Uv);
  EXPECT_EQ(formatIn("2\na\n1\n1 0.5 0.5 1\n02\n1\n"), Format::Uv);
}

TEST(FormatIn, GoesByContent) {
  EXPECT_EQ(formatIn("track,frame,x,y\n"), Format::Csv);
  EXPECT_EQ(formatIn("\"track\",\"frame\",\"x\",\"y\"\n\"a\",1,2,3\n"), Format::Csv);
  EXPECT_EQ(formatIn(""), Format::Csv);
  EXPECT_EQ(formatIn(" \n{\"a\":1}"), Format::Json);
  EXPECT_EQ(formatIn("[1]"), Format::Json);
  EXPECT_EQ(formatIn("2\r\nname\r\n0\r\n3\r\n1 2 3\r\n"), Format::Points);
  EXPECT_EQ(formatIn("1\na b\n0\n0\n"), Format::Points);
  EXPECT_EQ(formatIn("2\nname\n3\n1 0.5 0.25 1\n"), Format::Uv);
  EXPECT_EQ(formatIn("set cut_paste_input [stack 0]\nversion 8.0 v5\n"), Format::Nk);
  EXPECT_EQ(formatIn("#! /usr/bin/x -nx\nversion 5.2300\n"), Format::Nk);
  EXPECT_EQ(formatIn("CornerPin2D {\n to1 {1 2}\n}\n"), Format::Nk);
  EXPECT_EQ(formatIn("PlanarTracker1_0 {\n"), Format::Nk);
  EXPECT_EQ(formatIn("# comment\n\n\"a b\"\n1\n2\n1 2 3 0.1\n"), Format::Blocks);
  EXPECT_EQ(formatIn("\"a\"  \r\n\"Primary\"\r\n2\r\n"), Format::Blocks);
  EXPECT_EQ(formatIn("\xEF\xBB\xBF"
                     "Adobe After Effects 6.0 Keyframe Data\r"),
            Format::Keyframes);
  EXPECT_EQ(formatIn("\n\nimageSequence\t\"S\"\n{\n"), Format::Rz2);
  EXPECT_EQ(formatIn("pointTrack  \"T\" {\n"), Format::Rz2);
  EXPECT_EQ(formatIn("Tracker1 1 -0.067728 -0.244922 15\n"), Format::Paths);
  EXPECT_EQ(formatIn("Tracker one  1  -0.06  -0.2  7 \n"), Format::Paths);
}
