// SPDX-License-Identifier: BSD-3-Clause
#include <cornerpin/shot.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/shot/interface/plain_shot.h"
#include "tests/support/files.h"
#include "tests/support/process.h"

using namespace cornerpin::shot;
using nlohmann::json;

namespace {

const std::string kScreen = CORNERPIN_DATA "/screen4.csv";

// Solved, reduced and doubtful frames, advice, and all that options add.
const Result& screen() {
  static const Result result = [] {
    Options options;
    options.fill = true;
    options.smooth = 0.25;
    options.at = {20.5, 21.25};
    options.base = 20;
    options.quads = {{"a", {100, 100, 500, 110, 490, 400, 90, 390}},
                     {"b", {10, 10, 50, 10, 50, 40, 10, 40}}};
    return solve(readTracks(kScreen), options);
  }();
  return result;
}

const json& screenJson() {
  static const json parsed = json::parse(screen().toJson());
  return parsed;
}

// A number, or NaN for null.
double number(const json& value) { return value.is_null() ? plain::kNan : value.get<double>(); }

void expectNumber(double is, const json& value) {
  const double wanted = number(value);
  EXPECT_TRUE(is == wanted || (std::isnan(is) && std::isnan(wanted))) << is << " for " << value;
}

std::string textOr(const json& object, const char* name) {
  return object.contains(name) ? object[name].get<std::string>() : std::string();
}

}  // namespace

TEST(Result, HasTheFramesOfTheJson) {
  const std::vector<Frame> frames = screen().frames();
  const json& all = screenJson()["frames"];
  ASSERT_EQ(frames.size(), all.size());
  ASSERT_GT(frames.size(), 50u);
  for (std::size_t i = 0; i < frames.size(); ++i) {
    const Frame& frame = frames[i];
    const json& j = all[i];
    EXPECT_EQ(frame.frame, j["frame"]);
    EXPECT_EQ(screen().frameNumbers()[i], j["frame"]);
    EXPECT_EQ(frame.status, j["status"].get<std::string>());
    EXPECT_EQ(frame.model, textOr(j, "model"));
    EXPECT_EQ(frame.onTop, j.value("on_top", false));
    EXPECT_EQ(frame.keptFrom, j.value("kept_from", std::vector<int>()));
    EXPECT_EQ(frame.reason, textOr(j, "reason"));
    EXPECT_EQ(frame.why, textOr(j, "why"));
    EXPECT_EQ(frame.stage, textOr(j, "stage"));
    EXPECT_EQ(frame.loss, textOr(j, "loss"));
    EXPECT_EQ(frame.tracks, j["tracks"]);
    EXPECT_EQ(frame.handedOver, j["handed_over"]);
    EXPECT_EQ(frame.good, j.value("good", 0));
    expectNumber(frame.rms, j["rms"]);
    expectNumber(frame.noise, j["noise"]);
    expectNumber(frame.goodRms, j.contains("good_rms") ? j["good_rms"] : json());
    expectNumber(frame.sigma, j.contains("sigma") ? j["sigma"] : json());
    EXPECT_EQ(frame.width, j.value("width", 0.0));
    EXPECT_EQ(frame.isDoubtful, j["verdict"] == "doubtful");
    expectNumber(frame.expectedError, j["expected_error"]);
    ASSERT_EQ(frame.doubts.size(), j["doubts"].size());
    for (std::size_t d = 0; d < frame.doubts.size(); ++d) {
      EXPECT_EQ(frame.doubts[d].code, j["doubts"][d]["code"].get<std::string>());
      EXPECT_EQ(frame.doubts[d].text, j["doubts"][d]["text"].get<std::string>());
    }
    EXPECT_EQ(frame.smoothed, j["smoothed"]);
    EXPECT_EQ(frame.filled, j["filled"]);
    for (std::size_t k = 0; k < 9; ++k) {
      EXPECT_EQ(frame.transform[k], j["h"][k / 3][k % 3]);
      EXPECT_EQ(screen().transforms()[9 * i + k], j["h"][k / 3][k % 3]);
    }
    expectNumber(screen().expectedErrors()[i], j["expected_error"]);
  }
}

TEST(Result, HasTheQuadsOfTheJson) {
  const std::vector<Quad> quads = screen().quads();
  ASSERT_EQ(quads.size(), 2u);
  for (std::size_t q = 0; q < quads.size(); ++q) {
    EXPECT_EQ(quads[q].name, screenJson()["quads"][q]["name"].get<std::string>());
    const std::vector<double> corners = screen().corners(q);
    const std::vector<double> covariance = screen().covariance(q);
    const std::vector<double> deviation = screen().deviation(q);
    const json& all = screenJson()["frames"];
    ASSERT_EQ(corners.size(), 8 * all.size());
    ASSERT_EQ(covariance.size(), 16 * all.size());
    ASSERT_EQ(deviation.size(), 4 * all.size());
    for (std::size_t i = 0; i < all.size(); ++i) {
      const json& j = all[i]["quads"][quads[q].name];
      for (std::size_t c = 0; c < 4; ++c) {
        EXPECT_EQ(quads[q].corners[2 * c], screenJson()["quads"][q]["corners"][c][0]);
        for (std::size_t k = 0; k < 2; ++k)
          expectNumber(corners[8 * i + 2 * c + k], j["corners"][c][k]);
        expectNumber(deviation[4 * i + c], j["deviation"][c]);
        for (std::size_t k = 0; k < 4; ++k) {
          const json& own = j["covariance"][c];
          expectNumber(covariance[16 * i + 4 * c + k], own.is_null() ? json() : own[k / 2][k % 2]);
        }
      }
    }
  }
}

TEST(Result, RefusesQuadsThatItLacks) {
  for (const auto read : {&Result::corners, &Result::covariance, &Result::deviation}) {
    try {
      (screen().*read)(2);
      FAIL() << "not refused";
    } catch (const std::invalid_argument& error) {
      EXPECT_STREQ(error.what(), "quad: 2 is wanted, and the result has 2");
    }
  }
}

TEST(Result, HasTheTracksOfTheJson) {
  const std::vector<Track> tracks = screen().tracks();
  const json& all = screenJson()["tracks"];
  ASSERT_EQ(tracks.size(), all.size());
  for (std::size_t t = 0; t < tracks.size(); ++t) {
    EXPECT_EQ(tracks[t].name, all[t]["name"].get<std::string>());
    EXPECT_EQ(tracks[t].x, all[t]["place"][0]);
    EXPECT_EQ(tracks[t].y, all[t]["place"][1]);
    for (std::size_t k = 0; k < 4; ++k)
      expectNumber(tracks[t].covariance[k],
                   all[t]["covariance"].is_null() ? json() : all[t]["covariance"][k / 2][k % 2]);
    json runs = {{"good", json::array()}, {"ignored", json::array()}, {"absent", json::array()}};
    for (const TrackRun& run : tracks[t].runs) runs[run.use].push_back({run.first, run.last});
    for (const char* use : {"good", "ignored", "absent"}) EXPECT_EQ(runs[use], all[t][use]);
  }
}

TEST(Result, HasAllElseOfTheJson) {
  const json& j = screenJson();
  EXPECT_EQ(screen().baseFrame(), j["base_frame"]);
  EXPECT_EQ(screen().referenceFrame(), j["reference_frame"]);
  EXPECT_EQ(screen().baseWhy(), "");
  expectNumber(screen().maxError(), j["max_error"]);
  const std::vector<BetweenFrame> between = screen().between();
  ASSERT_EQ(between.size(), 2u);
  for (std::size_t i = 0; i < 2; ++i) {
    EXPECT_EQ(between[i].frame, j["between"][i]["frame"]);
    for (std::size_t k = 0; k < 9; ++k)
      EXPECT_EQ(between[i].transform[k], j["between"][i]["h"][k / 3][k % 3]);
  }
  const Result chosen = solve(readTracks(kScreen));
  EXPECT_EQ(chosen.baseWhy(), json::parse(chosen.toJson())["base_why"].get<std::string>());
}

TEST(Result, HasTheWorstAndTheLeftOutTracksAndTheAdviceOfTheJson) {
  Options options;
  options.drop = {"t001", "t002:0-10"};
  const Result result = solve(readTracks(CORNERPIN_DATA "/board.csv"), options);
  const json j = json::parse(result.toJson());
  const std::vector<LeftOutTrack> leftOut = result.leftOutTracks();
  ASSERT_EQ(leftOut.size(), j["left_out_tracks"].size());
  ASSERT_FALSE(leftOut.empty());
  for (std::size_t i = 0; i < leftOut.size(); ++i) {
    EXPECT_EQ(leftOut[i].name, j["left_out_tracks"][i]["name"].get<std::string>());
    EXPECT_EQ(leftOut[i].why, j["left_out_tracks"][i]["why"].get<std::string>());
  }
  const auto isDropped = [](const LeftOutTrack& track) { return track.why == "dropped"; };
  const auto dropped = std::find_if(leftOut.begin(), leftOut.end(), isDropped);
  ASSERT_NE(dropped, leftOut.end());
  EXPECT_EQ(dropped->name, "t001");
  const std::vector<WorstTrack> worst = result.worstTracks();
  ASSERT_EQ(worst.size(), j["worst_tracks"].size());
  ASSERT_FALSE(worst.empty());
  for (std::size_t i = 0; i < worst.size(); ++i) {
    const json& own = j["worst_tracks"][i];
    EXPECT_EQ(worst[i].track, own["track"].get<std::string>());
    EXPECT_EQ(worst[i].first, own["first"]);
    EXPECT_EQ(worst[i].last, own["last"]);
    EXPECT_EQ(worst[i].peak, own["peak"]);
    EXPECT_EQ(worst[i].moves, own["moves"]);
    expectNumber(worst[i].off, own["off"]);
    EXPECT_EQ(worst[i].standsOut, own["stands_out"]);
  }
  const std::vector<Stretch> advice = result.advice();
  ASSERT_EQ(advice.size(), j["advice"].size());
  ASSERT_FALSE(advice.empty());
  for (std::size_t i = 0; i < advice.size(); ++i) {
    EXPECT_EQ(advice[i].first, j["advice"][i]["first"]);
    EXPECT_EQ(advice[i].last, j["advice"][i]["last"]);
    EXPECT_EQ(advice[i].text, j["advice"][i]["text"].get<std::string>());
  }
}

TEST(Result, EndsWithTheWordsOfTheCommand) {
  const Outcome run = runProgram({CORNERPIN_PROGRAM, "solve", kScreen});
  const Result result = solve(readTracks(kScreen));
  EXPECT_EQ(result.summary(), run.out);
  EXPECT_NE(run.out.find("\n" + result.closingSentence() + "\n"), std::string::npos)
      << result.closingSentence();
  ASSERT_FALSE(result.closingStretches().empty());
  const Stretch worst = result.closingStretches()[0];
  EXPECT_LE(worst.first, worst.last);
  // The command breaks its lines, so only the first words are next to each other.
  EXPECT_NE(run.out.find(worst.text.substr(0, 20)), std::string::npos) << worst.text;
}

TEST(Result, TellsTheFileOfItsTracks) {
  const std::string path = CORNERPIN_DATA "/screen4.csv";
  const Result result = solve(readTracks(path));
  const std::optional<InputFile> input = result.input();
  ASSERT_TRUE(input);
  EXPECT_EQ(input->name, "screen4.csv");
  EXPECT_EQ(input->format, "csv");
  const auto json = nlohmann::json::parse(result.toJson())["input"];
  EXPECT_EQ(input->sha256, json["sha256"].get<std::string>());
  EXPECT_EQ(input->rows, json["rows"]);
  EXPECT_FALSE(solve(tracksFromArrays(plain::pan().given())).input());
}

TEST(Result, IsTheCsvOfTheCommand) {
  const TemporaryFolder folder;
  const std::string path = folder / "out.csv";
  runProgram({CORNERPIN_PROGRAM, "solve", kScreen, "-q", "-o", path});
  EXPECT_TRUE(solve(readTracks(kScreen)).toCsv() == readFile(path));
}

TEST(Result, CountsFramesAsTheJsonHasThem) {
  const FrameCounts counts = screen().counts();
  FrameCounts wanted;
  for (const json& frame : screenJson()["frames"]) {
    ++wanted.frames;
    if (frame["status"] == "solved") ++wanted.solved;
    if (frame["status"] == "reduced") ++wanted.reduced;
    if (frame["status"] == "held") ++wanted.held;
    if (frame["verdict"] == "doubtful") ++wanted.doubtful;
  }
  EXPECT_EQ(counts.frames, wanted.frames);
  EXPECT_EQ(counts.solved, wanted.solved);
  EXPECT_EQ(counts.reduced, wanted.reduced);
  EXPECT_EQ(counts.held, wanted.held);
  EXPECT_EQ(counts.doubtful, wanted.doubtful);
  EXPECT_GT(counts.doubtful, 0u);
  const std::string begin = std::to_string(counts.doubtful) + " of " +
                            std::to_string(counts.frames) + " frames are doubtful: ";
  EXPECT_EQ(screen().doubtfulFrames().rfind(begin, 0), 0u) << screen().doubtfulFrames();
  EXPECT_EQ(solve(tracksFromArrays(plain::pan().given())).doubtfulFrames(), "");
}

TEST(Result, IsSummedUpAsTheCommandDoes) {
  const Result result = solve(readTracks(kScreen));
  EXPECT_EQ(runProgram({CORNERPIN_PROGRAM, "solve", kScreen}).out, result.summary());
  SummaryOptions options;
  options.verbose = true;
  options.colour = true;
  EXPECT_EQ(runProgram({CORNERPIN_PROGRAM, "solve", kScreen, "--verbose", "--color", "always"}).out,
            result.summary(options));
  options.rows = "one more row\n";
  EXPECT_NE(result.summary(options).find("\none more row\n\n"), std::string::npos);
}

TEST(Result, NamesTracksThatAreWorthALook) {
  const TemporaryFolder folder;
  screen().write(folder / "a.json");
  EXPECT_EQ(runProgram({CORNERPIN_PROGRAM, "explain", folder / "a.json"}).out,
            screen().trackAdvice());
  EXPECT_NE(screen().trackAdvice().find("--drop "), std::string::npos);
}

TEST(Result, TellsWhatWasSkippedInTheFileOfItsTracks) {
  const TemporaryFolder folder;
  const Tracks tracks = tracksFromArrays(plain::pan().given());
  const Result solved = solve(tracks);
  EXPECT_TRUE(solved.notes().empty());
  writeFile(folder / "a.csv", plain::csv(tracks));
  const Result result = solve(readTracks(folder / "a.csv"));
  EXPECT_EQ(result.notes(), readTracks(folder / "a.csv").notes());
  EXPECT_EQ(result.withTracks(folder / "a.csv").notes(), result.notes());
}

TEST(Result, CopiesShareItAndNothingChangesIt) {
  const std::string before = screen().toJson();
  Result copy = screen();
  copy = copy.rebase(21);
  EXPECT_TRUE(screen().toJson() == before);
  EXPECT_EQ(copy.referenceFrame(), 21);
  EXPECT_EQ(screen().referenceFrame(), 20);
}

TEST(Rebase, MovesTheReferenceFrame) {
  Options options;
  options.base = 0;
  const Result result = solve(tracksFromArrays(plain::pan().given()), options).rebase(2);
  const std::vector<double> transforms = result.transforms();
  for (std::size_t f = 0; f < 8; ++f) {
    const double moved = static_cast<double>(f) - 2.0;
    EXPECT_NEAR(transforms[9 * f + 2], 3 * moved, 1e-6);
    EXPECT_NEAR(transforms[9 * f + 5], -2 * moved, 1e-6);
  }
}

TEST(Rebase, GivesTheBytesOfTheCommand) {
  const TemporaryFolder folder;
  const std::string solved = folder / "solved.json";
  const std::string rebased = folder / "rebased.json";
  screen().write(solved);
  runProgram({CORNERPIN_PROGRAM, "rebase", solved, "--reference", "30", "-o", rebased});
  EXPECT_GT(readFile(rebased).size(), 1000u);
  EXPECT_TRUE(readResult(solved).rebase(30).toJson() == readFile(rebased));
}

TEST(Rebase, RefusesFramesOutsideTheShot) {
  EXPECT_THROW(screen().rebase(100'000), std::invalid_argument);
}

TEST(ReadQuads, ReadsNamesAndCorners) {
  const TemporaryFolder folder;
  writeFile(folder / "a.json", R"({"sign": [[1,2],[30,2.5],[30,40],[1,40]]})");
  const QuadFile file = readQuads(folder / "a.json");
  ASSERT_EQ(file.quads.size(), 1u);
  EXPECT_EQ(file.quads[0].name, "sign");
  EXPECT_EQ(file.quads[0].corners, (std::array<double, 8>{1, 2, 30, 2.5, 30, 40, 1, 40}));
  EXPECT_FALSE(file.frame);
  screen().write(folder / "result.json");
  const QuadFile own = readQuads(folder / "result.json");
  ASSERT_EQ(own.quads.size(), 2u);
  EXPECT_EQ(own.quads[1].name, "b");
  EXPECT_EQ(own.quads[1].corners, screen().quads()[1].corners);
  EXPECT_EQ(own.frame, 20);
}

TEST(ReadQuads, TellsTheFileThatItRefuses) {
  const TemporaryFolder folder;
  writeFile(folder / "a.json", "{}");
  for (const char* name : {"a.json", "none.json"}) {
    try {
      readQuads(folder / name);
      FAIL() << name;
    } catch (const InputError& error) {
      EXPECT_EQ(error.file, folder / name);
    }
  }
}

TEST(ReadResult, GivesTheFileAgain) {
  const TemporaryFolder folder;
  const std::string path = folder / "a.json";
  screen().write(path);
  EXPECT_TRUE(readResult(path).toJson() == readFile(path));
  EXPECT_TRUE(readFile(path) == screen().toJson());
}

TEST(ReadResult, TakesWhatIsKnownOfThePicture) {
  const TemporaryFolder folder;
  const std::string path = folder / "a.json";
  solve(tracksFromArrays(plain::pan().given())).write(path);
  const Picture known = {1920, 1080, "down", 0.5, {}};
  readResult(path, known).write(folder / "pin.nk");
  EXPECT_THROW(readResult(path).write(folder / "pin.nk"), std::invalid_argument);
  readResult(path, known).write(folder / "b.json");
  EXPECT_NO_THROW(readResult(folder / "b.json", known));
  EXPECT_THROW(readResult(folder / "b.json", {1280, 720, "", {}, {}}), std::invalid_argument);
  EXPECT_THROW(readResult(folder / "b.json", {{}, {}, "left", {}, {}}), std::invalid_argument);
}

TEST(ReadResult, TellsTheFileThatItRefuses) {
  const TemporaryFolder folder;
  writeFile(folder / "a.json", "{\"cornerpin\": 99}");
  try {
    readResult(folder / "a.json");
    FAIL() << "not refused";
  } catch (const InputError& error) {
    EXPECT_EQ(error.file, folder / "a.json");
  }
}
