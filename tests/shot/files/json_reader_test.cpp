// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/json_reader.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/shot/files/tracks_in.h"
#include "tests/support/allocations.h"

using namespace cornerpin;

namespace {

std::string tracksWith(const std::string& tracks) {
  return "{\"cornerpin_tracks\": 1, \"tracks\": [" + tracks + "]}";
}

std::string rowsWith(const std::string& rows) {
  return tracksWith("\n{\"name\": \"a\", \"positions\": [" + rows + "]}");
}

}  // namespace

TEST(OtherThanTracks, TellsResultsFromOtherJson) {
  EXPECT_EQ(otherThanTracks("{\n\"cornerpin_tracks\": 1"), "");
  EXPECT_EQ(otherThanTracks("{\"cornerpin\":2,"),
            "this is a result, not tracks: give the file that it was solved from");
  EXPECT_EQ(otherThanTracks("{\"sign\": [[0,0]"),
            "this is JSON, such as --quads takes, without \"cornerpin_tracks\" at its beginning: "
            "no tracks are in it");
}

TEST(ReadJson, TakesTracksAndTheirPicture) {
  ReadTrace trace;
  const Tracks tracks = tracksIn(
      "{\"made_by\": {\"x\": [1, {}]}, \"cornerpin_tracks\": 1,\n"
      "\"picture\": {\"width\": 20, \"height\": 10, \"y\": \"up\", \"pixel_centre\": 0.5,\n"
      "\"first_frame\": 7, \"other\": 1},\n"
      "\"tracks\": [{\"colour\": [1], \"name\": \"b\", \"positions\": [[1, 2.5, -3, 0.5],\n"
      "[2, null, null], [3, 4, 5]]}, {\"name\": \"a\", \"positions\": []},\n"
      "{\"name\": \"c\", \"positions\": [[1.0, 1e2, 0]]}], \"more\": []}",
      &trace);
  EXPECT_EQ(trace.format, Format::Json);
  EXPECT_EQ(trace.rows, 3);
  EXPECT_EQ(tracks.names, (std::vector<std::string>{"a", "b", "c"}));
  ASSERT_EQ(tracks.observations.size(), 3u);
  EXPECT_EQ(tracks.observations[0].x, 2.5);
  EXPECT_EQ(tracks.observations[0].y, -3.0);
  EXPECT_EQ(tracks.observations[0].weight, 0.5f);
  EXPECT_EQ(tracks.observations[0].line, 4u);
  EXPECT_EQ(tracks.observations[1].x, 100.0);
  EXPECT_EQ(tracks.observations[2].frame, 3);
  EXPECT_EQ(tracks.observations[2].weight, 1.0f);
  EXPECT_EQ(tracks.picture.width, 20);
  EXPECT_EQ(tracks.picture.y, YAxis::Up);
  EXPECT_EQ(tracks.picture.firstFrame, 7);
}

TEST(ReadJson, NamesLineAndTrackOfWhatItRefuses) {
  const auto row = [](const std::string& text) { return refusalOf(rowsWith(text)); };
  const std::string a = "in.txt:2: a position of track \"a\" ";
  EXPECT_EQ(row("[1, 2]"), a + "needs three numbers or four, [frame,x,y,weight]");
  EXPECT_EQ(row("[1, 2, 3, 4, 5]"), a + "has more than four numbers");
  EXPECT_EQ(row("[1.5, 2, 3]"), a + "has the frame 1.5, no whole number up to a thousand million");
  EXPECT_EQ(row("[4000000000, 2, 3]"),
            a + "has the frame 4000000000, no whole number up to a thousand million");
  EXPECT_EQ(row("[1, \"2\", 3]"), a + "has \"2\" in it, no number");
  EXPECT_EQ(row("[1, [2], 3]"), a + "has a list in it");
  EXPECT_EQ(row("[1, 4e38, 3]"), a + "has x 4e+38, which is not finite in single precision");
  EXPECT_EQ(row("[1, null, 3]"), a + "has x nan, which is not finite in single precision");
  EXPECT_EQ(row("[1, 2, 3, -1]"), a + "has the weight -1: it must be finite and not negative");
  EXPECT_EQ(row("[1, 2, 3], {}"),
            "in.txt:2: a position is a list, [frame,x,y] or [frame,x,y,weight]");
  EXPECT_EQ(row("[1, 2, 3], 4"), "in.txt:2: 4 stands where none belongs");
  EXPECT_EQ(row("[1, 2, 3], [1, 2, 3]"),
            "in.txt:2: track \"a\" is given twice in frame 1, first on line 2");
}

TEST(ReadJson, RefusesWhatIsNotAsDescribed) {
  EXPECT_EQ(refusalOf(tracksWith("[1]")),
            "in.txt:1: a track is an object with \"name\" and \"positions\"");
  EXPECT_EQ(refusalOf(tracksWith("{\"positions\": [")),
            "in.txt:1: \"name\" must stand before \"positions\"");
  EXPECT_EQ(refusalOf(tracksWith("{\"name\": \"\"}")), "in.txt:1: a track needs a name, not \"\"");
  EXPECT_EQ(refusalOf(tracksWith("{\"name\": \"a\"},\n{\"name\": \"a\"}")),
            "in.txt:2: track \"a\" is there twice");
  EXPECT_EQ(refusalOf("{\"cornerpin_tracks\": 2}"),
            "in.txt:1: version 2 is not known: update cornerpin");
  EXPECT_EQ(refusalOf("{\"cornerpin_tracks\": 1}"), "in.txt:1: \"tracks\" is missing");
  EXPECT_EQ(refusalOf("[\"cornerpin_tracks\"]"), "in.txt:1: an object is needed");
  EXPECT_EQ(refusalOf("{\"cornerpin_tracks\": 1, \"picture\": {\"y\": \"left\"}}"),
            "in.txt: picture.y: \"down\", \"up\" or null is needed");
  EXPECT_EQ(refusalOf(tracksWith("")), "in.txt: no track is in it");
}

// Wherever it ends, it is refused with a line.
TEST(ReadJson, RefusesAFileThatIsCutOffAnywhere) {
  const std::string text = rowsWith("[1, 2.5, 3], [2, 4, 5e0, 0.5]\n");
  EXPECT_EQ(refusalOf(text), "");
  for (std::size_t length = text.find(':'); length < text.size(); ++length) {
    EXPECT_NE(refusalOf(text.substr(0, length)), "") << length;
  }
  EXPECT_EQ(refusalOf(text + "x").substr(0, 20), "in.txt:3: not JSON: ");
}

TEST(ReadJson, RefusesDeepNestingInLittleMemory) {
  const std::string deep = "{\"cornerpin_tracks\": 1, \"a\": " + std::string(4000000, '[');
  const TemporaryFolder folder;
  writeFile(folder / "in.json", deep);
  std::string said;
  const std::size_t peak = allocations::peakBytesOf([&] {
    try {
      readTracks(folder / "in.json");
    } catch (const InputError& error) {
      said = error.what();
    }
  });
  EXPECT_NE(said.find(":1: lists and objects are nested too deep"), std::string::npos) << said;
  EXPECT_LT(peak, 1000000u);
}
