// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/track_info.h"

#include <gtest/gtest.h>

#include "tests/support/files.h"

using namespace cornerpin;

namespace {

std::string infoOn(const std::string& text, bool packed = false) {
  const TemporaryFolder folder;
  writeFile(folder / "in.csv", text);
  ReadTrace trace;
  const Tracks tracks = readTracks(folder / "in.csv", {}, {}, &trace);
  return trackInfo(tracks, {"in.csv", "shot.csv", text.size(), packed, false}, trace);
}

// A track in frames from one to another.
std::string rows(const std::string& name, int first, int last) {
  std::string text;
  for (int frame = first; frame <= last; ++frame) {
    text += name + "," + std::to_string(frame) + ",1,2\n";
  }
  return text;
}

bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

}  // namespace

// Three tracks in frames 0 to 7 and five in 10 and 11, of which one has the longer gap.
TEST(TrackInfo, CountsFramesTracksAndGaps) {
  const std::string text = "track,frame,x,y\n" + rows("a", 0, 7) + rows("b", 0, 7) +
                           rows("c", 0, 5) + rows("a", 10, 11) + rows("b", 10, 11) +
                           rows("c", 10, 11) + rows("d", 10, 11) + rows("e", 10, 11);
  EXPECT_EQ(infoOn(text),
            "file          shot.csv\n"
            "              tracks in CSV with commas, 282 bytes\n"
            "rows          32\n"
            "frames        0-11  (12 frames), no track in 2 frames: 8-9\n"
            "tracks        5, each in 2 to 10 frames, median 8\n"
            "gaps          in 3 tracks, the longest in c, frames 6-9\n"
            "per frame     0 to 5 tracks, median 3\n"
            "              ▅▅▅▅▅▅▄▄▁▁██\n"
            "too few       for a full transform of their own (under 4) in 8 frames: 0-7\n");
}

TEST(TrackInfo, CallsEveryFormatWhatItIs) {
  ReadTrace trace;
  const TemporaryFolder folder;
  writeFile(folder / "in.csv", "track,frame,x,y\na,1,2,3\n");
  const Tracks tracks = readTracks(folder / "in.csv", {}, {}, &trace);
  for (const FormatFacts& facts : allFormats()) {
    trace.format = facts.format;
    const std::string info = trackInfo(tracks, {"in", "in", 1, false, false}, trace);
    EXPECT_FALSE(contains(info, "tracks in tracks")) << info;
  }
  trace.format = Format::Uv;
  EXPECT_TRUE(contains(trackInfo(tracks, {"in", "in", 1, false, false}, trace),
                       "tracks in JSON in units of the picture, 1 byte"));
}

TEST(TrackInfo, SaysWhereThereAreNoGaps) {
  const std::string info = infoOn("track;frame;x;y\n0;7;1;2\n", true);
  EXPECT_EQ(info,
            "file          shot.csv\n"
            "              tracks in CSV with semicolons, packed with gzip, 24 bytes\n"
            "rows          1\n"
            "frames        7  (1 frame)\n"
            "tracks        1, each in 1 frame\n"
            "gaps          none: every track is seen without a break\n"
            "per frame     1 track\n"
            "too few       for a full transform of their own (under 4) in 1 frame: 7\n");
}

// What has no weight is not seen, at either end and in between.
TEST(TrackInfo, CountsOnlyWhatHasAWeight) {
  const std::string info =
      infoOn("track,frame,x,y,weight\na,0,1,1,0\na,1,1,1,1\na,2,1,1,0\na,3,1,1,2\na,4,1,1,0\n");
  EXPECT_TRUE(contains(info, "no track in 3 frames: 0, 2, 4\n")) << info;
  EXPECT_TRUE(contains(info, "each in 2 frames")) << info;
  EXPECT_TRUE(contains(info, "the longest in a, frames 2\n")) << info;
}

// A block stands for the least of its frames: 640 frames, of which one has one track of two.
TEST(TrackInfo, DrawsAShortGap) {
  const std::string info =
      infoOn("track,frame,x,y\n" + rows("a", 0, 639) + rows("b", 0, 314) + rows("b", 316, 639));
  std::string line = "\n              ";
  for (int i = 0; i < 64; ++i) line += i == 31 ? "▅" : "█";
  EXPECT_TRUE(contains(info, line + "\n")) << info;
}
