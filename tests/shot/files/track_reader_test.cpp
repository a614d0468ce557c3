// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/track_reader.h"

#include <gtest/gtest.h>

#include "tests/shot/files/tracks_in.h"

using namespace cornerpin;

TEST(ReadTracks, TellsTheFormatThatItFound) {
  ReadTrace trace;
  tracksIn("track,frame,x,y\na,1,2,3\n", &trace);
  EXPECT_EQ(trace.format, Format::Csv);
  EXPECT_EQ(trace.rows, 1);
  EXPECT_FALSE(trace.isPin);
}

TEST(ReadTracks, ReadsAFormatThatIsGiven) {
  ReadTrace trace;
  trace.format = Format::Csv;
  EXPECT_EQ(refusalOf("2\nname\n0\n0\n", &trace),
            "in.txt:1: the header \"2\" has no column \"track\": columns are separated by commas, "
            "semicolons or tabs");
}

TEST(ReadTracks, RefusesFormatsThatAreOnlyWritten) {
  ReadTrace trace;
  trace.format = Format::Usda;
  EXPECT_EQ(refusalOf("#usda 1.0\n", &trace), "in.txt: no tracks are read from usda files");
}

TEST(ReadTracks, RefusesWhatIsNoText) {
  EXPECT_EQ(refusalOf("PK\x03\x04"),
            "in.txt: this is a zip file: unpack it first, or pack it with gzip");
}
