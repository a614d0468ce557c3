// SPDX-License-Identifier: BSD-3-Clause
#include "show/show_difference.h"

#include <cornerpin/shot.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "tests/support/files.h"
#include "tests/support/small_shot.h"

using namespace cornerpin;

namespace {

using Json = nlohmann::json;

// A result of three frames whose second is moved to the right.
Json moved(double by) {
  static const std::string text = [] {
    const TemporaryFolder folder;
    writeFile(folder / "a.csv", smallShot(0));
    shot::Options options;
    options.base = 0;
    return shot::solve(shot::readTracks(folder / "a.csv"), options).toJson();
  }();
  Json result = Json::parse(text);
  for (Json& frame : result["frames"]) {
    const double x = frame["frame"] == 1 ? by : 0.0;
    frame["h"] = {{1.0, 0.0, x}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}};
  }
  return result;
}

// The folder of a batch.
struct Batch {
  TemporaryFolder folder;
  std::string path = folder.path().string();

  void add(const std::string& name, const Json& result) {
    write(name, ShotState::Solved);
    writeFile(folder / (name + ".json"), result.dump());
  }
  void write(const std::string& name, ShotState state) {
    TaskRecord record;
    record.task.name = name;
    record.state = state;
    if (state != ShotState::Failed) record.figures.emplace();
    writeFile(folder / recordNameOf(name), recordText(record));
  }
};

std::string textOf(const Batch& first, const Batch& second, std::optional<double> most = {}) {
  return textOf(differenceOfShows(first.path, second.path, most), "old", "new");
}

}  // namespace

TEST(ShowDifference, HasTheShotsThatMovedFarthestFirst) {
  Batch first;
  Batch second;
  for (const char* name : {"a", "b", "c"}) first.add(name, moved(0.0));
  second.add("a", moved(0.25));
  second.add("b", moved(0.0));
  second.add("c", moved(4.0));
  EXPECT_EQ(textOf(first, second),
            "c  4 px in frame 1; 1 of 3 frames\na  0.25 px in frame 1; 1 of 3 frames\n"
            "Different: 2 of 3 shots in both\n");
  EXPECT_EQ(textOf(first, second, 0.25),
            "c  4 px in frame 1; 1 of 3 frames\nDifferent: 1 of 3 shots in both\n");
  EXPECT_EQ(textOf(first, second, 4.0), "Same: 3 shots\n");
  EXPECT_EQ(textOf(first, first), "Same: 3 shots\n");
}

TEST(ShowDifference, NamesShotsOfOneOnly) {
  Batch first;
  Batch second;
  first.add("a", moved(0.0));
  first.add("b", moved(0.0));
  second.add("b", moved(0.0));
  second.add("c", moved(0.0));
  EXPECT_EQ(textOf(first, second, 100.0),
            "a  only in old\nc  only in new\nDifferent: 0 of 1 shot in both, 2 in one only\n");
}

TEST(ShowDifference, TellsShotsThatFailInOneOnly) {
  Batch first;
  Batch second;
  first.add("a", moved(0.0));
  second.write("a", ShotState::Failed);
  first.write("b", ShotState::Failed);
  second.write("b", ShotState::Failed);
  EXPECT_EQ(textOf(first, second, 100.0),
            "a  solved, now failed\nDifferent: 1 of 2 shots in both\n");
  EXPECT_EQ(textOf(second, first), "a  failed, now solved\nDifferent: 1 of 2 shots in both\n");
}

TEST(ShowDifference, LooksAtNothingButResults) {
  Batch first;
  Batch second;
  Json result = moved(1.0);
  result["program"]["version"] = "1";
  first.add("a", result);
  result["program"]["version"] = "2";
  second.add("a", result);
  EXPECT_EQ(textOf(first, second), "Same: 1 shot\n");
  result["input"]["sha256"] = std::string(64, '0');
  result["frames"].erase(2);
  second.add("a", result);
  EXPECT_EQ(textOf(first, second),
            "a  1 frame in one only; other tracks\nDifferent: 1 of 1 shot in both\n");
}

TEST(ShowDifference, TellsResultsWithoutAFrameInCommon) {
  Batch first;
  Batch second;
  Json late = moved(0.0);
  for (const char* member : {"base_frame", "reference_frame"}) late[member] = 10;
  for (Json& frame : late["frames"]) frame["frame"] = frame["frame"].get<int>() + 10;
  for (Json& track : late["tracks"]) track["good"] = {{10, 12}};
  first.add("a", moved(0.0));
  second.add("a", late);
  const std::string text = textOf(first, second);
  EXPECT_NE(text.find("; 6 frames in one only"), std::string::npos) << text;
  EXPECT_NE(text.find("Different: 1 of 1 shot in both\n"), std::string::npos) << text;
}

TEST(ShowDifference, NeedsRecordsAndTheirResults) {
  Batch first;
  Batch second;
  EXPECT_THROW(textOf(first, second), shot::InputError);
  first.add("a", moved(0.0));
  EXPECT_THROW(textOf(first, second), shot::InputError);
  second.write("a", ShotState::Solved);
  EXPECT_THROW(textOf(first, second), shot::InputError);
  // Nor is nothing, or what is no result, the same as itself.
  std::filesystem::remove(first.folder / "a.json");
  EXPECT_THROW(textOf(first, second), shot::InputError);
  for (const char* text : {"", "notes", "{\"cornerpin\":2,\n"}) {
    writeFile(first.folder / "a.json", text);
    EXPECT_THROW(textOf(first, first), shot::InputError) << text;
  }
  for (const char* name : {"a.json", "a.task.json"}) {  // nobody writes to them
    std::filesystem::remove(first.folder / name);
    ASSERT_EQ(::mkfifo((first.folder / name).c_str(), 0600), 0);
    EXPECT_THROW(textOf(first, second), shot::InputError) << name;
    EXPECT_THROW(textOf(second, first), shot::InputError) << name;
  }
}
