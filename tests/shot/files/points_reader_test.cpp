// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "shot/files/track_input.h"
#include "tests/shot/files/line_files.h"
#include "tests/shot/files/tracks_in.h"

using namespace cornerpin;

TEST(ReadPoints, ReadsBlocksOfNameColourCountAndKeys) {
  ReadTrace trace;
  const Tracks tracks = tracksIn(
      "2\nsign_tl\n0\n3\n1 612.250000000000000 801.500000000000000\n"
      "2 614.100000000000000 800.900000000000000\n3 616.020000000000000 800.400000000000000\n"
      "sign_br\n0\n2\n1 1210.750000000000000 402.125000000000000\n"
      "3 1214.300000000000000 400.980000000000000\n",
      &trace);
  EXPECT_EQ(rowsOf(tracks), (std::vector<ReadRow>{{"sign_br", 1, 1210.75, 402.125},
                                                  {"sign_br", 3, 1214.3, 400.98},
                                                  {"sign_tl", 1, 612.25, 801.5},
                                                  {"sign_tl", 2, 614.1, 800.9},
                                                  {"sign_tl", 3, 616.02, 800.4}}));
  EXPECT_EQ(trace.format, Format::Points);
  EXPECT_EQ(trace.notes, std::vector<std::string>{});
  EXPECT_EQ(tracks.picture.scale, Scale::Pixels);
  EXPECT_EQ(tracks.picture.y, YAxis::Up);
  EXPECT_EQ(tracks.picture.pixelCentre, 0.5);
  EXPECT_EQ(tracks.picture.firstFrame, 1);
  EXPECT_EQ(tracks.picture.width, std::nullopt);
}

// Counted by `awk 'NF == 1'` and `awk 'NF == 3' FILE | wc -l`; positions from head and tail.
TEST(ReadPoints, ReadsASampleWhole) {
  ReadTrace trace;
  const Tracks tracks = readTracks(sampleFile("points_by_count.txt"), {}, {}, &trace);
  EXPECT_EQ(trace.format, Format::Points);
  EXPECT_EQ(tracks.names,
            (std::vector<std::string>{"01", "02", "03", "04", "05", "06", "07", "08"}));
  EXPECT_EQ(trace.rows, 61 + 3 * 80 + 4 * 100);
  EXPECT_EQ(trace.notes, std::vector<std::string>{});
  EXPECT_EQ(tracks.firstFrame(), 1);
  EXPECT_EQ(tracks.lastFrame(), 100);
  const std::vector<ReadRow> first = rowsOf(tracks, "01");
  ASSERT_EQ(first.size(), 61u);
  EXPECT_EQ(first.front(), (ReadRow{"01", 40, 407.384758225105315, 232.449011732690479}));
  EXPECT_EQ(first.back(), (ReadRow{"01", 100, 397.527902249710110, 363.686239366334348}));
  EXPECT_EQ(rowsOf(tracks).back(), (ReadRow{"08", 100, 678.762758616933752, 99.061880177103930}));
}

// Some writers count empty points and leave their blocks out; others keep them.
TEST(ReadPoints, TellsThatTheCountDoesNotMatch) {
  ReadTrace trace;
  const Tracks tracks = tracksIn("# a\n3\nempty\n0\n0\na\n0\n1\n1 2 3\n", &trace);
  EXPECT_EQ(tracks.names, std::vector<std::string>{"a"});
  ASSERT_EQ(trace.notes.size(), 1u);
  EXPECT_NE(trace.notes[0].find("in.txt:2: the count of points is 3, and 2 are in the file"),
            std::string::npos)
      << trace.notes[0];
  ReadTrace fewer;
  tracksIn("0\na\n0\n1\n1 2 3\n", &fewer);
  ASSERT_EQ(fewer.notes.size(), 1u);
  EXPECT_NE(fewer.notes[0].find("in.txt:1: the count of points is 0, and 1 is in the file"),
            std::string::npos);
}

TEST(ReadPoints, TakesExponentsAndAnyColour) {
  const Tracks tracks = tracksIn("1\na\n-1\n1\n1   6.1225e2\t8.015E+2\n");
  EXPECT_EQ(rowsOf(tracks), (std::vector<ReadRow>{{"a", 1, 612.25, 801.5}}));
}

TEST(ReadPoints, RefusesWhatIsNoPointText) {
  ReadTrace trace;
  trace.format = Format::Points;
  EXPECT_EQ(refusalOf("", &trace), "in.txt: the file is empty");
  EXPECT_EQ(refusalOf("a\n", &trace),
            "in.txt:1: column 1: the count of points must be a whole number, not \"a\"");
  EXPECT_EQ(refusalOf("1 2\n", &trace), "in.txt:1: column 3: nothing is wanted here, not \"2\"");
  EXPECT_EQ(refusalOf("0\n", &trace), "in.txt: no track is in it");
  EXPECT_EQ(refusalOf("1\na\n", &trace),
            "in.txt:2: the file ends here, where a colour number is wanted");
  EXPECT_EQ(refusalOf("1\na\n0\n", &trace),
            "in.txt:3: the file ends here, where a number of keys is wanted");
  EXPECT_EQ(refusalOf("1\na\n0 0\n1\n1 2 3\n", &trace),
            "in.txt:3: column 3: nothing is wanted here, not \"0\"");
  EXPECT_EQ(refusalOf("1\na\n0\n1\n1 2 3 4\n", &trace),
            "in.txt:5: column 7: nothing is wanted here, not \"4\"");
}
