// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "shot/files/track_input.h"
#include "tests/shot/files/line_files.h"
#include "tests/shot/files/tracks_in.h"

using namespace cornerpin;

TEST(ReadUv, ReadsBlocksOfNameCountAndKeysWithWeights) {
  ReadTrace trace;
  const Tracks tracks = tracksIn(
      "2\nsign tl\n2\n1001 0.25 0.75 1.0\n1003 0.5 0.5 0.25\n02\n1\n1002 -0.5 1.5 0\n", &trace);
  EXPECT_EQ(trace.format, Format::Uv);
  EXPECT_EQ(trace.notes, std::vector<std::string>{});
  EXPECT_EQ(rowsOf(tracks), (std::vector<ReadRow>{{"02", 1002, -0.5, 1.5},
                                                  {"sign tl", 1001, 0.25, 0.75},
                                                  {"sign tl", 1003, 0.5, 0.5}}));
  EXPECT_EQ(tracks.observations[0].weight, 1.0f);
  EXPECT_EQ(tracks.observations[1].weight, 0.0f);
  EXPECT_EQ(tracks.observations[2].weight, 0.25f);
  EXPECT_EQ(tracks.picture.scale, Scale::Picture);
  EXPECT_EQ(tracks.picture.y, YAxis::Up);
  EXPECT_EQ(tracks.picture.firstFrame, std::nullopt);
  EXPECT_EQ(tracks.picture.width, std::nullopt);
}

TEST(ReadUv, TakesTheWeightOneWhereThereIsNone) {
  ReadTrace trace;
  const Tracks tracks = tracksIn("1\na\n1\n7 0.25 0.75\n", &trace);
  EXPECT_EQ(trace.format, Format::Uv);
  EXPECT_EQ(tracks.observations[0].weight, 1.0f);
}

TEST(ReadUv, TellsThatTheCountDoesNotMatch) {
  ReadTrace trace;
  tracksIn("3\na\n0\nb\n1\n7 0.25 0.75 1\n", &trace);
  EXPECT_EQ(trace.format, Format::Uv);
  ASSERT_EQ(trace.notes.size(), 1u);
  EXPECT_NE(trace.notes[0].find("in.txt:1: the count of tracks is 3, and 2 are in the file"),
            std::string::npos);
}

TEST(ReadUv, RefusesWhatIsNoUvFile) {
  ReadTrace trace;
  trace.format = Format::Uv;
  EXPECT_EQ(refusalOf("", &trace), "in.txt: the file is empty");
  EXPECT_EQ(refusalOf("1.5\n", &trace),
            "in.txt:1: column 1: the count of tracks must be a whole number, not \"1.5\"");
  EXPECT_EQ(refusalOf("1\na\n", &trace),
            "in.txt:2: the file ends here, where a number of keys is wanted");
  EXPECT_EQ(refusalOf("1\na\nb\n", &trace),
            "in.txt:3: column 1: the number of keys must be a whole number, not \"b\"");
  const std::string key = "1\na\n1\n1 0.5 0.5 ";
  EXPECT_EQ(refusalOf(key + "-1\n", &trace),
            "in.txt:4: column 11: weight must not be negative or NaN: \"-1\"");
  EXPECT_EQ(refusalOf(key + "nan\n", &trace),
            "in.txt:4: column 11: weight must not be negative or NaN: \"nan\"");
  EXPECT_EQ(refusalOf(key + "inf\n", &trace),
            "in.txt:4: column 11: weight must be finite, not \"inf\"");
  EXPECT_EQ(refusalOf(key + "1 2\n", &trace),
            "in.txt:4: column 13: nothing is wanted here, not \"2\"");
  EXPECT_EQ(refusalOf(key + "0\n", &trace), "in.txt: no track has a weight above 0");
}
