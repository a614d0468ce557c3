// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "shot/files/track_input.h"
#include "tests/shot/files/line_files.h"
#include "tests/shot/files/tracks_in.h"

using namespace cornerpin;

namespace {

// The frames in which a track with these statuses, frame after frame from 0, is there.
std::vector<int> framesOf(const std::vector<int>& statuses, ReadTrace* trace = nullptr) {
  std::string text = "always 0 0 0 7\n";
  for (std::size_t i = 0; i < statuses.size(); ++i) {
    text += fmt::format("a {} 0.5 0.5 {}\n", i, statuses[i]);
  }
  std::vector<int> frames;
  for (const ReadRow& row : rowsOf(tracksIn(text, trace), "a")) frames.push_back(row.frame);
  return frames;
}

}  // namespace

TEST(ReadPaths, ReadsLinesOfNameFramePositionAndStatus) {
  ReadTrace trace;
  const Tracks tracks = tracksIn(
      "Tracker 1  1 -0.067728 -0.244922 15\nTracker 1  2  -0.065092  -0.248918 7\n"
      "other 1 1e-3 .5 7\n",
      &trace);
  EXPECT_EQ(trace.format, Format::Paths);
  EXPECT_EQ(trace.notes, std::vector<std::string>{});
  EXPECT_EQ(rowsOf(tracks), (std::vector<ReadRow>{{"Tracker 1", 1, -0.067728, -0.244922},
                                                  {"Tracker 1", 2, -0.065092, -0.248918},
                                                  {"other", 1, 0.001, 0.5}}));
  EXPECT_EQ(tracks.picture.scale, Scale::AboutZero);
  EXPECT_EQ(tracks.picture.y, YAxis::Down);
  EXPECT_EQ(tracks.picture.pixelCentre, 0.0);
  EXPECT_EQ(tracks.picture.firstFrame, std::nullopt);
}

// Counted by `cut -d' ' -f1 FILE | sort | uniq -c`; positions from `grep "^Tracker1 "`, head, tail.
// All statuses are 7 or 15.
TEST(ReadPaths, ReadsASampleWhole) {
  ReadTrace trace;
  const Tracks tracks = readTracks(sampleFile("normalised_paths.txt"), {}, {}, &trace);
  EXPECT_EQ(trace.format, Format::Paths);
  EXPECT_EQ(trace.rows, 100 + 100 + 81 + 70 + 100 + 56);
  EXPECT_EQ(trace.notes, std::vector<std::string>{});
  ASSERT_EQ(tracks.names, (std::vector<std::string>{"Tracker1", "Tracker2", "Tracker3", "Tracker4",
                                                    "Tracker5", "Tracker6"}));
  EXPECT_EQ(tracks.firstFrame(), 1);
  EXPECT_EQ(tracks.lastFrame(), 100);
  const std::vector<ReadRow> rows = rowsOf(tracks);
  EXPECT_EQ(rows.front(), (ReadRow{"Tracker1", 1, -0.067728, -0.244922}));
  EXPECT_EQ(rows.back(), (ReadRow{"Tracker6", 100, -0.244288, -0.166090}));
  const std::vector<ReadRow> last = rowsOf(tracks, "Tracker6");
  ASSERT_EQ(last.size(), 56u);
  EXPECT_EQ(last.front(), (ReadRow{"Tracker6", 11, -0.266759, -0.190952}));
  EXPECT_EQ(rowsOf(tracks, "Tracker3").size(), 81u);
  EXPECT_EQ(rowsOf(tracks, "Tracker4").size(), 70u);
}

// 1 run, 2 enabled, 4 usable, 8 key, 16 jumped, 32 out of sight.
TEST(ReadPaths, TakesAPointForAbsentByItsStatus) {
  EXPECT_EQ(framesOf({15, 7, 23, 31, 4, 12}), (std::vector<int>{0, 1, 2, 3, 4, 5}));
  ReadTrace trace;
  EXPECT_EQ(framesOf({7, 3, 39, 11, 36, 0, 15, 63}, &trace), (std::vector<int>{0, 6}));
  EXPECT_EQ(trace.rows, 3);
  ASSERT_EQ(trace.notes.size(), 1u);
  EXPECT_NE(trace.notes[0].find("in.txt:3: 6 positions without 4 in the status or with 32, the "
                                "first here: the track is absent there"),
            std::string::npos)
      << trace.notes[0];
}

TEST(ReadPaths, RefusesWhatIsNoLineOfAPath) {
  ReadTrace trace;
  trace.format = Format::Paths;
  EXPECT_EQ(refusalOf("a 1 0 0 7\n1 0 0 7\n", &trace),
            "in.txt:2: column 1: a name, a frame, two positions and a status are wanted, not "
            "\"1 0 0 7\"");
  EXPECT_EQ(refusalOf("a b 1 0 0\n", &trace),
            "in.txt:1: column 3: frame must be a whole number, not \"b\"");
  EXPECT_EQ(refusalOf("a 1 0 0 0.5\n", &trace),
            "in.txt:1: column 9: status must be a whole number, not \"0.5\"");
  EXPECT_EQ(refusalOf("a 1 0 inf 0\n", &trace),
            "in.txt:1: column 7: y must be finite, not \"inf\"");
  EXPECT_EQ(refusalOf("a 1 0 0 3\n", &trace), "in.txt: no track is in it");
}
