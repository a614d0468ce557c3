// SPDX-License-Identifier: BSD-3-Clause

// What --drop, --keep and --frames take, and what they refuse.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/tools/program.h"

using nlohmann::json;

namespace {

// Eight tracks on a plane that drifts, in the frames -10 to 9.
const char* const kNames[] = {"n1", "n2", "\"p,1\"", "\"say \"\"x\"\"\"", "n*", "t:1", "t1", "t2"};

std::string drift() {
  std::string csv = "track,frame,x,y\n";
  for (int f = -10; f < 10; ++f) {
    for (int t = 0; t < 8; ++t) {
      csv += fmt::format("{},{},{},{}\n", kNames[t], f, 100 * (t % 4) + 3 * f + 7 * (t / 4),
                         80 * (t / 4) + 2 * f + 11 * (t % 3));
    }
  }
  return csv;
}

class SelectionCommand : public testing::Test {
 protected:
  SelectionCommand() { writeFile(shot(), drift()); }
  std::string shot() const { return folder_ / "shot.csv"; }

  Outcome solve(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"solve", shot(), "--base", "0"});
    return cornerpin(arguments);
  }
  json solved(std::vector<std::string> arguments) const {
    arguments.push_back("--json");
    const Outcome run = solve(arguments);
    // Some frames have few tracks left.
    EXPECT_TRUE(run.code == 0 || run.code == 4) << run.err;
    return json::parse(run.out);
  }

  // The names of tracks that are seen in a frame.
  static std::string seen(const json& result, int frame) {
    std::string names;
    for (const json& track : result["tracks"]) {
      bool absent = false;
      for (const json& run : track["absent"]) absent |= run[0] <= frame && frame <= run[1];
      if (!absent) names += track["name"].get<std::string>() + " ";
    }
    return names;
  }

 private:
  TemporaryFolder folder_;
};

// The rows of a file whose frames are in the range.
std::string cut(const std::string& path, int first, int last) {
  std::istringstream rows(readFile(path));
  std::string row;
  std::getline(rows, row);
  std::string text = row + "\n";
  while (std::getline(rows, row)) {
    const int frame = std::stoi(row.substr(row.find(',') + 1));
    if (first <= frame && frame <= last) text += row + "\n";
  }
  return text;
}

}  // namespace

TEST_F(SelectionCommand, DropsByPatternAndKeepsByPattern) {
  EXPECT_EQ(seen(solved({"--drop", "n?:-3-,t[12]:5"}), 5), "p,1 say \"x\" t:1 ");
  EXPECT_EQ(seen(solved({"--keep", "n[12],t*,p*"}), 5), "n1 n2 p,1 t1 t2 t:1 ");
}

TEST_F(SelectionCommand, TakesTheExactNameBeforeThePattern) {
  EXPECT_EQ(seen(solved({"--drop", "n*"}), 0), "n1 n2 p,1 say \"x\" t1 t2 t:1 ");
  EXPECT_EQ(seen(solved({"--drop", "t:1"}), 1), "n* n1 n2 p,1 say \"x\" t1 t2 ");
}

TEST_F(SelectionCommand, TakesNamesWithCommasAndQuotes) {
  EXPECT_EQ(seen(solved({"--drop", "\"p,1\",t1"}), 0), "n* n1 n2 say \"x\" t2 t:1 ");
  EXPECT_EQ(seen(solved({"--drop", "p,1"}), 0), "n* n1 n2 say \"x\" t1 t2 t:1 ");
  const json result = solved({"--drop", "\"say \"\"x\"\"\":-5--2"});
  EXPECT_EQ(seen(result, -2), "n* n1 n2 p,1 t1 t2 t:1 ");
  EXPECT_EQ(seen(result, -1), "n* n1 n2 p,1 say \"x\" t1 t2 t:1 ");
}

TEST_F(SelectionCommand, TakesFramesBelowNothing) {
  const json result = solved({"--drop", "t1:-10--3,t2:-5,t2:-5"});
  EXPECT_EQ(seen(result, -10), "n* n1 n2 p,1 say \"x\" t2 t:1 ");
  EXPECT_EQ(seen(result, -5), "n* n1 n2 p,1 say \"x\" t:1 ");
  EXPECT_EQ(seen(result, -2), "n* n1 n2 p,1 say \"x\" t1 t2 t:1 ");
}

TEST_F(SelectionCommand, SolvesARangeOfTheShot) {
  const auto frames = [this](const char* range) {
    const json result = solved({"--frames", range});
    return fmt::format("{}-{}", result["frames"].front()["frame"].get<int>(),
                       result["frames"].back()["frame"].get<int>());
  };
  EXPECT_EQ(frames("-3-4"), "-3-4");
  EXPECT_EQ(frames("-3-"), "-3-9");
  EXPECT_EQ(frames("-100-2"), "-10-2");
  const json before = json::parse(
      cornerpin({"solve", shot(), "--json", "--frames", "-8--3", "--drop", "t1:5"}).out);
  EXPECT_EQ(before["frames"].size(), 6u);
}

TEST_F(SelectionCommand, CountsWhatIsLeftOutByItsReason) {
  const std::string both = solve({"--verbose", "--drop", "t1,t2"}).out;
  EXPECT_TRUE(contains(both, "\nleft out      2 tracks: 2 dropped\n")) << both;
  const std::string more = solve({"--verbose", "--drop", "t1", "--keep", "n1,n2,p*,s*,t1,t2"}).out;
  EXPECT_TRUE(contains(more, "\nleft out      3 tracks: 2 not kept, 1 dropped\n")) << more;
  EXPECT_FALSE(contains(solve({"--verbose"}).out, "left out"));
}

TEST_F(SelectionCommand, SaysWhatToWriteInstead) {
  const auto expectRefused = [this](const std::vector<std::string>& arguments,
                                    const std::string& message) {
    const Outcome run = solve(arguments);
    EXPECT_EQ(run.code, 2);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "cornerpin: " + message + "\n");
  };
  expectRefused({"--drop", "p1"},
                "--drop: \"p1\" names no track of this shot: did you mean n1, "
                "\"p,1\" or t1?");
  expectRefused({"--keep", "w*"},
                "--keep: \"w*\" names no track of this shot: take one of n*, n1, n2 ...");
  expectRefused({"--drop", "\"p,1"},
                "--drop: \"\"p,1\" has a quote that is never closed: close it");
  expectRefused({"--drop", "t1:50-60"},
                "--drop: \"t1:50-60\" names no frame of this shot: take some from -10 to 9");
  expectRefused({"--frames", "x"},
                "--frames: \"x\" is no range of frames: write it like 60, 60-81 or 60-");
  expectRefused({"--frames", "5--5"}, "--frames: \"5--5\" runs backwards: write -5-5");
  expectRefused({"--frames", "99999999999"},
                "--frames: \"99999999999\" has a frame that is too large: take one from "
                "-2147483648 to 2147483647");
  expectRefused({"--frames", "100-200"},
                "--frames: \"100-200\" has no frame with a track: take some from -10 to 9");
  expectRefused({"--drop", "*"}, "--keep and --drop leave no track: keep or drop others");
  expectRefused({"--keep", "t1:-9", "--frames", "0-"},
                "--keep and --drop leave no track in the frames of --frames: keep or drop others");
}

TEST(SelectionOfTracksCommand, LeavesOutWhatIsDroppedAndUsesOnlyWhatIsKept) {
  const std::string names = "t000,t001,t002,t003,t004,t005";
  const json kept = json::parse(cornerpin({"solve", kFacade, "--json", "--keep", names}).out);
  EXPECT_EQ(kept["base_tracks"], 6);
  EXPECT_EQ(kept["frames"].size(), 71u);
  const json dropped = json::parse(cornerpin({"solve", kFacade, "--json", "--keep", names, "--drop",
                                              "t000:40-45", "--drop", "t000:50"})
                                       .out);
  for (int f : {39, 40, 45, 46, 49, 50, 51}) {
    const bool out = (f >= 40 && f <= 45) || f == 50;
    const auto i = static_cast<std::size_t>(f);
    EXPECT_EQ(kept["frames"][i]["tracks"].get<int>() - dropped["frames"][i]["tracks"].get<int>(),
              out ? 1 : 0)
        << f;
  }
}

// The frames outside take no part: the result is that of a file without them.
TEST(SelectionOfFramesCommand, IsTheResultOfAFileWithoutTheOthers) {
  const TemporaryFolder folder;
  const std::string planks = CORNERPIN_DATA "/planks.csv";
  writeFile(folder / "cut.csv", cut(planks, 40, 80));
  const json whole = json::parse(cornerpin({"solve", planks, "--json", "--frames", "40-80"}).out);
  const json other = json::parse(cornerpin({"solve", folder / "cut.csv", "--json"}).out);
  ASSERT_EQ(whole["frames"].size(), 41u);
  EXPECT_EQ(whole["frames"], other["frames"]);
  EXPECT_EQ(whole["base_why"], other["base_why"]);
  EXPECT_EQ(whole["worst_tracks"], other["worst_tracks"]);
  EXPECT_EQ(whole["handed_over"], other["handed_over"]);
  const std::size_t outside = whole["tracks"].size() - other["tracks"].size();
  std::size_t said = 0;
  for (const json& track : whole["left_out_tracks"]) said += track["why"] == "outside-frames";
  EXPECT_EQ(said, outside);
  EXPECT_GT(outside, 0u);
}
