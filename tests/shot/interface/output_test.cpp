// SPDX-License-Identifier: BSD-3-Clause
#include <cornerpin/shot.h>
#include <gtest/gtest.h>

#include <string>
#include <system_error>
#include <vector>

#include "tests/shot/interface/plain_shot.h"
#include "tests/support/files.h"
#include "tests/support/process.h"

using namespace cornerpin::shot;

namespace {

const std::string kPlanks = CORNERPIN_DATA "/planks.csv";
const std::string kFacade = CORNERPIN_DATA "/facade.csv";
const Picture kPicture = {1920, 1080, "down", 0.5, 1001};
const std::vector<std::string> kTold = {"--size", "1920x1080",     "--y-down", "--pixel-center",
                                        "0.5",    "--first-frame", "1001"};

Result facade() {
  ReadOptions how;
  how.picture = kPicture;
  return solve(readTracks(kFacade, how));
}

// Runs the command on a file of tracks.
void solveByCommand(const std::string& tracks, std::vector<std::string> words) {
  words.insert(words.begin(), {CORNERPIN_PROGRAM, "solve", tracks, "-q"});
  const Outcome run = runProgram(words);
  EXPECT_TRUE(run.code == 0 || run.code == 4) << run.err;
}

std::vector<std::string> joined(std::vector<std::string> a, const std::vector<std::string>& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

template <class Action>
std::string refusal(const Action& action) {
  try {
    action();
  } catch (const std::invalid_argument& error) {
    return error.what();
  }
  return "not refused";
}

}  // namespace

TEST(Write, GivesTheFilesOfTheCommand) {
  struct Case {
    const char* name;
    const char* to;
    const char* as;
  };
  const Result result = facade();
  const TemporaryFolder folder;
  for (const Case& c : std::vector<Case>{{"a.json", "", "pin"},
                                         {"a.csv", "", "pin"},
                                         {"pin.nk", "", "pin"},
                                         {"still.nk", "", "stabilise"},
                                         {"matrix.usda", "", "matrix"},
                                         {"good.txt", "points", "tracks"},
                                         {"keys.txt", "keyframes", "pin"}}) {
    const std::string own = folder / c.name;
    const std::string its = folder / (std::string("its_") + c.name);
    WriteOptions options;
    options.to = c.to;
    options.as = c.as;
    options.fps = 25.0;
    const Written written = result.write(own, options);
    std::vector<std::string> words = {"--as", c.as, "-o", its, "--fps", "25"};
    if (*c.to != '\0') words.insert(words.begin(), {"--to", c.to});
    solveByCommand(kFacade, joined(words, kTold));
    EXPECT_GT(readFile(own).size(), 100u) << c.name;
    EXPECT_TRUE(readFile(own) == readFile(its)) << c.name;
    EXPECT_EQ(written.readBack.rfind("read back: largest difference 0 px", 0), 0u)
        << c.name << ": " << written.readBack;
    const bool isResult = std::string(c.name).rfind("a.", 0) == 0;
    EXPECT_EQ(written.size, isResult ? "" : "1920x1080") << c.name;
  }
}

TEST(Write, TakesStyles) {
  const Result result = facade();
  const TemporaryFolder folder;
  WriteOptions options;
  options.nk = "both";
  result.write(folder / "own.nk", options);
  solveByCommand(kFacade, joined({"-o", folder / "its.nk", "--nk", "both"}, kTold));
  EXPECT_TRUE(readFile(folder / "own.nk") == readFile(folder / "its.nk"));
  options = {};
  options.to = "keyframes";
  options.keyframes = "transform";
  options.fps = 24.0;
  options.par = 2.0;
  result.write(folder / "own.txt", options);
  solveByCommand(kFacade, joined({"--to", "keyframes", "-o", folder / "its.txt", "--keyframes",
                                  "transform", "--fps", "24", "--par", "2"},
                                 kTold));
  EXPECT_TRUE(readFile(folder / "own.txt") == readFile(folder / "its.txt"));
}

TEST(Write, RefusesOptionsByTheirNames) {
  const Result result = solve(tracksFromArrays(plain::pan().given()));
  const TemporaryFolder folder;
  const auto refusalWith = [&](const char* name, const WriteOptions& options) {
    return refusal([&] { result.write(folder / name, options); });
  };
  WriteOptions options;
  options.to = "doc";
  EXPECT_EQ(refusalWith("a", options).rfind("to: \"doc\" is none of csv, json, ", 0), 0u);
  options = {};
  EXPECT_EQ(refusalWith("a", options),
            "to: the name \"" + folder / "a" + "\" tells no format: give one");
  options.as = "file";
  EXPECT_EQ(refusalWith("a.nk", options), "as: \"file\" is none of pin, stabilise, matrix, tracks");
  options = {};
  options.nk = "lines";
  EXPECT_EQ(refusalWith("a.nk", options), "nk: \"lines\" is none of points, matrix, both");
  options = {};
  options.keyframes = "lines";
  EXPECT_EQ(refusalWith("a.nk", options), "keyframes: \"lines\" is none of pin, transform");
  options = {};
  options.fps = 0.0;
  EXPECT_EQ(refusalWith("a.nk", options), "fps: a number above 0 is wanted, not 0");
  options = {};
  options.par = -1.0;
  EXPECT_EQ(refusalWith("a.nk", options), "par: a number above 0 is wanted, not -1");
  options = {};
  options.to = "keyframes";
  EXPECT_EQ(refusalWith("a.txt", options),
            "fps: keyframes files need to know how many frames a second has");
  options.to = "points";
  options.as = "matrix";
  EXPECT_NE(refusalWith("a.txt", options).find("--as matrix is not written to points files"),
            std::string::npos)
      << refusalWith("a.txt", options);
  EXPECT_NE(refusalWith("a.nk", {}).find("\"shot\" does not say, where y grows to"),
            std::string::npos)
      << refusalWith("a.nk", {});
  EXPECT_EQ(refusal([&] { result.write("-"); }),
            "path: the name of a file is wanted, not - for standard output");
  EXPECT_EQ(refusal([&] { result.write(""); }), "path: the name of a file is wanted");
  EXPECT_EQ(folder.entryCount(), 0u);
}

TEST(Write, RefusesTracksThatAreNotAtHand) {
  const TemporaryFolder folder;
  solve(tracksFromArrays(plain::pan().given())).write(folder / "a.json");
  WriteOptions options;
  options.as = "tracks";
  EXPECT_EQ(refusal([&] { readResult(folder / "a.json").write(folder / "b.csv", options); }),
            "as: a result that was read from a file holds no tracks: solve them again");
}

TEST(Write, TellsAFileThatCannotBeWritten) {
  const Result result = solve(tracksFromArrays(plain::pan().given()));
  const TemporaryFolder folder;
  const std::string path = folder / "none/a.json";
  try {
    result.write(path);
    FAIL() << "written";
  } catch (const std::system_error& error) {
    EXPECT_NE(std::string(error.what()).find(path), std::string::npos) << error.what();
  }
}

TEST(Report, GivesThePageOfTheCommand) {
  const TemporaryFolder folder;
  PageOptions options;
  options.pictures = CORNERPIN_DATA "/planks_pictures";
  options.pictureScale = 0.5;
  const Result result = solve(readTracks(kPlanks));
  const std::vector<std::string> broken = result.report(folder / "own.html", options);
  EXPECT_TRUE(broken.empty());
  solveByCommand(kPlanks, {"--report", folder / "its.html", "--pictures", options.pictures,
                           "--picture-scale", "0.5"});
  EXPECT_GT(readFile(folder / "own.html").size(), 100'000u);
  EXPECT_TRUE(readFile(folder / "own.html") == readFile(folder / "its.html"));
}

TEST(Report, ShowsTheTracksOfAResultThatWasRead) {
  const TemporaryFolder folder;
  const Result solved = facade();
  solved.write(folder / "a.json");
  solved.report(folder / "solved.html");
  const Result read = readResult(folder / "a.json");
  read.withTracks(kFacade).report(folder / "read.html");
  read.report(folder / "without.html");
  const Outcome run = runProgram({CORNERPIN_PROGRAM, "report", folder / "a.json", "--tracks",
                                  kFacade, "-o", folder / "its.html"});
  EXPECT_EQ(run.code, 0) << run.err;
  EXPECT_TRUE(readFile(folder / "read.html") == readFile(folder / "its.html"));
  EXPECT_LT(readFile(folder / "without.html").size(), readFile(folder / "read.html").size());
  WriteOptions options;
  options.as = "tracks";
  read.withTracks(kFacade).write(folder / "read.csv", options);
  solved.write(folder / "solved.csv", options);
  EXPECT_TRUE(readFile(folder / "read.csv") == readFile(folder / "solved.csv"));
  try {
    read.withTracks(kPlanks);
    FAIL() << "not refused";
  } catch (const InputError& error) {
    EXPECT_EQ(error.file, kPlanks);
  }
}

TEST(Plot, GivesTheFilesOfTheCommand) {
  const TemporaryFolder folder;
  facade().plot(folder / "own.svg");
  solveByCommand(kFacade, joined({"--plot", folder / "its.svg"}, kTold));
  EXPECT_GT(readFile(folder / "own.svg").size(), 1000u);
  EXPECT_TRUE(readFile(folder / "own.svg") == readFile(folder / "its.svg"));
  EXPECT_EQ(refusal([&] { facade().plot(folder / "own.gif"); }),
            "path: \"" + folder / "own.gif" + "\" ends neither in .svg nor in .png");
}

TEST(WriteTracks, GivesTheFilesOfTheCommand) {
  const TemporaryFolder folder;
  ReadOptions how;
  how.picture = kPicture;
  const Tracks tracks = readTracks(kFacade, how);
  for (const char* name : {"a.nk", "a.csv", "a.json"}) {
    const Written written = tracks.write(folder / name);
    EXPECT_EQ(written.readBack, "read back: largest difference 0 px");
    const std::string its = folder / (std::string("its_") + name);
    const Outcome run =
        runProgram(joined({CORNERPIN_PROGRAM, "convert", kFacade, its, "--as", "tracks"}, kTold));
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_GT(readFile(its).size(), 1000u);
    EXPECT_TRUE(readFile(folder / name) == readFile(its)) << name;
  }
  EXPECT_NE(refusal([&] { tracks.write(folder / "a.usda"); }).find("usda files hold"),
            std::string::npos)
      << refusal([&] { tracks.write(folder / "a.usda"); });
  EXPECT_EQ(refusal([&] { tracks.write("-"); }),
            "path: the name of a file is wanted, not - for standard output");
}

TEST(Report, HasATitleAndNoPicturesUnlessAsked) {
  const TemporaryFolder folder;
  const Result result = solve(tracksFromArrays(plain::pan().given()));
  result.report(folder / "a.html");
  EXPECT_NE(readFile(folder / "a.html").find("<title>shot"), std::string::npos);
  PageOptions options;
  options.title = "sign, take 3";
  result.report(folder / "b.html", options);
  EXPECT_NE(readFile(folder / "b.html").find("<title>sign, take 3"), std::string::npos);
}

TEST(Report, RefusesOptionsByTheirNames) {
  const Result result = solve(tracksFromArrays(plain::pan().given()));
  const TemporaryFolder folder;
  const auto refusalWith = [&](const PageOptions& options) {
    return refusal([&] { result.report(folder / "a.html", options); });
  };
  PageOptions options;
  options.link = true;
  EXPECT_EQ(refusalWith(options), "link: no pictures are given");
  options = {};
  options.pictureScale = 0.5;
  EXPECT_EQ(refusalWith(options), "picture_scale: no pictures are given");
  options.pictures = folder / "";
  options.pictureScale = 0.0;
  EXPECT_EQ(refusalWith(options),
            "picture_scale: the width of the pictures over that of the tracks' picture is wanted, "
            "such as 0.5, not 0");
  options.pictureScale.reset();
  EXPECT_EQ(refusalWith(options).rfind("pictures: \"", 0), 0u) << refusalWith(options);
  EXPECT_EQ(refusal([&] { result.report("-"); }),
            "path: the name of a file is wanted, not - for standard output");
  EXPECT_EQ(folder.entryCount(), 0u);
}

// 100 x 100 pixels, as far as the file's head tells.
TEST(Report, LinksNoPicturesThatBrowsersDoNotShow) {
  const Result result = solve(tracksFromArrays(plain::pan().given()));
  const TemporaryFolder folder;
  const std::string picture = folder / ("p" + std::to_string(result.frames()[0].frame) + ".tif");
  writeFile(picture, std::string("II*\0\x08\0\0\0\x04\0"
                                 "\0\x01\x03\0\x01\0\0\0\x64\0\0\0"
                                 "\x01\x01\x03\0\x01\0\0\0\x64\0\0\0"
                                 "\x11\x01\x04\0\x01\0\0\0\x08\0\0\0"
                                 "\x17\x01\x04\0\x01\0\0\0\x01\0\0\0\0\0\0\0",
                                 62));
  PageOptions options;
  options.pictures = folder / "p%d.tif";
  options.link = true;
  try {
    result.report(folder / "a.html", options);
    ADD_FAILURE();
  } catch (const InputError& error) {
    EXPECT_EQ(error.what(), picture +
                                ": is a TIFF file, which browsers do not show: convert it, or do "
                                "not link it");
  }
  EXPECT_EQ(folder.entryCount(), 1u);
}

TEST(WriteExplanation, GivesTheFileOfTheCommand) {
  const TemporaryFolder folder;
  Options options;
  options.influences = true;
  solve(readTracks(kFacade), options).writeExplanation(folder / "own.csv");
  solveByCommand(kFacade, {"--explain", folder / "its.csv"});
  EXPECT_GT(readFile(folder / "own.csv").size(), 1000u);
  EXPECT_TRUE(readFile(folder / "own.csv") == readFile(folder / "its.csv"));
}

TEST(WriteExplanation, WantsTheInfluences) {
  const TemporaryFolder folder;
  const Result result = solve(tracksFromArrays(plain::pan().given()));
  EXPECT_EQ(refusal([&] { result.writeExplanation(folder / "a.csv"); }),
            "influences: the result does not hold them: solve with this option");
}
