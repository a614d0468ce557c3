// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "shot/files/track_writers.h"
#include "tests/shot/files/line_files.h"
#include "tests/shot/files/written_tracks.h"

using namespace cornerpin;

TEST(WriteUvTracks, WritesWeightsOfZeroToo) {
  Tracks tracks = madeTracks(
      {{"a b", 1001, 0.1, 0.5}, {"b", 1003, -0.25, 1e-7}, {"a b", 1002, 0.75, 1.0 / 3.0}});
  tracks.observations[0].weight = 0.1f;
  tracks.observations[1].weight = 0.0f;
  WriteNotes notes;
  EXPECT_EQ(writtenBy(writeUvTracks, tracks, &notes),
            "2\na b\n2\n1001 0.1 0.5 0.1\n1002 0.75 0.3333333333333333 0\n"
            "b\n1\n1003 -0.25 0.0000001 1\n");
  EXPECT_EQ(notes, WriteNotes{});
}
