// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "shot/files/track_writers.h"
#include "tests/shot/files/line_files.h"
#include "tests/shot/files/written_tracks.h"

using namespace cornerpin;

TEST(WriteBlocksTracks, WritesQuotedNamesOfClipOneBehindTheConvention) {
  const Tracks tracks =
      madeTracks({{"a b", 1, 0.1, 2.0}, {"b", 3, -430.0, 1e-7}, {"a b", 2, 612.25, 3.0}});
  WriteNotes notes;
  const std::string text = writtenBy(writeBlocksTracks, tracks, &notes);
  const std::size_t blocks = text.find("\n\"");
  ASSERT_NE(blocks, std::string::npos);
  EXPECT_EQ(text.substr(blocks),
            "\n\"a b\"\n1\n2\n1 0.1 2 0\n2 612.25 3 0\n\n\"b\"\n1\n1\n3 -430 0.0000001 0\n");
  EXPECT_EQ(text.find("# Tracks in pixels: x grows to the right, y upwards"), 0u);
  for (std::size_t at = 0; at < blocks; at = text.find('\n', at) + 1) EXPECT_EQ(text[at], '#');
  EXPECT_EQ(notes, WriteNotes{});
}

TEST(WriteBlocksTracks, SaysWhichNamesItCannotCarry) {
  const Tracks tracks = madeTracks({{"6\" nail", 1, 1.0, 2.0}, {"a#b", 1, 3.0, 4.0}});
  WriteNotes notes;
  const std::string text = writtenBy(writeBlocksTracks, tracks, &notes);
  EXPECT_NE(text.find("\n\"6_ nail\"\n"), std::string::npos);
  EXPECT_NE(text.find("\n\"a#b\"\n"), std::string::npos);
  EXPECT_EQ(notes, WriteNotes{"the name \"6\" nail\" is written as \"6_ nail\": a file of blocks "
                              "cannot carry it"});
}
