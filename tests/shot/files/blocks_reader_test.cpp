// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "shot/files/track_input.h"
#include "tests/shot/files/line_files.h"
#include "tests/shot/files/tracks_in.h"

using namespace cornerpin;

namespace {

std::string refusal(const std::string& text) {
  ReadTrace trace;
  trace.format = Format::Blocks;
  return refusalOf(text, &trace);
}

}  // namespace

TEST(ReadBlocks, ReadsAQuotedNameAClipACountAndKeys) {
  ReadTrace trace;
  const Tracks tracks = tracksIn(
      "# comment\n\"sign_tl\"\n1\n2\n1 611.750 801.000 0.012\n2 613.600 800.400 0.015\n", &trace);
  EXPECT_EQ(trace.format, Format::Blocks);
  EXPECT_EQ(trace.notes, std::vector<std::string>{});
  EXPECT_EQ(rowsOf(tracks),
            (std::vector<ReadRow>{{"sign_tl", 1, 611.75, 801.0}, {"sign_tl", 2, 613.6, 800.4}}));
  EXPECT_EQ(tracks.observations[0].weight, 1.0f);  // the residual is none
  EXPECT_EQ(tracks.picture.scale, Scale::Pixels);
  EXPECT_EQ(tracks.picture.y, YAxis::Up);
  EXPECT_EQ(tracks.picture.pixelCentre, 0.0);
  EXPECT_EQ(tracks.picture.firstFrame, 1);
  EXPECT_EQ(tracks.picture.width, std::nullopt);
}

// Two blocks of one name, clips 1 and 2, of 37 keys each: `grep -c '^[0-9]* [0-9]'`.
TEST(ReadBlocks, ReadsASampleWhole) {
  ReadTrace trace;
  const Tracks tracks = readTracks(sampleFile("quoted_blocks.2dt"), {}, {}, &trace);
  EXPECT_EQ(trace.format, Format::Blocks);
  EXPECT_EQ(trace.rows, 74);
  EXPECT_EQ(tracks.names, (std::vector<std::string>{"Feature1@1", "Feature1@2"}));
  EXPECT_EQ(tracks.picture.firstFrame, 1);
  const std::vector<ReadRow> rows = rowsOf(tracks);
  ASSERT_EQ(rows.size(), 74u);
  EXPECT_EQ(rows[0], (ReadRow{"Feature1@1", 1, 356.268, 150.052}));
  EXPECT_EQ(rows[36], (ReadRow{"Feature1@1", 37, 346.091, 18.761}));
  EXPECT_EQ(rows[37], (ReadRow{"Feature1@2", 1, 356.797, 148.595}));
  EXPECT_EQ(rows[73], (ReadRow{"Feature1@2", 37, 345.620, 17.699}));
}

TEST(ReadBlocks, ReadsTheOldestFormWithoutACamera) {
  const Tracks tracks = tracksIn(
      "\"none\"\n0\n\"02\"\n1\n0 5 6 0.1\n\n\"b\"  \n2\n1 7 8 0.1\n0 9 10 0.1\n\"c\"\n0\n");
  EXPECT_EQ(rowsOf(tracks),
            (std::vector<ReadRow>{{"02", 0, 5.0, 6.0}, {"b", 0, 9.0, 10.0}, {"b", 1, 7.0, 8.0}}));
  EXPECT_EQ(tracks.picture.firstFrame, 0);
}

TEST(ReadBlocks, ReadsSeveralCamerasOfAName) {
  const Tracks tracks = tracksIn(
      "\"a\"\n\"Primary\"\n1\n0 1 2 0.1\n\"Secondary\"\n2\n0 3 4 0.1\n1 5 6 0.1\n"
      "\"b\"\n\"Primary\"\n1\n0 7 8 0.1\n\"Secondary\"\n0\n\"c\"\n\"Primary\"\n1\n0 9 9 0\n");
  EXPECT_EQ(rowsOf(tracks), (std::vector<ReadRow>{{"a@Primary", 0, 1.0, 2.0},
                                                  {"a@Secondary", 0, 3.0, 4.0},
                                                  {"a@Secondary", 1, 5.0, 6.0},
                                                  {"b", 0, 7.0, 8.0},
                                                  {"c", 0, 9.0, 9.0}}));
  EXPECT_EQ(tracks.picture.firstFrame, 0);
}

TEST(ReadBlocks, TakesBlocksOfNoKeysOfAClip) {
  const Tracks tracks = tracksIn("\"a\"\n1\n0\n\"2\"\n1\n1\n1 2 3 0\n");
  EXPECT_EQ(rowsOf(tracks), (std::vector<ReadRow>{{"2", 1, 2.0, 3.0}}));
}

TEST(ReadBlocks, TakesRowsWithZAndWithoutAResidual) {
  ReadTrace trace;
  const Tracks tracks =
      tracksIn("\"a\"\n1\n4\n1 2 3\n2 2 3 0.5\n3 4 5 nan -7.5\n4 4 5 0.5 1\n", &trace);
  EXPECT_EQ(tracks.observations.size(), 4u);
  ASSERT_EQ(trace.notes.size(), 1u);
  EXPECT_NE(trace.notes[0].find("in.txt:6: z is left out, here and on other lines"),
            std::string::npos)
      << trace.notes[0];
}

TEST(ReadBlocks, TakesAFrameGivenTwiceOnceIfItIsTheSame) {
  const std::string block = "\"a\"\n1\n3\n1 2 3 0.1\n1 2 3 0.4\n2 ";
  EXPECT_EQ(rowsOf(tracksIn(block + "4 5 0\n")),
            (std::vector<ReadRow>{{"a", 1, 2.0, 3.0}, {"a", 2, 4.0, 5.0}}));
  EXPECT_EQ(refusal("\"a\"\n1\n2\n1 2 3 0.1\n1 2 3.5 0.1\n"),
            "in.txt:5: track \"a\" is given twice in frame 1, first on line 4");
}

TEST(ReadBlocks, RefusesBlocksThatCountFramesDifferently) {
  EXPECT_EQ(refusal("\"a\"\n1\n1\n1 2 3 0\n\"b\"\n\"Primary\"\n1\n0 2 3 0\n"),
            "in.txt:7: frames count from 1 in blocks with a clip's number and from 0 in all "
            "others, and the file has both: split it");
}

TEST(ReadBlocks, RefusesWhatIsNoBlock) {
  EXPECT_EQ(refusal(""), "in.txt: no track is in it");
  EXPECT_EQ(refusal("a\n"), "in.txt:1: column 1: a name must stand in double quotes, not \"a\"");
  EXPECT_EQ(refusal("\"a\" b\n"), "in.txt:1: column 5: nothing is wanted here, not \"b\"");
  EXPECT_EQ(refusal("\"\"\n1\n"), "in.txt:1: column 1: a name is wanted between the quotes");
  EXPECT_EQ(refusal("\"a\"\n"),
            "in.txt:1: the file ends here, where a camera, a clip or a number of keys is wanted");
  EXPECT_EQ(refusal("\"a\"\n\"Primary\"\n"),
            "in.txt:2: the file ends here, where a number of keys is wanted");
  EXPECT_EQ(refusal("\"a\"\nb\n"),
            "in.txt:2: column 1: a clip or the number of keys must be a whole number, not \"b\"");
  EXPECT_EQ(refusal("\"a\"\n1\nb\n"),
            "in.txt:3: column 1: the number of keys must be a whole number, not \"b\"");
  EXPECT_EQ(refusal("\"a\"\n1\n2\n1 2 3 0\n\"b\"\n"),
            "in.txt:5: this is no key, and there were only 1 of 2 keys of track \"a\": \"\"b\"\"");
  EXPECT_EQ(refusal("\"a\"\n1\n1\n1 2 3 0 0 9\n"),
            "in.txt:4: column 11: nothing is wanted here, not \"9\"");
  EXPECT_EQ(refusal("\"a\"\n1\n1\n1 2 3 inf\n"),
            "in.txt:4: column 7: residual must be finite, not \"inf\"");
}
