// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/uv_json.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/shot/files/line_files.h"
#include "tests/shot/files/tracks_in.h"

using namespace cornerpin;

namespace {

Tracks readJson(const std::string& text, ReadTrace* trace = nullptr) {
  const TemporaryFolder folder;
  writeFile(folder / "in.json", text);
  const JsonFile file(folder / "in.json");
  EXPECT_TRUE(isUvJson(file.whole()));
  ByteSource source(folder / "in.json");
  ReadTrace nobody;
  const Progress progress;
  const FrameRange frames;
  return readUvJson(file.whole(), {source, progress, frames, trace != nullptr ? *trace : nobody});
}

// What is said of one point with these frames, behind the file's name.
std::string refusal(const std::string& frames) {
  try {
    readJson("{\"version\": 2, \"points\": [{\"name\": \"a\", \"per_frame\": [" + frames + "]}]}");
  } catch (const InputError& error) {
    const std::string message = error.what();
    return message.substr(message.find("in.json") + 7);
  }
  return "";
}

bool isUv(const std::string& text) {
  const nlohmann::json json = nlohmann::json::parse(text);
  const std::string file = "f";
  return isUvJson({json, file});
}

}  // namespace

TEST(ReadUvJson, ReadsPositionsAndWeightsAndSaysWhatIsLeftOut) {
  ReadTrace trace;
  const Tracks tracks = readJson(
      R"({"version": 3, "camera": {}, "points": [
      {"name": "a", "set_name": "left", "id": 7, "per_frame": [
        {"frame": 1001, "pos_dist": [0.25, 0.75], "pos_undist": [0.3, 0.7], "weight": 0.5},
        {"frame": 1003, "pos": [0.5, -0.5]},
        {"frame": 1004, "pos": [null, null], "weight": 1}]},
      {"name": "a", "set_name": "right", "per_frame": [{"frame": 1001, "pos_undist": [1, 1]}]},
      {"name": "b", "per_frame": [{"frame": 1002, "pos": [0, 0.125], "weight": 0}]}]})",
      &trace);
  EXPECT_EQ(rowsOf(tracks), (std::vector<ReadRow>{{"a@left", 1001, 0.25, 0.75},
                                                  {"a@left", 1003, 0.5, -0.5},
                                                  {"a@right", 1001, 1.0, 1.0},
                                                  {"b", 1002, 0.0, 0.125}}));
  EXPECT_EQ(tracks.observations[0].weight, 0.5f);
  EXPECT_EQ(tracks.observations[1].weight, 1.0f);
  EXPECT_EQ(tracks.observations[2].weight, 0.0f);
  EXPECT_EQ(tracks.picture.scale, Scale::Picture);
  EXPECT_EQ(tracks.picture.y, YAxis::Up);
  EXPECT_EQ(trace.rows, 4);
  ASSERT_EQ(trace.notes.size(), 1u);
  EXPECT_NE(trace.notes[0].find(": left out: camera, id, pos_undist"), std::string::npos);
}

TEST(ReadUvJson, KnowsItsFilesByTheirShape) {
  EXPECT_TRUE(isUv(R"({"version": 2, "points": []})"));
  EXPECT_TRUE(isUv(R"({"version": 2, "points": [{"per_frame": 1}]})"));
  for (const char* other :
       {R"([])", R"({"points": []})", R"({"version": 2})", R"({"version": 2, "points": 1})",
        R"({"version": 2, "points": [1]})", R"({"version": 2, "points": [{"name": "a"}]})"}) {
    EXPECT_FALSE(isUv(other)) << other;
  }
}

TEST(ReadUvJson, RefusesWithThePlaceInTheFile) {
  const std::string place = ": points[0].per_frame[0]";
  EXPECT_EQ(refusal(""), ": no track is in it");
  EXPECT_EQ(refusal("1"), place + ": an object is needed");
  EXPECT_EQ(refusal(R"({"frame": 1})"), place + ".pos: missing");
  EXPECT_EQ(refusal(R"({"frame": 1.5, "pos": [1, 2]})"),
            place + ".frame: a whole number of 32 bits is needed");
  EXPECT_EQ(refusal(R"({"frame": 1, "pos": [1]})"), place + ".pos: a list of 2 is needed");
  EXPECT_EQ(refusal(R"({"frame": 1, "pos": [1, "x"]})"), place + ".pos[1]: a number is needed");
  EXPECT_EQ(refusal(R"({"frame": 1, "pos": [1, 4e38]})"),
            place + ".pos[1]: the number is too large");
  EXPECT_EQ(refusal(R"({"frame": 1, "pos": [1, null]})"),
            place + ".pos: of a gap both are NaN or null");
  EXPECT_EQ(refusal(R"({"frame": 1, "pos": [1, 1], "weight": -1})"),
            place + ".weight: a number from 0 on is needed");
  EXPECT_EQ(refusal(R"({"frame": 1, "pos": [1, 1], "weight": 4e38})"),
            place + ".weight: the number is too large");
}
