// SPDX-License-Identifier: BSD-3-Clause

// What results say of where they come from.
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "tests/tools/program.h"

using nlohmann::json;

namespace {

// As the system's own program has it.
std::string digestOf(const std::string& path) {
  return runProgram({"/usr/bin/sha256sum", path}).out.substr(0, 64);
}

json solved(std::vector<std::string> arguments, const ChildOptions& options = {}) {
  arguments.insert(arguments.begin(), "solve");
  arguments.push_back("--json");
  return json::parse(cornerpin(arguments, options).out);
}

// "name: why" of every track that is left out.
std::string leftOut(const json& result) {
  std::string text;
  for (const json& track : result["left_out_tracks"]) {
    text += track["name"].get<std::string>() + ": " + track["why"].get<std::string>() + " ";
  }
  EXPECT_EQ(result["left_out"], result["left_out_tracks"].size());
  return text;
}

// Six tracks that drift in frames 0 to 9; `late` only from frame 5 on, `none` has weight 0, `early`
// ends in frame 1.
std::string drift() {
  std::string csv = "track,frame,x,y,weight\n";
  for (int f = 0; f < 10; ++f) {
    const auto row = [&](const std::string& name, int x, int y, int weight) {
      csv += name + "," + std::to_string(f) + "," + std::to_string(x + 3 * f) + "," +
             std::to_string(y - 2 * f) + "," + std::to_string(weight) + "\n";
    };
    for (int t = 0; t < 6; ++t) row("t" + std::to_string(t), 90 * (t % 3), 70 * (t / 3) + t * t, 1);
    row("none", 40, 40, 0);
    if (f < 2) row("early", 50, 50, 1);
    if (f >= 5) row("late", 60, 60, 1);
  }
  return csv;
}

}  // namespace

TEST(ProvenanceCommand, NamesTheProgramAndTheInput) {
  const json j = solved({kFacade});
  EXPECT_EQ(j["program"]["name"], "cornerpin");
  const std::string version = j["program"]["version"];
  EXPECT_EQ(cornerpin({"--version"}).out.rfind("cornerpin " + version + "\n", 0), 0u);
  EXPECT_EQ(j["input"]["name"], "facade.csv");
  EXPECT_EQ(j["input"]["rows"], 4260);
  EXPECT_EQ(j["input"]["format"], "csv");
  EXPECT_EQ(j["input"]["sha256"], digestOf(kFacade));
  EXPECT_EQ(j["units"], "pixels of the input");
  EXPECT_TRUE(j["picture"]["width"].is_null());
}

TEST(ProvenanceCommand, HasEveryOptionAsItIsWithoutBeingGiven) {
  EXPECT_EQ(solved({kFacade})["options"], json::parse(R"({"base":"auto","reference":"base",
      "frames":"all","keep":[],"drop":[],"base_only":false,"hold":false,"units":"fit",
      "loss":"tukey","seed":1,"max_error":"auto","smooth":"off","fill":false,"at":[],
      "quads":[]})"));
}

TEST(ProvenanceCommand, HasEveryOptionAsItIsGiven) {
  const json j = solved({kFacade,       "--base",    "20",
                         "--reference", "30",        "--frames",
                         "10-",         "--keep",    "t00*",
                         "--keep",      "t01?,t02*", "--drop",
                         "t003:11-12",  "--hold",    "--base-only",
                         "--units",     "raw",       "--loss",
                         "huber",       "--seed",    "7",
                         "--max-error", "2.5",       "--smooth",
                         "0.5",         "--fill",    "--at",
                         "11.5,10.25",  "--quad",    "sign=120,100,300,100,300,200,120,200"});
  EXPECT_EQ(j["options"], json::parse(R"({"base":20,"reference":30,"frames":[10,null],
      "keep":["t00*","t01?,t02*"],"drop":["t003:11-12"],"base_only":true,"hold":true,"units":"raw",
      "loss":"huber","seed":7,"max_error":2.5,"smooth":0.5,"fill":true,"at":[11.5,10.25],
      "quads":[{"name":"sign","corners":[[120,100],[300,100],[300,200],[120,200]]}]})"));
}

TEST(ProvenanceCommand, DigestsWhatComesThroughStandardInput) {
  ChildOptions options;
  options.in = kFacade;
  const json piped = solved({"-"}, options);
  EXPECT_EQ(
      piped["input"],
      (json{{"name", nullptr}, {"sha256", digestOf(kFacade)}, {"format", "csv"}, {"rows", 4260}}));
  EXPECT_TRUE(solved({"/dev/stdin"}, options)["input"]["name"].is_null());
}

TEST(ProvenanceCommand, DependsNeitherOnTheFolderNorOnTheWayItIsMade) {
  const TemporaryFolder first;
  const TemporaryFolder second;
  const auto made = [](const TemporaryFolder& folder, std::vector<std::string> more) {
    std::filesystem::create_directory(folder / "in");
    const std::string shot = folder / "in" + std::string("/shot.csv");
    writeFile(shot, readFile(kFacade));
    more.insert(more.begin(), {"solve", shot, "--smooth", "1"});
    const Outcome run = cornerpin(more);
    EXPECT_EQ(run.code, 0);
    return run.out;
  };
  const std::string printed = made(first, {"--json"});
  EXPECT_FALSE(contains(printed, first / ""));
  made(second, {"--threads", "3", "--explain", second / "e.csv", "-o", second / "any.json"});
  EXPECT_EQ(readFile(second / "any.json"), printed);
}

TEST(ProvenanceCommand, NamesTracksThatAreLeftOutAndSaysWhy) {
  const TemporaryFolder folder;
  const std::string shot = folder / "shot.csv";
  writeFile(shot, drift());
  const auto with = [&](std::vector<std::string> more) {
    more.insert(more.begin(), {shot, "--base", "4", "--max-error", "50"});
    return leftOut(solved(more));
  };
  EXPECT_EQ(with({"--base-only"}), "early: absent-in-base late: absent-in-base none: no-weight ");
  EXPECT_EQ(with({"--loss", "none"}),
            "early: absent-in-base late: absent-in-base none: no-weight ");
  EXPECT_EQ(with({"--frames", "2-", "--drop", "t1", "--keep", "t*,none,early", "--drop", "t5"}),
            "early: outside-frames late: not-kept none: no-weight t1: dropped t5: dropped ");
}

TEST(ProvenanceCommand, IsKeptByARebaseWhichSaysWhatItDid) {
  const TemporaryFolder folder;
  const std::string result = folder / "shot.json";
  const auto rebased = [&](const std::string& from, const char* reference) {
    EXPECT_EQ(cornerpin({"rebase", from, "--reference", reference, "-o", folder / "r.json"}).code,
              0);
    return readFile(folder / "r.json");
  };
  ASSERT_EQ(cornerpin({"solve", kFacade, "--base", "20", "--drop", "t001", "-o", result}).code, 0);
  const json solve = json::parse(readFile(result));
  EXPECT_EQ(solve["rebased"], json::array());
  EXPECT_EQ(rebased(result, "20"), readFile(result));
  writeFile(folder / "one.json", rebased(result, "30"));
  const json two = json::parse(rebased(folder / "one.json", "40"));
  for (const char* field :
       {"program", "options", "input", "picture", "left_out", "left_out_tracks", "units"}) {
    EXPECT_EQ(two[field], solve[field]) << field;
  }
  const json& program = solve["program"];
  EXPECT_EQ(two["rebased"], (json{{{"from", 20}, {"to", 30}, {"program", program}},
                                  {{"from", 30}, {"to", 40}, {"program", program}}}));
}

TEST(ProvenanceCommand, IsNotInventedByARebase) {
  const TemporaryFolder folder;
  json old = solved({kFacade, "--base", "20"});
  for (const char* field :
       {"program", "options", "input", "picture", "rebased", "left_out_tracks"}) {
    old.erase(field);
  }
  old["units"] = "fit";
  writeFile(folder / "old.json", old.dump());
  const Outcome run = cornerpin(
      {"rebase", folder / "old.json", "--reference", "30", "-o", "-", "--format", "json"});
  const json again = json::parse(run.out);
  for (const char* field : {"program", "input", "left_out_tracks"}) {
    EXPECT_TRUE(again[field].is_null()) << field;
  }
  EXPECT_TRUE(again["options"]["base"].is_null());
  EXPECT_EQ(again["options"]["units"], "fit");
  EXPECT_EQ(again["rebased"].size(), 1u);
}
