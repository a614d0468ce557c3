// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include "shot/files/track_writers.h"
#include "tests/shot/files/tracks_in.h"

using namespace cornerpin;

TEST(WriteJsonTracks, WritesOnePositionALine) {
  Tracks tracks = tracksIn(
      "track,frame,x,y,weight\n\"b \"\"1\"\"\",-3,0.1,-2e-07,0.5\na,-3,1,2,1\na,7,4,3,0\n");
  tracks.picture.width = 20;
  tracks.picture.height = 10;
  tracks.picture.y = YAxis::Up;
  tracks.picture.pixelCentre = 0.5;
  tracks.picture.firstFrame = 1001;
  const TemporaryFolder folder;
  OutputFile out(folder / "out.json");
  EXPECT_TRUE(writeJsonTracks(tracks, out).empty());
  out.commit();
  EXPECT_EQ(readFile(folder / "out.json"),
            "{\n\"cornerpin_tracks\": 1,\n"
            "\"picture\": {\"width\":20,\"height\":10,\"y\":\"up\",\"pixel_centre\":0.5,"
            "\"first_frame\":1001},\n"
            "\"tracks\": [\n"
            "{\"name\": \"a\", \"positions\": [\n[-3,1,2,1],\n[7,4,3,0]]},\n"
            "{\"name\": \"b \\\"1\\\"\", \"positions\": [\n[-3,0.1,-2e-07,0.5]]}]\n}\n");
}

TEST(WriteJsonTracks, WritesWhatItReads) {
  Tracks tracks = tracksIn("track,frame,x,y,weight\nb,-3,0.1,-2e-07,0.5\na,-3,1,2,1\na,7,4,3,0\n");
  tracks.picture.y = YAxis::Down;
  const TemporaryFolder folder;
  OutputFile out(folder / "out.json");
  writeJsonTracks(tracks, out);
  out.commit();
  const std::string text = readFile(folder / "out.json");
  OutputFile again(folder / "again.json");
  writeJsonTracks(tracksIn(text), again);
  again.commit();
  EXPECT_EQ(readFile(folder / "again.json"), text);
}

// In Latin-1: JSON is UTF-8, and a name that is there twice is refused.
TEST(WriteJsonTracks, KeepsNamesApartThatAreNoUtf8) {
  const Tracks tracks = tracksIn("track,frame,x,y\na\xE4,1,1,1\na\xF6,1,2,2\n\xC3\xA4,1,3,3\n");
  const TemporaryFolder folder;
  OutputFile out(folder / "out.json");
  EXPECT_EQ(writeJsonTracks(tracks, out),
            WriteNotes{"2 names are not in UTF-8 and written otherwise"});
  out.commit();
  const std::vector<std::string> names = {"a\xEF\xBF\xBD", "a\xEF\xBF\xBD_", "\xC3\xA4"};
  EXPECT_EQ(tracksIn(readFile(folder / "out.json")).names, names);
}
