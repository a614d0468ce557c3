// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "shot/files/track_writers.h"
#include "tests/shot/files/line_files.h"
#include "tests/shot/files/written_tracks.h"

using namespace cornerpin;

TEST(WritePointsTracks, WritesPlainDecimalsAndSingleBlanks) {
  const Tracks tracks =
      madeTracks({{"a b", 1, 0.1, 1e-7}, {"b", 3, -430.0, 1e21}, {"a b", 2, 612.25, 1.0 / 3.0}});
  WriteNotes notes;
  EXPECT_EQ(writtenBy(writePointsTracks, tracks, &notes),
            "2\na b\n0\n2\n1 0.1 0.0000001\n2 612.25 0.3333333333333333\n"
            "b\n0\n1\n3 -430 1000000000000000000000\n");
  EXPECT_EQ(notes, WriteNotes{});
}

TEST(WritePointsTracks, SaysWhatItCannotCarry) {
  Tracks tracks = madeTracks({{"a#b", 1, 1.0, 2.0},
                              {"a#b", -1, 3.0, 4.0},
                              {"a_b", 1, 5.0, 6.0},
                              {"gone", 1, 7.0, 8.0},
                              {"half", 1, 9.0, 9.5}});
  for (Observation& row : tracks.observations) {
    const std::string& name = tracks.names[static_cast<std::size_t>(row.track)];
    if (name == "gone") row.weight = 0.0f;
    if (name == "half") row.weight = 0.5f;
  }
  WriteNotes notes;
  EXPECT_EQ(writtenBy(writePointsTracks, tracks, &notes),
            "3\na_b_\n0\n2\n-1 3 4\n1 1 2\na_b\n0\n1\n1 5 6\nhalf\n0\n1\n1 9 9.5\n");
  EXPECT_EQ(notes,
            (WriteNotes{"the name \"a#b\" is written as \"a_b_\": point text cannot carry it",
                        "1 position of weight 0, where the track is absent, is left out",
                        "point text carries no weights: those of 1 position are lost",
                        "1 position is in a frame below 0, which some readers refuse"}));
}
