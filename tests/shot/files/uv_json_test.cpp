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
  ByteSource source(folder / "in.json");
  ReadTrace nobody;
  const Progress progress;
  const FrameRange frames;
  return readUvJson({source, progress, frames, trace != nullptr ? *trace : nobody});
}

// What is said of a text, behind the file's name.
std::string refusalOfAll(const std::string& text) {
  try {
    readJson(text);
  } catch (const InputError& error) {
    const std::string message = error.what();
    return message.substr(message.find("in.json") + 7);
  }
  return "";
}

// The same of one point with these frames.
std::string refusal(const std::string& frames) {
  return refusalOfAll("{\"version\": 2, \"points\": [{\"name\": \"a\", \"per_frame\": [" + frames +
                      "]}]}");
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

TEST(ReadUvJson, RefusesWhatHasAnotherShape) {
  EXPECT_EQ(refusalOfAll("[]"), ": an object is needed");
  EXPECT_EQ(refusalOfAll("1"), ": an object is needed");
  EXPECT_EQ(refusalOfAll(R"({"version": 2})"), ": points: missing");
  EXPECT_EQ(refusalOfAll(R"({"points": 1})"), ": points: a list is needed");
  EXPECT_EQ(refusalOfAll(R"({"points": {}})"), ": points: a list is needed");
  EXPECT_EQ(refusalOfAll(R"({"points": [], "points": []})"), ": points: there twice");
  EXPECT_EQ(refusalOfAll(R"({"points": [1]})"), ": points[0]: an object is needed");
  EXPECT_EQ(refusalOfAll(R"({"points": [[]]})"), ": points[0]: an object is needed");
  const std::string place = ": points[1]";
  const auto second = [](const std::string& members) {
    return refusalOfAll(R"({"points": [{"name": "a", "per_frame": []}, {)" + members + "}]}");
  };
  EXPECT_EQ(second(R"("per_frame": [])"), place + ".name: missing");
  EXPECT_EQ(second(R"("per_frame": [], "name": 1)"), place + ".name: a text is needed");
  EXPECT_EQ(second(R"("per_frame": [], "name": {})"), place + ".name: a text is needed");
  EXPECT_EQ(second(R"("per_frame": [], "name": "")"), place + ".name: a name is needed");
  EXPECT_EQ(second(R"("per_frame": [], "name": "a", "set_name": 2)"),
            place + ".set_name: a text is needed");
  EXPECT_EQ(second(R"("name": "a")"), place + ".per_frame: missing");
  EXPECT_EQ(second(R"("name": "a", "per_frame": 1)"), place + ".per_frame: a list is needed");
  EXPECT_EQ(second(R"("name": "a", "per_frame": {})"), place + ".per_frame: a list is needed");
  EXPECT_EQ(second(R"("name": "a", "per_frame": [], "per_frame": [])"),
            place + ".per_frame: there twice");
}

TEST(ReadUvJson, TakesANameBehindTheFrames) {
  const Tracks tracks = readJson(
      R"({"points": [{"per_frame": [{"pos": [1, 2], "frame": 3, "frame": 4}], "name": "a"}]})");
  EXPECT_EQ(rowsOf(tracks), (std::vector<ReadRow>{{"a", 4, 1.0, 2.0}}));
}

TEST(ReadUvJson, RefusesWhatIsNoJsonWithItsLine) {
  EXPECT_EQ(refusalOfAll("{\n\"points\": [}").substr(0, 12), ":2: not JSON");
  EXPECT_EQ(refusalOfAll("{\"points\": [\n]").substr(0, 12), ":2: not JSON");
  EXPECT_EQ(refusalOfAll("{\"points\": []}\n{").substr(0, 12), ":2: not JSON");
  EXPECT_EQ(refusalOfAll("{\"points\": 1e400}").substr(0, 12), ":1: not JSON");
  EXPECT_EQ(refusalOfAll(std::string(2000, '[')), ": an object is needed");
  EXPECT_EQ(refusalOfAll("{\"x\":" + std::string(2000, '[')),
            ":1: lists and objects are nested too deep");
}

TEST(ReadUvJson, RefusesWithThePlaceInTheFile) {
  const std::string place = ": points[0].per_frame[0]";
  EXPECT_EQ(refusal(""), ": no track is in it");
  EXPECT_EQ(refusal("1"), place + ": an object is needed");
  EXPECT_EQ(refusal("[]"), place + ": an object is needed");
  EXPECT_EQ(refusal(R"({"frame": 1})"), place + ".pos: missing");
  EXPECT_EQ(refusal(R"({"frame": 1.5, "pos": [1, 2]})"),
            place + ".frame: a whole number of 32 bits is needed");
  EXPECT_EQ(refusal(R"({"frame": 1, "pos": [1]})"), place + ".pos: a list of 2 is needed");
  EXPECT_EQ(refusal(R"({"frame": 1, "pos": [1, 2, 3, 4]})"), place + ".pos: a list of 2 is needed");
  EXPECT_EQ(refusal(R"({"frame": 1, "pos": {}})"), place + ".pos: a list of 2 is needed");
  EXPECT_EQ(refusal(R"({"frame": 1, "pos": [1, [2]]})"), place + ".pos[1]: a number is needed");
  EXPECT_EQ(refusal(R"({"frame": {"frame": 1}, "pos": [1, 2]})"),
            place + ".frame: a whole number of 32 bits is needed");
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
