// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/track_advice.h"

#include <gtest/gtest.h>

using namespace cornerpin;

namespace {

TrackResult track(const std::string& name, const std::vector<TrackRun>& runs) {
  TrackResult result;
  result.name = name;
  result.runs = runs;
  return result;
}

}  // namespace

TEST(TrackAdvice, NamesThoseThatMoveCornersWithWhatToType) {
  ShotResult result;
  result.tracks = {track("it's", {}), track("t2", {})};
  result.worst = {{"it's", {0, 60, 81, 70, 9.3, 12.0, true}},
                  {"t2", {1, 5, 5, 5, 2.0, 1.0, false}}};
  result.provenance.input = {{"my shot.csv", "", "csv", 1}};
  EXPECT_EQ(trackAdvice(result), "Tracks that move the corners most:\n  " +
                                     describe(result.worst[0]) +
                                     ", and it is far off:\n      --drop 'it'\\''s:60-81'\n  " +
                                     describe(result.worst[1]) +
                                     ":\n      --drop t2:5\n\n"
                                     "Look at them in the pictures. To leave one out, add its "
                                     "--drop to: cornerpin solve 'my shot.csv'\n");
}

// By the share of the frames in which they are seen: 3 of 3, 4 of 6, 5 of 10; one frame is too few.
TEST(TrackAdvice, NamesThoseThatAreIgnoredMost) {
  ShotResult result;
  result.tracks = {track("half", {{0, 4, TrackUse::Good}, {5, 9, TrackUse::Ignored}}),
                   track("always", {{0, 2, TrackUse::Ignored}, {3, 9, TrackUse::Absent}}),
                   track("n*", {{0, 1, TrackUse::Ignored},
                                {2, 3, TrackUse::Good},
                                {4, 5, TrackUse::Ignored},
                                {6, 9, TrackUse::Absent}}),
                   track("once", {{0, 0, TrackUse::Ignored}, {1, 9, TrackUse::Absent}}),
                   track("good", {{0, 9, TrackUse::Good}})};
  EXPECT_EQ(trackAdvice(result),
            "Tracks that are ignored most, because they are off:\n"
            "  always, ignored in 3 of 3 frames: 0-2:\n      --drop always\n"
            "  n*, ignored in 4 of 6 frames: 0-1, 4-5:\n      --drop '\"n*\"'\n"
            "  half, ignored in 5 of 10 frames: 5-9:\n      --drop half\n\n"
            "Look at them in the pictures. To leave one out, add its --drop to: "
            "cornerpin solve TRACKS.csv\n");
}

TEST(TrackAdvice, SaysWhereThereIsNothing) {
  ShotResult result;
  result.tracks = {track("good", {{0, 9, TrackUse::Good}})};
  EXPECT_EQ(trackAdvice(result), "No track is worth a look.\n");
}

TEST(TrackAdvice, BeginsWithWhatWasFoundToHelp) {
  ShotResult result;
  result.tracks = {track("t2", {})};
  result.worst = {{"t2", {0, 5, 5, 5, 2.0, 1.0, false}}};
  result.frames.resize(1);
  result.frames[0].frame = 5;
  result.frames[0].figures.quads.resize(1);
  result.frames[0].doubts = {{DoubtCode::ExpectedError, "far off"}};
  result.advice = {{{5, 5}, "without t2 there it is 3 px: --drop t2:5"}};
  EXPECT_EQ(trackAdvice(result).rfind("What the solve tried and found to help:\n"
                                      "  5           far off (frame 5);\n"
                                      "              without t2 there it is 3 px: --drop t2:5\n\n"
                                      "Tracks that move the corners most:\n  t2",
                                      0),
            0u)
      << trackAdvice(result);
}
