// SPDX-License-Identifier: BSD-3-Clause
#include <cornerpin/shot.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/shot/interface/plain_shot.h"
#include "tests/support/allocations.h"
#include "tests/support/files.h"
#include "tests/support/kept_results.h"
#include "tests/support/process.h"
#include "tests/support/refusal.h"

using namespace cornerpin::shot;

namespace {

const std::string kData = CORNERPIN_DATA "/";

std::string refusalOf(const Options& options) {
  return refusal([&] { solve(tracksFromArrays(plain::pan().given()), options); });
}

// What the command writes.
std::string written(const std::string& tracks, const std::vector<std::string>& options) {
  const TemporaryFolder folder;
  std::vector<std::string> command = {CORNERPIN_PROGRAM,  "solve", tracks, "-q", "-o",
                                      folder / "out.json"};
  command.insert(command.end(), options.begin(), options.end());
  const Outcome run = runProgram(command);
  EXPECT_TRUE(run.code == 0 || run.code == 4) << run.err;
  std::string text = readFile(folder / "out.json");
  keepResult(text);
  return text;
}

void expectSame(const std::string& file, const Options& options,
                const std::vector<std::string>& words, const ReadOptions& how = {}) {
  const std::string text = solve(readTracks(file, how), options).toJson();
  EXPECT_GT(text.size(), 1000u);
  EXPECT_TRUE(text == written(file, words)) << file << ": the texts differ";
}

// Without the line that tells the file.
std::string withoutInput(const std::string& json) {
  const std::size_t begin = json.find("\n\"input\":");
  return json.substr(0, begin) + json.substr(json.find('\n', begin + 1));
}

}  // namespace

TEST(Solve, FindsATransformForEveryFrame) {
  Options options;
  options.base = 0;
  const std::vector<double> transforms =
      solve(tracksFromArrays(plain::pan().given()), options).transforms();
  ASSERT_EQ(transforms.size(), 8u * 9u);
  for (std::size_t f = 0; f < 8; ++f) {
    const double moved = static_cast<double>(f);
    const std::vector<double> wanted = {1, 0, 3 * moved, 0, 1, -2 * moved, 0, 0, 1};
    for (std::size_t i = 0; i < 9; ++i) EXPECT_NEAR(transforms[9 * f + i], wanted[i], 1e-6);
  }
}

TEST(Solve, GivesTheBytesOfTheCommand) {
  expectSame(kData + "facade.csv", {}, {});
  expectSame(kData + "screen4.csv", {}, {});
  expectSame(kData + "graf13.csv", {}, {});
}

TEST(Solve, GivesTheBytesOfTheCommandWithOptions) {
  Options options;
  options.base = 20;
  options.reference = 30;
  options.frames = "10-60";
  options.drop = {"t00?"};
  options.loss = "huber";
  options.seed = 7;
  options.maxError = 0.75;
  options.smooth = 0.5;
  options.fill = true;
  options.at = {20.5, 21.25};
  options.quads = {{"sign", {100, 100, 500, 110, 490, 400, 90, 390}}};
  options.threads = 1;
  expectSame(kData + "facade.csv", options,
             {"--base",      "20",       "--reference",
              "30",          "--frames", "10-60",
              "--drop",      "t00?",     "--loss",
              "huber",       "--seed",   "7",
              "--max-error", "0.75",     "--smooth",
              "0.5",         "--fill",   "--at",
              "20.5,21.25",  "--quad",   "sign=100,100,500,110,490,400,90,390"});
}

TEST(Solve, GivesTheBytesOfTheCommandWithTheOtherOptions) {
  Options options;
  options.baseOnly = true;
  options.hold = true;
  options.loss = "none";
  options.keep = {"t*"};
  ReadOptions how;
  how.from = "csv";
  how.picture = {1920, 1080, "up", 0.5, 1001};
  expectSame(kData + "facade.csv", options,
             {"--base-only", "--hold", "--loss", "none", "--keep", "t*", "--from", "csv", "--size",
              "1920x1080", "--y-up", "--pixel-center", "0.5", "--first-frame", "1001"},
             how);
  Options raw;
  raw.units = "raw";
  raw.loss = "cauchy";
  expectSame(kData + "graf13.csv", raw, {"--units", "raw", "--loss", "cauchy"});
}

TEST(Solve, GivesTheBytesOfTheCommandForArrays) {
  const TemporaryFolder folder;
  const Tracks tracks = tracksFromArrays(plain::relay().given());
  writeFile(folder / "a.csv", plain::csv(tracks));
  const std::string text = solve(tracks).toJson();
  EXPECT_NE(text.find("\n\"input\":null,\n"), std::string::npos);
  EXPECT_TRUE(withoutInput(text) == withoutInput(written(folder / "a.csv", {})));
}

TEST(Solve, GivesTheSameForFloatsAsForDoubles) {
  const plain::Arrays shot = plain::relay();
  const std::vector<float> floats(shot.positions.begin(), shot.positions.end());
  TrackArrays arrays = shot.given();
  arrays.positions = {floats.data(), {shot.frames, shot.tracks, 2}};
  EXPECT_TRUE(solve(tracksFromArrays(arrays)).toJson() ==
              solve(tracksFromArrays(shot.given())).toJson());
}

TEST(Solve, LeavesTheTracksAsTheyAre) {
  const Tracks tracks = tracksFromArrays(plain::pan().given());
  Options options;
  options.drop = {"t00", "t01:2-3"};
  options.frames = "1-6";
  solve(tracks, options);
  EXPECT_EQ(tracks.firstFrame(), 0);
  EXPECT_EQ(tracks.weights(), plain::pan().weights);
}

TEST(Solve, SolvesDifferentShotsInDifferentThreads) {
  const std::vector<std::string> files = {kData + "facade.csv", kData + "screen4.csv",
                                          kData + "graf13.csv", kData + "boardphotos.csv"};
  const auto solved = [](const std::string& file) { return solve(readTracks(file)).toJson(); };
  std::vector<std::string> results(files.size());
  std::vector<std::thread> threads;
  threads.reserve(files.size());
  for (std::size_t i = 0; i < files.size(); ++i) {
    threads.emplace_back([&, i] { results[i] = solved(files[i]); });
  }
  for (std::thread& thread : threads) thread.join();
  for (std::size_t i = 0; i < files.size(); ++i) EXPECT_TRUE(results[i] == solved(files[i]));
}

TEST(Solve, SolvesTheSameTracksInDifferentThreads) {
  const Tracks tracks = readTracks(kData + "graf13.csv");
  std::vector<std::string> results(3);
  std::vector<std::thread> threads;
  threads.reserve(results.size());
  for (std::string& result : results) {
    threads.emplace_back([&result, tracks] { result = solve(tracks).toJson(); });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_TRUE(results[0] == results[1] && results[0] == results[2]);
}

TEST(Solve, PrintsNothing) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  const Result result = solve(readTracks(kData + "screen4.csv"));
  const std::string text = result.toJson() + result.toCsv() + result.summary();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_FALSE(text.empty());
}

TEST(Solve, RefusesOptionsByTheirNames) {
  Options options;
  options.base = 8;
  EXPECT_EQ(refusalOf(options), "base frame 8 is not in the shot: take one from 0 to 7");
  options = {};
  options.reference = -1;
  EXPECT_EQ(refusalOf(options), "reference frame -1 is not in the shot: take one from 0 to 7");
  options = {};
  options.frames = "x";
  EXPECT_EQ(refusalOf(options).rfind("frames: \"x\" ", 0), 0u) << refusalOf(options);
  options.frames = "20-30";
  EXPECT_EQ(refusalOf(options).rfind("--frames: ", 0), 0u) << refusalOf(options);
  options = {};
  options.keep = {"nobody"};
  EXPECT_EQ(refusalOf(options).rfind("--keep: \"nobody\" ", 0), 0u) << refusalOf(options);
  options = {};
  options.drop = {"t*"};
  EXPECT_EQ(refusalOf(options), "--keep and --drop leave no track: keep or drop others");
  options = {};
  options.units = "mm";
  EXPECT_EQ(refusalOf(options), "units: \"mm\" is none of fit, raw");
  options = {};
  options.loss = "l1";
  EXPECT_EQ(refusalOf(options), "loss: \"l1\" is none of tukey, cauchy, huber, none");
  options = {};
  options.maxError = 0.0;
  EXPECT_EQ(refusalOf(options), "max_error: a number above 0 is wanted, not 0");
  options = {};
  options.smooth = plain::kNan;
  EXPECT_EQ(refusalOf(options), "smooth: a number above 0 is wanted, not nan");
  options = {};
  options.at = {7.5};
  EXPECT_EQ(refusalOf(options), "at: 7.5 is not in the shot: take times from 0 to 7");
  options.at = {plain::kNan};
  EXPECT_EQ(refusalOf(options), "at: a time is wanted, not nan");
  options = {};
  options.threads = 0;
  EXPECT_EQ(refusalOf(options), "threads: a number from 1 to 1024 is wanted, not 0");
  options.threads = 1025;
  EXPECT_EQ(refusalOf(options), "threads: a number from 1 to 1024 is wanted, not 1025");
}

TEST(CheckSolve, RefusesWhatNeedsNoTracks) {
  Options options;
  EXPECT_NO_THROW(checkSolve(options));
  options.at = {7.5};  // which may be in a shot
  EXPECT_NO_THROW(checkSolve(options));
  const auto expectRefused = [](const Options& refused) {
    try {
      checkSolve(refused);
      ADD_FAILURE() << "not refused: " << refusalOf(refused);
    } catch (const std::invalid_argument& error) {
      EXPECT_EQ(error.what(), refusalOf(refused));
    }
  };
  options.at = {plain::kNan};
  expectRefused(options);
  options = {};
  options.frames = "5-1";
  expectRefused(options);
  options = {};
  options.loss = "l1";
  expectRefused(options);
  options = {};
  options.smooth = -1.0;
  expectRefused(options);
  options = {};
  options.quads = {{"a", {0, 0, 1, 0, 1, 1, 0, 1}}};
  expectRefused(options);
}

// Tracks that are moved in and taken from are not copied; others are, and stay as they are.
TEST(Solve, ChangesNoTracksThatAnybodyElseHas) {
  const Tracks tracks = tracksFromArrays(plain::pan().given());
  Options options;
  options.drop = {"t03", "t05:2-4"};
  options.frames = "1-6";
  const std::vector<double> before = tracks.positions();
  const std::string json = solve(tracks, options).toJson();
  EXPECT_EQ(tracks.positions(), before);
  Tracks copy = tracks;
  EXPECT_TRUE(solve(std::move(copy), options).toJson() == json);
  EXPECT_EQ(tracks.positions(), before);
  EXPECT_TRUE(solve(tracksFromArrays(plain::pan().given()), options).toJson() == json);
}

// Those that are moved in are taken from where they are.
TEST(Solve, CopiesNoTracksThatAreMovedIn) {
  const plain::Arrays shot = plain::pan(2000, 40);
  Options options;
  options.frames = "0-9";
  options.advice = false;
  Tracks tracks = tracksFromArrays(shot.given());
  const std::size_t bytes = 2000 * 40 * 24;  // two numbers, a track and a frame each, at least
  const std::size_t copied = allocations::peakBytesOf([&] { solve(tracks, options); });
  const std::size_t moved = allocations::peakBytesOf([&] { solve(std::move(tracks), options); });
  EXPECT_GT(copied, bytes);
  EXPECT_LT(moved, bytes / 2);
}

TEST(Solve, RefusesQuads) {
  Options options;
  options.quads = {{"a", {0, 0, 1, 0, 1, 1, 0, 1}}};
  EXPECT_EQ(refusalOf(options), "quads: on which frame were the corners read? Give reference");
  options.reference = 0;
  options.quads = {{"a", {0, 0, 1, 0, 0, 1, 1, 1}}};
  EXPECT_EQ(refusalOf(options),
            "quads: the quad \"a\" crosses itself: give its corners in the order around it");
}
