// SPDX-License-Identifier: BSD-3-Clause
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/files.h"
#include "tests/support/process.h"
#include "tests/support/terminal.h"
#include "tests/tools/program.h"

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

const std::string kScreen = CORNERPIN_DATA "/screen4.csv";

// The names of the first tracks of a file, as a list.
std::string firstTracks(const std::string& path, std::size_t count) {
  std::istringstream rows(readFile(path));
  std::string line;
  std::getline(rows, line);
  std::vector<std::string> names;
  while (names.size() < count && std::getline(rows, line)) {
    const std::string name = line.substr(0, line.find(','));
    if (names.empty() || names.back() != name) names.push_back(name);
  }
  std::string list;
  for (const std::string& name : names) list += (list.empty() ? "" : ",") + name;
  return list;
}

}  // namespace

TEST(SolveCommand, WritesJsonPrintsATableAndEndsInZero) {
  const TemporaryFolder folder;
  const Outcome run = cornerpin({"solve", kFacade, "-o", folder / "out.json"});
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_TRUE(contains(run.out, "base frame    35  (60 tracks)\nsolved        71 of 71"));
  const json j = json::parse(readFile(folder / "out.json"));
  EXPECT_EQ(j["cornerpin"], 2);
  EXPECT_EQ(j["base_why"].get<std::string>().rfind("frame 35: corners expected within ", 0), 0u);
  EXPECT_EQ(j["frames"].size(), 71u);
  EXPECT_EQ(j["frames"][70]["status"], "solved");
  EXPECT_EQ(folder.entryCount(), 1u);
}

// Four tracks go and four others come, which share frames 5 to 14.
TEST(SolveCommand, HandsOverUnlessTheBaseFramesTracksAreToDecide) {
  const TemporaryFolder folder;
  std::string csv = "track,frame,x,y\n";
  for (int f = 0; f < 20; ++f) {
    for (int t = 0; t < 16; ++t) {
      if (t < 8 ? f > 14 : f < 5) continue;
      csv += fmt::format("t{},{},{},{}\n", t, f, 100 * (t % 4) + 3 * f + 7 * (t / 8),
                         80 * (t / 4) + 2 * f);
    }
  }
  writeFile(folder / "in.csv", csv);
  const Outcome all = cornerpin({"solve", folder / "in.csv", "--base", "0", "--verbose"});
  EXPECT_EQ(all.code, 0);
  EXPECT_TRUE(contains(all.out, "base frame    0  (8 tracks)\nhand-over     8 tracks")) << all.out;
  EXPECT_TRUE(contains(all.out, "\nsolved        20 of 20 frames\n"));
  const Outcome few =
      cornerpin({"solve", folder / "in.csv", "--base", "0", "--base-only", "--verbose"});
  EXPECT_EQ(few.code, 4);
  EXPECT_TRUE(contains(few.out,
                       "left out      8 tracks: 8 absent in the base frame\n"
                       "solved        15 of 20 frames, 5 held: their neighbour's transform\n"));
}

TEST(SolveCommand, WritesNoFieldThatIsNotDescribed) {
  const std::string text = readFile(CORNERPIN_DATA "/../docs/result.md");
  const json j = json::parse(
      cornerpin({"solve", kScreen, "--json", "--reference", "0", "--quads", "0,0,1,0,1,1,0,1"})
          .out);
  EXPECT_TRUE(contains(text, "now " + j["cornerpin"].dump() + "."));
  const json facade = json::parse(cornerpin({"solve", kFacade, "--json"}).out);
  for (const json& object :
       {j, j["quads"][0], j["tracks"][0], j["frames"][87], j["frames"][87]["quads"]["quad"],
        facade["worst_tracks"][0], facade["frames"][1]}) {
    for (const auto& field : object.items()) {
      EXPECT_TRUE(contains(text, "`" + field.key() + "`")) << field.key();
    }
  }
}

TEST(SolveCommand, WritesCsvByExtension) {
  const TemporaryFolder folder;
  EXPECT_EQ(cornerpin({"solve", kFacade, "-o", folder / "out.csv"}).code, 0);
  const std::string text = readFile(folder / "out.csv");
  EXPECT_EQ(text.substr(0, 20), "frame,h00,h01,h02,h1");
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 72);
}

TEST(SolveCommand, WritesTheNamedFormatWhateverTheExtension) {
  const TemporaryFolder folder;
  EXPECT_EQ(cornerpin({"solve", kFacade, "-o", folder / "out.dat", "--format", "csv"}).code, 0);
  EXPECT_EQ(readFile(folder / "out.dat").substr(0, 6), "frame,");
}

TEST(SolveCommand, PrintsTheSameJsonInPlaceOfTheTable) {
  const TemporaryFolder folder;
  const Outcome run = cornerpin({"solve", kFacade, "--json", "-o", folder / "out.json"});
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.out, readFile(folder / "out.json"));
}

TEST(SolveCommand, ReadsStandardInput) {
  ChildOptions options;
  options.in = kFacade;
  const json piped = json::parse(cornerpin({"solve", "-", "--json"}, options).out);
  json named = json::parse(cornerpin({"solve", kFacade, "--json"}).out);
  named["input"]["name"] = nullptr;
  EXPECT_TRUE(piped == named);
}

TEST(SolveCommand, CarriesAQuad) {
  const Outcome run = cornerpin(
      {"solve", kFacade, "--json", "--base", "0", "--quads", "-10,20,100,20,100,80,-10,80"});
  const json j = json::parse(run.out);
  EXPECT_EQ(j["frames"][0]["quads"]["quad"]["corners"],
            json::parse("[[-10,20],[100,20],[100,80],[-10,80]]"));
  EXPECT_EQ(j["frames"][70]["quads"]["quad"]["corners"].size(), 4u);
}

TEST(SolveCommand, SaysHowFarAQuadMayBeOff) {
  for (const char* option : {"--quad", "--quads"}) {
    const Outcome run = cornerpin({"solve", kFacade, "--base", "35", option, "0,0,9,0,9,9,0,9"});
    EXPECT_EQ(run.code, 0);
    EXPECT_TRUE(contains(run.out, "\ncorners       may be off by median ")) << run.out;
  }
}

TEST(SolveCommand, RefusesAQuadOfNobodyKnowsWhichFrame) {
  for (const std::vector<std::string>& base :
       {std::vector<std::string>{}, std::vector<std::string>{"--base", "auto"}}) {
    std::vector<std::string> words = {"solve", kFacade, "--json", "--quad", "0,0,9,0,9,9,0,9"};
    words.insert(words.end(), base.begin(), base.end());
    const Outcome run = cornerpin(words);
    EXPECT_EQ(run.code, 2);
    EXPECT_EQ(run.err,
              "cornerpin: --quad: on which frame were the corners read? Add --reference FRAME\n");
  }
}

TEST(SolveCommand, IsRelativeToAnyFrame) {
  const json plain = json::parse(cornerpin({"solve", kFacade, "--json", "--base", "20"}).out);
  const json j =
      json::parse(cornerpin({"solve", kFacade, "--json", "--base", "20", "--reference", "50"}).out);
  EXPECT_EQ(j["base_frame"], 20);
  EXPECT_EQ(j["reference_frame"], 50);
  EXPECT_EQ(j["frames"][50]["h"], json::parse("[[1,0,0],[0,1,0],[0,0,1]]"));
  EXPECT_EQ(j["frames"][20]["status"], "base");
  // The corners are where they were, now carried from frame 50.
  for (std::size_t f : {0u, 20u, 50u, 70u}) {
    const json& there = j["frames"][f]["quads"]["tracks"]["corners"];
    const json& before = plain["frames"][f]["quads"]["tracks"]["corners"];
    for (std::size_t c = 0; c < 4; ++c) {
      for (std::size_t x : {0u, 1u}) {
        EXPECT_NEAR(there[c][x].get<double>(), before[c][x].get<double>(), 1e-9);
      }
    }
    EXPECT_EQ(j["frames"][f]["rms"], plain["frames"][f]["rms"]);
  }
  EXPECT_EQ(j["quads"][0]["corners"], j["frames"][50]["quads"]["tracks"]["corners"]);
}

TEST(SolveCommand, ReadsQuadsOnTheReferenceFrame) {
  const json j = json::parse(cornerpin({"solve", kFacade, "--json", "--reference", "50", "--quad",
                                        "door=100,200,400,210,390,500,110,480", "--quad",
                                        "500,200,700,210,690,500,510,480"})
                                 .out);
  EXPECT_EQ(j["frames"][50]["quads"]["door"]["corners"],
            json::parse("[[100,200],[400,210],[390,500],[110,480]]"));
  EXPECT_EQ(j["frames"][50]["quads"]["quad"]["deviation"], json::parse("[0,0,0,0]"));
  EXPECT_GT(j["frames"][20]["quads"]["quad"]["deviation"][0], 0.0);
}

TEST(SolveCommand, TakesTheQuadsOfAResult) {
  const TemporaryFolder folder;
  const std::string first = folder / "a.json";
  cornerpin({"solve", kFacade, "-o", first, "--reference", "50", "--quad",
             "door=100,200,400,210,390,500,110,480"});
  const Outcome run =
      cornerpin({"solve", kFacade, "--json", "--quads", first, "--reference", "50"});
  EXPECT_EQ(run.out, readFile(first));
  EXPECT_EQ(cornerpin({"solve", kFacade, "--json", "--quads", first, "--base", "3"}).code, 2);
  writeFile(folder / "bad.json", "{\"door\":[1,2]}");
  const Outcome bad =
      cornerpin({"solve", kFacade, "--json", "--quads", folder / "bad.json", "--base", "3"});
  EXPECT_EQ(bad.code, 3);
  EXPECT_EQ(bad.err, "cornerpin: " + folder / "bad.json" + ": door: a list of 4 is needed\n");
}

TEST(SolveCommand, WritesALongCsvOfSeveralQuads) {
  const Outcome run = cornerpin({"solve", kFacade, "--base", "0", "--quad", "a=0,0,9,0,9,9,0,9",
                                 "--quad", "b=0,0,9,0,9,9,0,9", "-o", "-", "--format", "csv"});
  EXPECT_EQ(run.out.substr(0, 15), "frame,quad,h00,");
  EXPECT_EQ(std::count(run.out.begin(), run.out.end(), '\n'), 1 + 2 * 71);
}

TEST(SolveCommand, SaysWhyAFrameCannotBeTheReference) {
  const Outcome outside = cornerpin({"solve", kFacade, "--reference", "71"});
  EXPECT_EQ(outside.code, 2);
  EXPECT_EQ(outside.err,
            "cornerpin: reference frame 71 is not in the shot: take one from 0 to 70\n");
  const Outcome held = cornerpin({"solve", kScreen, "--hold", "--reference", "87"});
  EXPECT_EQ(held.code, 2);
  EXPECT_EQ(held.err,
            "cornerpin: frame 87 cannot be the reference: it was held (3 of the 4 tracks needed): "
            "take another one\n");
}

TEST(SolveCommand, ExplainsWhatTracksDoToAQuad) {
  const TemporaryFolder folder;
  EXPECT_EQ(cornerpin({"solve", kFacade, "--base", "0", "--quads", "0,0,9,0,9,9,0,9", "--explain",
                       folder / "a"})
                .code,
            0);
  EXPECT_EQ(cornerpin({"solve", kFacade, "--explain", folder / "b"}).code, 0);
  EXPECT_NE(readFile(folder / "a"), readFile(folder / "b"));
}

TEST(SolveCommand, TakesABaseFrame) {
  EXPECT_EQ(json::parse(cornerpin({"solve", kFacade, "--json", "--base", "33"}).out)["base_frame"],
            33);
  const TemporaryFolder folder;
  writeFile(folder / "in.csv", "track,frame,x,y\na,-4,1,1\nb,-4,2,1\nc,-4,2,2\nd,-4,1,2\n");
  EXPECT_EQ(
      json::parse(
          cornerpin({"solve", folder / "in.csv", "--json", "--base", "-4"}).out)["base_frame"],
      -4);
}

TEST(SolveCommand, TakesEverySeedOf64Bits) {
  const json j =
      json::parse(cornerpin({"solve", kFacade, "--json", "--seed", "18446744073709551615"}).out);
  EXPECT_EQ(j["seed"], 18446744073709551615u);
}

TEST(SolveCommand, HandsRawUnitsOver) {
  const std::vector<std::string> plain = {"solve", kFacade, "--json", "--loss", "none"};
  std::vector<std::string> raw = plain;
  raw.insert(raw.end(), {"--units", "raw"});
  const json j = json::parse(cornerpin(raw).out);
  EXPECT_EQ(j["options"]["units"], "raw");
  EXPECT_NE(j["frames"][70]["h"], json::parse(cornerpin(plain).out)["frames"][70]["h"]);
}

TEST(SolveCommand, EndsInFourWithTheFileWrittenWhenFramesAreNotSolvedInFull) {
  const TemporaryFolder folder;
  const Outcome run = cornerpin({"solve", kScreen, "-o", folder / "out.json"});
  EXPECT_EQ(run.code, 4);
  EXPECT_TRUE(contains(run.out, " frames, 12 reduced to a simpler transform\n"));
  const json j = json::parse(readFile(folder / "out.json"));
  EXPECT_EQ(j["frames"][87]["status"], "reduced");
  EXPECT_EQ(j["frames"][87]["model"], "affine");
  EXPECT_EQ(j["frames"][87]["reason"], "3 of the 4 tracks needed");
  EXPECT_EQ(j["frames"][87]["kept_from"], json({86, 89}));
  EXPECT_EQ(j["frames"][96]["h"][2], j["frames"][95]["h"][2]);
}

TEST(SolveCommand, EndsInFourWhereFramesAreOnlyReducedOrOnlyHeld) {
  const std::vector<std::string> three = {"solve", kFacade, "--keep", firstTracks(kFacade, 3)};
  const Outcome reduced = cornerpin(three);
  EXPECT_EQ(reduced.code, 4);
  EXPECT_TRUE(contains(reduced.out, " frames, 70 reduced to a simpler transform\n")) << reduced.out;
  std::vector<std::string> holding = three;
  holding.push_back("--hold");
  const Outcome held = cornerpin(holding);
  EXPECT_EQ(held.code, 4);
  EXPECT_TRUE(contains(held.out, " frames, 70 held: their neighbour's transform\n")) << held.out;
}

TEST(SolveCommand, HoldsFramesWithTooFewTracksWhereAsked) {
  const Outcome run = cornerpin({"solve", kScreen, "--hold", "--json"});
  EXPECT_EQ(run.code, 4);
  const json j = json::parse(run.out);
  EXPECT_EQ(j["frames"][87]["status"], "held");
  EXPECT_EQ(j["frames"][87]["reason"], "3 of the 4 tracks needed");
  EXPECT_EQ(j["frames"][87]["h"], j["frames"][86]["h"]);
}

TEST(SolveCommand, ExplainsWhatEachTrackDoes) {
  const TemporaryFolder folder;
  const Outcome run = cornerpin({"solve", kFacade, "--explain", folder / "why.csv"});
  EXPECT_EQ(run.code, 0);
  std::istringstream rows(readFile(folder / "why.csv"));
  std::string line;
  std::getline(rows, line);
  EXPECT_EQ(line, "track,frame,residual,weight,leverage,influence");
  const json j = json::parse(cornerpin({"solve", kFacade, "--json"}).out);
  std::map<int, double> leverages;
  double greatest = 0.0;
  while (std::getline(rows, line)) {
    int frame = 0;
    double leverage = 0, influence = 0;
    const char* behindName = line.c_str() + line.find(',');
    ASSERT_EQ(std::sscanf(behindName, ",%d,%*f,%*f,%lf,%lf", &frame, &leverage, &influence), 3);
    leverages[frame] += leverage;
    greatest = std::max(greatest, influence);
  }
  EXPECT_EQ(leverages.size(), 70u);  // all but the base frame
  for (const auto& [frame, sum] : leverages) EXPECT_NEAR(sum, 4.0, 1e-6) << frame;
  EXPECT_EQ(j["worst_tracks"][0]["moves"], greatest);
}

TEST(SolveCommand, NamesTheWorstTracksOnlyWhereTheyStandOut) {
  EXPECT_FALSE(contains(cornerpin({"solve", kFacade}).out, "worst tracks"));
  const json clean = json::parse(cornerpin({"solve", kFacade, "--json"}).out)["worst_tracks"];
  EXPECT_EQ(clean.size(), 5u);
  for (const json& track : clean) EXPECT_EQ(track["stands_out"], false);

  const TemporaryFolder folder;
  std::istringstream rows(readFile(kFacade));
  std::string line, text;
  while (std::getline(rows, line)) {
    char name[16] = "";
    int frame = 0;
    double x = 0, y = 0;
    const bool data = std::sscanf(line.c_str(), "%15[^,],%d,%lf,%lf", name, &frame, &x, &y) == 4;
    if (data && std::string(name) == "t038" && frame >= 40 && frame < 60)
      line = "t038," + std::to_string(frame) + "," + std::to_string(x + 15) + "," +
             std::to_string(y) + ",1";
    text += line + "\n";
  }
  writeFile(folder / "in.csv", text);
  const std::string out = cornerpin({"solve", folder / "in.csv", "--loss", "none"}).out;
  EXPECT_TRUE(
      contains(out, "\nworst tracks  t038, frames 40-59: without it the worst corner moves "))
      << out;
  // It pulls on nothing where it is ignored.
  EXPECT_FALSE(contains(cornerpin({"solve", folder / "in.csv"}).out, "t038"));
}

TEST(SolveCommand, EndsInTwoOnWrongUsage) {
  const TemporaryFolder folder;
  const std::vector<std::vector<std::string>> wrong = {
      {},
      {"dance"},
      {"solve"},
      {"solve", kFacade, "more"},
      {"solve", kFacade, "--unknown"},
      {"solve", kFacade, "--base"},
      {"solve", kFacade, "--base", "first"},
      {"solve", kFacade, "--base", "1.5"},
      {"solve", kFacade, "--base", "71"},
      {"solve", kFacade, "--base", "-1"},
      {"solve", kFacade, "--units", "pixels"},
      {"solve", kFacade, "--quads", "1,2,3"},
      {"solve", kFacade, "--json", "--base", "0", "--quads", "1,2,3"},
      {"solve", kFacade, "--json", "--base", "0", "--quad", "a=0,0,9,9,9,0,0,9"},
      {"solve", kFacade, "--json", "--base", "0", "--quad", ""},
      {"solve", kFacade, "--reference", "auto"},
      {"solve", kFacade, "--reference", ""},
      {"solve", kFacade, "--format", "json"},
      {"solve", kFacade, "--format", "xml", "-o", folder / "a"},
      {"solve", kFacade, "-o", folder / "a.txt"},
      {"solve", kFacade, "-o", folder / "a"},
      {"solve", kFacade, "--json", "-o", "-", "--format", "csv"},
      {"solve", ""},
      {"solve", kFacade, "-o", ""},
      {"solve", kFacade, "--quads", ""},
      {"solve", kFacade, "--explain", "-"},
      {"solve", kFacade, "--explain", ""},
      {"solve", kFacade, "--explain", folder / "a.csv", "-o", folder / "./a.csv"},
      {"solve", kFacade, "--seed", "-1"},
      {"solve", kFacade, "--seed", "1.5"},
      {"solve", kFacade, "--seed", ""},
      {"solve", kFacade, "--seed", "18446744073709551616"},
      {"solve", kFacade, "--threads", "0"},
      {"solve", kFacade, "--drop"},
      {"solve", kFacade, "--drop", ""},
      {"solve", kFacade, "--keep", ","},
  };
  for (const auto& arguments : wrong) {
    const Outcome run = cornerpin(arguments);
    EXPECT_EQ(run.code, 2) << (arguments.empty() ? "" : arguments.back());
    EXPECT_EQ(run.out, "");
    EXPECT_NE(run.err, "");
  }
  EXPECT_EQ(folder.entryCount(), 0u);
}

TEST(SolveCommand, DoesNotReplaceTheTracksThatItReads) {
  const TemporaryFolder folder;
  const std::string in = folder / "in.csv";
  fs::copy_file(kFacade, in);
  fs::create_symlink("in.csv", folder / "link.csv");
  ChildOptions fromFile;
  fromFile.in = in;
  for (const std::string& out : {in, folder / "link.csv", folder / "./in.csv"}) {
    const Outcome run = cornerpin({"solve", in, "-o", out});
    EXPECT_EQ(run.code, 2);
    EXPECT_EQ(run.err,
              "cornerpin: \"" + out + "\" is the file that is read: not replaced; name another\n");
    EXPECT_EQ(cornerpin({"solve", "-", "-o", out}, fromFile).code, 2);
    EXPECT_EQ(cornerpin({"solve", in, "--explain", out}).err, run.err);
  }
  EXPECT_EQ(readFile(in), readFile(kFacade));
}

TEST(SolveCommand, EndsInThreeWithFileLineAndValueWhenInputIsRefused) {
  const TemporaryFolder folder;
  writeFile(folder / "in.csv", "track,frame,x,y\na,0,1,1\na,1,nan,1\n");
  const Outcome run = cornerpin({"solve", folder / "in.csv", "-o", folder / "out.json"});
  EXPECT_EQ(run.code, 3);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "cornerpin: " + folder / "in.csv" + ":3: x must be finite, not \"nan\"\n");
  EXPECT_FALSE(fs::exists(folder / "out.json"));
}

TEST(SolveCommand, EndsInThreeWithoutTheFile) {
  const Outcome run = cornerpin({"solve", "/nowhere/in.csv"});
  EXPECT_EQ(run.code, 3);
  EXPECT_EQ(run.err,
            "cornerpin: /nowhere/in.csv: there is no such file: check its name and folder\n");
}

TEST(SolveCommand, EndsInThreeWhenStandardInputIsClosedOrRefused) {
  ChildOptions options;
  options.in = "";
  const Outcome closed = cornerpin({"solve", "-"}, options);
  EXPECT_EQ(closed.code, 3);
  EXPECT_EQ(closed.err, "cornerpin: <stdin>: standard input is closed: open it, or name a file\n");
  options.in = "/dev/null";
  EXPECT_EQ(cornerpin({"solve", "-"}, options).err, "cornerpin: <stdin>: the file is empty\n");
}

TEST(SolveCommand, EndsInThreeWhenNoTrackCounts) {
  const TemporaryFolder folder;
  writeFile(folder / "in.csv", "track,frame,x,y,weight\na,0,1,1,0\n");
  const Outcome run = cornerpin({"solve", folder / "in.csv"});
  EXPECT_EQ(run.code, 3);
  EXPECT_EQ(run.err, "cornerpin: " + folder / "in.csv" + ": no track has a weight above 0\n");
}

TEST(SolveCommand, EndsInOneWhenTheDiskIsFull) {
  const Outcome run = cornerpin({"solve", kFacade, "-o", "/dev/full", "--format", "json"});
  EXPECT_EQ(run.code, 1);
  EXPECT_EQ(
      run.err,
      "cornerpin: /dev/full: No space left on device: make room, or write to another place\n");
  ChildOptions options;
  options.out = "/dev/full";
  EXPECT_EQ(cornerpin({"solve", kFacade}, options).code, 1);
  EXPECT_EQ(cornerpin({"solve", kFacade, "--json"}, options).err,
            "cornerpin: standard output: No space left on device: make room, or write to another "
            "place\n");
}

TEST(SolveCommand, EndsInOneAtOnceWhenTheFolderCannotBeWritten) {
  const TemporaryFolder folder;
  writeFile(folder / "file", "");
  for (const char* option : {"-o", "--explain"}) {
    const std::string out = folder / "file/out.json";
    // Before anything is read: there are no such tracks.
    const Outcome run = cornerpin({"solve", folder / "none.csv", option, out});
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.err, "cornerpin: cannot write \"" + out +
                           "\": a part of the path is a file, not a folder: name another\n");
  }
  EXPECT_EQ(cornerpin({"solve", kFacade, "-o", "/proc/out.json"}).code, 1);
  EXPECT_EQ(folder.entryCount(), 1u);
}

TEST(SolveCommand, KeepsTheOldFileWhereTheNewOneMayNotGrow) {
  const TemporaryFolder folder;
  const std::string out = folder / "out.json";
  writeFile(out, "old");
  const Outcome run = runProgram({"/bin/sh", "-c", "ulimit -f 1 && exec \"$@\"", "sh",
                                  CORNERPIN_PROGRAM, "solve", kFacade, "-o", out});
  EXPECT_EQ(run.code, 1);
  EXPECT_TRUE(contains(run.err, out)) << run.err;
  EXPECT_EQ(readFile(out), "old");
  EXPECT_EQ(folder.entryCount(), 1u);
}

TEST(SolveCommand, LeavesTheOldFileWhenItIsKilled) {
  const TemporaryFolder folder;
  const std::string in = folder / "in.csv";
  const std::string out = folder / "out.csv";
  // Held frames cost next to nothing: most of the run is the writing of 300000 lines.
  writeFile(in, longShot());
  ASSERT_EQ(cornerpin({"solve", in, "-o", out}).code, 4);
  const std::string whole = readFile(out);
  int killed = 0;
  int writing = 0;
  for (int i = 0; i < 6; ++i) {
    writeFile(out, "old");
    const pid_t pid = startChild({CORNERPIN_PROGRAM, "solve", in, "-o", out}, {});
    if (i % 2 == 0) {
      std::this_thread::sleep_for(std::chrono::milliseconds(40 * i));
    } else {  // in the middle of the writing
      EXPECT_TRUE(waitForWriting(folder)) << "the run was not caught while it wrote";
    }
    ::kill(pid, SIGKILL);
    const ChildResult result = waitForChild(pid);
    if (result.signal != SIGKILL) continue;
    ++killed;
    const std::string left = readFile(out);
    EXPECT_TRUE(left == "old" || left == whole) << left.size() << " bytes";
    for (const auto& entry : fs::directory_iterator(folder.path())) {
      if (entry.path().extension() != ".tmp") continue;
      ++writing;
      EXPECT_EQ(left, "old");
      fs::remove(entry.path());
    }
  }
  EXPECT_GT(killed, 2);
  EXPECT_GT(writing, 0) << "no run was caught while it wrote";
}

TEST(SolveCommand, DrawsABarOnATerminalAndClearsIt) {
  const TemporaryFolder folder;
  std::string text;
  for (int frames = 500; !contains(text, "solving [") && frames <= 128000;
       frames *= 4) {  // until it takes long
    writeFile(folder / "in.csv", stillShot(150, frames));
    text = writtenOnATerminal([&](const std::string& terminal) {
      ChildOptions options;
      options.err = terminal;
      options.environment = {"TERM=xterm"};
      EXPECT_EQ(cornerpin({"solve", folder / "in.csv"}, options).code, 0);
    });
  }
  EXPECT_TRUE(contains(text, "solving [")) << text;
  EXPECT_EQ(text.rfind("\r\033[K"), text.size() - 4);
}

TEST(SolveCommand, SaysThatAWeightMultipliesTheResidual) {
  EXPECT_TRUE(contains(cornerpin({"solve", "--help-all"}).out, "the cost is w^2 r^2"));
}
