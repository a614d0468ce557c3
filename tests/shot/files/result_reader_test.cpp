// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/result_reader.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cmath>
#include <nlohmann/json.hpp>
#include <random>
#include <sstream>
#include <string>

#include "shot/files/input_error.h"
#include "shot/files/track_reader.h"
#include "shot/solve/rebase.h"
#include "shot/solve/shot_solver.h"
#include "tests/shot/files/two_frames.h"

#include "tests/shot/files/refusal.h"

using namespace cornerpin;
using nlohmann::json;

namespace {

ShotResult read(const std::string& text) {
  const TemporaryFolder folder;
  writeFile(folder / "r.json", text);
  return readResult(folder / "r.json");
}

std::string refusal(const std::string& text) { return refusalBy(readResult, text); }

// "/frames/1/h" as messages have it: "frames[1].h".
std::string placeOf(const std::string& pointer) {
  std::string place;
  std::istringstream names(pointer.substr(1));
  for (std::string name; std::getline(names, name, '/');) {
    const bool isIndex = std::isdigit(static_cast<unsigned char>(name[0])) != 0;
    place += isIndex ? "[" + name + "]" : (place.empty() ? "" : ".") + name;
  }
  return place;
}

void expectReadBack(const ShotResult& result) {
  const std::string text = written(result, Format::Json);
  EXPECT_EQ(written(read(text), Format::Json), text);
}

// A base frame, a solved and a held one as version 1 has them.
const char* const kVersion1 = R"({"cornerpin":1,
"base_frame":5,"base_tracks":4,"left_out":2,"units":"raw","loss":"cauchy","seed":77,
"corners":[[1,2],[3,2],[3,4.5],[1,4.5]],
"worst_tracks":[{"track":"t042","first":5,"last":6,"peak":6,"moves":9.5,"off":null,"stands_out":true}],
"frames":[
{"frame":5,"status":"base","tracks":4,"rms":0.0,"h":[[1,0,0],[0,1,0],[0,0,1]],"noise":null,
 "deviation":[0,0,0,0],"quad":[[1,2],[3,2],[3,4.5],[1,4.5]]},
{"frame":6,"status":"solved","model":"projective","on_top":false,"tracks":4,"rms":0.5,
 "h":[[2,0,10],[0,0.5,0],[0,-0.25,1]],"noise":0.25,"deviation":[0.5,null,0.125,1],"inliers":3,
 "inlier_rms":0.375,"scale":0.3,"loss":"cauchy","width":1.5,"stage":"sampled","why":"so",
 "quad":[[1,2],[3,2],[null,null],[null,null]]},
{"frame":7,"status":"held","model":"held","on_top":false,"tracks":0,"rms":null,
 "h":[[2,0,10],[0,0.5,0],[0,-0.25,1]],"noise":null,"deviation":[null,null,null,null],
 "reason":"no tracks","quad":[[1,2],[3,2],[null,null],[null,null]]}
]})";

json good() {
  static const std::string text = written(twoFrames(), Format::Json);
  return json::parse(text);
}

}  // namespace

TEST(ReadResult, GivesBackWhatWasWritten) {
  ShotResult result = twoFrames();
  expectReadBack(result);
  result.referenceFrame = 6;
  result.units = Units::Raw;
  result.loss = Loss::Huber;
  result.seed = 18446744073709551615u;
  FrameResult& frame = result.frames[1];
  frame.verdict = {};
  frame.verdict.status = Status::Solved;
  frame.verdict.model = Model::Projective;
  frame.verdict.origin = {Stage::Sampled, Grounds::Searched, Stage::Library, 20};
  frame.good = 3;
  frame.goodRms = 0.1;
  frame.sigma = 0.3;
  frame.loss = Loss::Tukey;
  frame.width = 4.7;
  expectReadBack(result);
  frame.verdict.status = Status::Reduced;
  frame.verdict.model = Model::Affine;
  frame.verdict.onTop = true;
  frame.verdict.keptFrom = {4, 17};
  frame.verdict.shortfall = Shortfall::TooFewTracks;
  expectReadBack(result);
}

TEST(ReadResult, GivesBackWhatWasDoneToTransforms) {
  ShotResult result = twoFrames();
  FrameResult& frame = result.frames[1];
  frame.untouched = std::make_shared<Untouched>(Untouched{frame.h, frame.figures.quads});
  frame.h = {{{1, 0, 0.5}, {0, 1, -2}, {0, 0, 1}}};
  frame.smoothed = 0.75;
  frame.filled = true;
  result.smooth = 1.5;
  result.fill = true;
  result.between = {{5.0, kIdentity}, {5.25, frame.h}};
  expectReadBack(result);
  const ShotResult again = read(written(result, Format::Json));
  EXPECT_EQ(again.smooth, 1.5);
  EXPECT_TRUE(again.fill);
  EXPECT_EQ(again.frames[1].smoothed, 0.75);
  EXPECT_TRUE(again.frames[1].filled);
  ASSERT_TRUE(again.frames[1].untouched);
  EXPECT_EQ(again.frames[1].untouched->h, twoFrames().frames[1].h);
  EXPECT_EQ(again.frames[1].untouched->quads[0][2].yy, 0.015625);
  EXPECT_FALSE(again.frames[0].untouched);
  EXPECT_EQ(again.between[1].frame, 5.25);
  EXPECT_EQ(again.between[1].h, frame.h);
}

// A result that knows nothing of that has it not done.
TEST(ReadResult, DoesWithoutWhatWasDoneToTransforms) {
  json j = good();
  for (const char* name : {"smooth", "fill", "between"}) j.erase(name);
  for (json& frame : j["frames"]) {
    frame.erase("smoothed");
    frame.erase("filled");
  }
  EXPECT_EQ(json::parse(written(read(j.dump()), Format::Json)), good());
}

TEST(ReadResult, GivesBackRealShots) {
  const Tracks facade = readTracks(CORNERPIN_DATA "/facade.csv");
  const Tracks screen = readTracks(CORNERPIN_DATA "/screen4.csv");
  SolveOptions options;
  expectReadBack(solveShot(facade, options));
  expectReadBack(solveShot(screen, options));
  options.reference = 30;
  options.quads = {{"a", {{{0, 0}, {9, 0}, {9, 9}, {0, 9}}}},
                   {"b", {{{0, 0}, {9, 0}, {9, 9}, {0, 9}}}}};
  expectReadBack(solveShot(facade, options));
  options.loss = Loss::None;
  expectReadBack(solveShot(screen, options));
}

TEST(ReadResult, HoldsWhatTheFileSays) {
  ShotResult expected = twoFrames();
  const ShotResult result = read(written(expected, Format::Json));
  EXPECT_EQ(result.baseFrame, 5);
  EXPECT_EQ(result.referenceFrame, 5);
  EXPECT_EQ(result.baseCentre.y, 3.25);
  EXPECT_EQ(result.quads[0].name, "tracks");
  ASSERT_EQ(result.tracks.size(), 2u);
  EXPECT_EQ(result.tracks[0].name, "a \"b\"");
  EXPECT_EQ(result.tracks[0].covariance.xy, 0.125);
  EXPECT_TRUE(std::isnan(result.tracks[1].place.x));
  ASSERT_EQ(result.tracks[1].runs.size(), 2u);
  EXPECT_EQ(result.tracks[1].runs[0].use, TrackUse::Absent);
  EXPECT_EQ(result.tracks[1].runs[1].use, TrackUse::Ignored);
  EXPECT_EQ(result.tracks[1].runs[1].first, 6);
  const FrameResult& held = result.frames[1];
  EXPECT_EQ(held.verdict.status, Status::Held);
  EXPECT_EQ(reasonOf(held), reasonOf(expected.frames[1]));
  EXPECT_EQ(held.h, expected.frames[1].h);
  EXPECT_EQ(held.figures.noise, 0.25);
  EXPECT_EQ(held.figures.quads[0][0].xx, 0.125);
  EXPECT_TRUE(std::isnan(held.figures.quads[0][1].xx));
  ASSERT_EQ(result.advice.size(), 1u);
  EXPECT_EQ(result.advice[0].frames.first, 5);
  EXPECT_EQ(result.advice[0].frames.last, 6);
  EXPECT_EQ(result.advice[0].text, "do \"this\"");
  EXPECT_EQ(result.worst[0].name, "a \"b\"");
  EXPECT_EQ(result.worst[0].stretch.moves, 9.3);
  EXPECT_EQ(result.maxError, 0.1);
  EXPECT_EQ(result.frames[0].expectedError, 0.0);
  EXPECT_TRUE(result.frames[0].doubts.empty());
  EXPECT_TRUE(std::isnan(held.expectedError));
  ASSERT_EQ(held.doubts.size(), 2u);
  EXPECT_EQ(held.doubts[0].code, DoubtCode::NoFigures);
  EXPECT_EQ(held.doubts[0].text, "corner 1 of \"tracks\"");
  EXPECT_EQ(held.doubts[1].code, DoubtCode::Held);
}

TEST(ReadResult, TakesVersion1) {
  const ShotResult result = read(kVersion1);
  EXPECT_EQ(result.baseFrame, 5);
  EXPECT_EQ(result.referenceFrame, 5);
  EXPECT_EQ(result.leftOut, 2);
  EXPECT_EQ(result.units, Units::Raw);
  EXPECT_EQ(result.loss, Loss::Cauchy);
  EXPECT_EQ(result.seed, 77u);
  EXPECT_EQ(result.baseCentre.x, 2.0);
  EXPECT_EQ(result.baseCentre.y, 3.25);
  ASSERT_EQ(result.quads.size(), 1u);
  EXPECT_EQ(result.quads[0].name, "quad");
  EXPECT_EQ(result.quads[0].corners[2].y, 4.5);
  EXPECT_TRUE(result.tracks.empty());
  EXPECT_EQ(result.worst[0].name, "t042");
  EXPECT_TRUE(std::isnan(result.worst[0].stretch.off));
  const FrameResult& solved = result.frames[1];
  EXPECT_EQ(solved.good, 3);
  EXPECT_EQ(solved.goodRms, 0.375);
  EXPECT_EQ(solved.sigma, 0.3);
  EXPECT_EQ(solved.loss, Loss::Cauchy);
  EXPECT_EQ(solved.width, 1.5);
  EXPECT_EQ(solved.verdict.origin.stage, Stage::Sampled);
  EXPECT_EQ(whyOf(solved), "so");
  EXPECT_EQ(solved.figures.noise, 0.25);
  EXPECT_TRUE(std::isnan(solved.figures.quads[0][0].xx));
  EXPECT_EQ(result.frames[0].figures.quads[0][0].xx, 0.0);
  EXPECT_EQ(reasonOf(result.frames[2]), "no tracks");
  EXPECT_EQ(result.frames[2].verdict.model, Model::Held);
}

TEST(ReadResult, MakesVersion2OfVersion1) {
  const json j = json::parse(written(read(kVersion1), Format::Json));
  EXPECT_EQ(j["cornerpin"], 2);
  EXPECT_EQ(j["frames"][1]["quads"]["quad"]["corners"],
            json::parse("[[24,2],[32,2],[null,null],[null,null]]"));
  EXPECT_EQ(j["frames"][1]["quads"]["quad"]["covariance"], json::parse("[null,null,null,null]"));
  EXPECT_EQ(j["tracks"].size(), 0u);
  expectReadBack(read(kVersion1));
}

TEST(ReadResult, DoesWithoutWhatEarlierFilesOfVersion1Lack) {
  json j = json::parse(kVersion1);
  for (const char* name : {"loss", "seed", "worst_tracks"}) j.erase(name);
  for (json& frame : j["frames"]) {
    for (const char* name : {"model", "on_top", "noise", "deviation", "quad", "loss", "width",
                             "stage", "why", "inliers", "inlier_rms", "scale"}) {
      frame.erase(name);
    }
  }
  const ShotResult result = read(j.dump());
  EXPECT_EQ(result.quads[0].name, "tracks");
  EXPECT_EQ(result.frames[1].verdict.model, Model::Projective);
  EXPECT_EQ(result.frames[2].verdict.model, Model::Held);
  EXPECT_TRUE(std::isnan(result.frames[1].sigma));
}

TEST(ReadResult, KeepsDoubtsThatFollowFromNothingElseInTheFile) {
  ShotResult result = twoFrames();
  result.frames[1].doubts.clear();
  for (DoubtCode code : kDoubtCodes) result.frames[1].doubts.push_back({code, nameOf(code)});
  const ShotResult back = read(written(result, Format::Json));
  ASSERT_EQ(back.frames[1].doubts.size(), 9u);
  for (const Doubt& doubt : back.frames[1].doubts) EXPECT_EQ(doubt.text, nameOf(doubt.code));
  expectReadBack(result);
}

// As programs wrote them that knew no doubts.
TEST(ReadResult, JudgesWhatHasNoVerdicts) {
  json j = good();
  j.erase("max_error");
  for (json& frame : j["frames"]) {
    for (const char* name : {"verdict", "expected_error", "doubts"}) frame.erase(name);
  }
  const ShotResult result = read(j.dump());
  EXPECT_TRUE(std::isnan(result.maxError));
  EXPECT_EQ(result.frames[0].expectedError, 0.0);
  EXPECT_TRUE(result.frames[0].doubts.empty());
  const std::vector<Doubt>& doubts = result.frames[1].doubts;
  ASSERT_EQ(doubts.size(), 2u);
  EXPECT_EQ(doubts[0].code, DoubtCode::NoFigures);
  EXPECT_EQ(doubts[1].text, "its neighbour's transform: the fit failed: a \"quoted\"\nreason");
  expectReadBack(result);
  const ShotResult first = read(kVersion1);
  ASSERT_EQ(first.frames[1].doubts.size(), 2u);
  EXPECT_EQ(first.frames[1].doubts[0].code, DoubtCode::NoFigures);
  EXPECT_EQ(first.frames[1].doubts[1].code, DoubtCode::NothingToCheck);
}

TEST(ReadResult, SkipsFieldsThatItDoesNotKnow) {
  json j = good();
  j["new"] = {{"a", 1}};
  j["frames"][0]["new"] = "x";
  j["frames"][1]["quads"]["other"] = 3;
  j["tracks"][0]["new"] = nullptr;
  EXPECT_EQ(written(read(j.dump()), Format::Json), written(twoFrames(), Format::Json));
}

TEST(ReadResult, RefusesWhatIsNoResultOrNewer) {
  const std::string end = ": give what cornerpin solve -o shot.json writes";
  EXPECT_EQ(refusal("[]"), ": this is JSON, but no result" + end);
  EXPECT_EQ(refusal("{}"), ": this is JSON, but no result" + end);
  EXPECT_EQ(refusal(R"({"a":[1,2]})"), ": this is JSON, but no result" + end);
  EXPECT_EQ(refusal(R"({"a":[1,2,3,4],"b":4})"), ": this is JSON, but no result" + end);
  EXPECT_EQ(refusal(R"({"a":[[0,0],[1,0],[1,1],[0,1]]})"), ": these are quads, not a result" + end);
  EXPECT_EQ(refusal(R"({"quads":[],"reference_frame":1})"),
            ": these are quads, not a result" + end);
  EXPECT_EQ(refusal("frame,h00\n"),
            ": this is a result in CSV, and JSON is wanted: solve again with -o shot.json");
  EXPECT_EQ(refusal(R"({"cornerpin":3})"),
            ": cornerpin: version 3 of a result, and this program reads up to 2: use a newer one");
  EXPECT_EQ(refusal(R"({"cornerpin":0})"), ": cornerpin: there is no such version");
  EXPECT_EQ(refusal(R"({"cornerpin":"2"})"), ": cornerpin: a whole number from 0 on is needed");
}

TEST(ReadResult, NamesThePlaceOfWhatIsWrong) {
  const auto with = [](const char* pointer, const json& value) {
    json j = good();
    j[json::json_pointer(pointer)] = value;
    return refusal(j.dump());
  };
  EXPECT_EQ(with("/frames/1/h", json::parse("[[1,0,0],[0,1,0]]")),
            ": frames[1].h: a list of 3 is needed");
  EXPECT_EQ(with("/frames/1/h/2", json::parse("[0,0]")), ": frames[1].h[2]: a list of 3 is needed");
  EXPECT_EQ(with("/frames/1/h/2/0", nullptr), ": frames[1].h[2][0]: a number is needed");
  EXPECT_EQ(with("/frames/1/h/2/2", 0), ": frames[1].h: the last element has to be 1");
  EXPECT_EQ(with("/frames/0/frame", 1000000001), ": frames[0].frame: too large");
  EXPECT_EQ(with("/frames/0/frame", -1000000001), ": frames[0].frame: too large");
  EXPECT_EQ(with("/frames/1/frame", 7), ": frames[1].frame: not the frame behind the one before");
  EXPECT_EQ(with("/frames/1/status", "base"),
            ": frames[1].status: \"base\" is for the base frame, and for no other");
  EXPECT_EQ(with("/frames/0/status", "held"),
            ": frames[0].status: \"base\" is for the base frame, and for no other");
  EXPECT_EQ(with("/frames/1/status", "fine"),
            ": frames[1].status: not one of the words that it can be");
  EXPECT_EQ(with("/frames/1/quads", json::object()), ": frames[1].quads.tracks: missing");
  EXPECT_EQ(with("/frames/1/quads/tracks/covariance/1", json::parse("[[1,0]]")),
            ": frames[1].quads.tracks.covariance[1]: a list of 2 is needed");
  EXPECT_EQ(with("/frames", json::array()), ": frames: there is none");
  EXPECT_EQ(with("/quads", json::array()), ": quads: there is none");
  EXPECT_EQ(with("/base_frame", 6),
            ": frames[0].status: \"base\" is for the base frame, and for no other");
  EXPECT_EQ(with("/reference_frame", 7), ": reference_frame: not one of the frames");
  EXPECT_EQ(with("/tracks/0/good/0", json::parse("[6,5]")),
            ": tracks[0].good[0]: the run ends before it begins");
  EXPECT_EQ(with("/frames/1/doubts/0/code", "mood"),
            ": frames[1].doubts[0].code: not one of the words that it can be");
  EXPECT_EQ(with("/frames/1/doubts/1", "held"), ": frames[1].doubts[1]: an object is needed");
  EXPECT_EQ(with("/max_error", "5"), ": max_error: a number from 0 on or null is needed");
  EXPECT_EQ(with("/frames/1/untouched", json::parse(R"({"h":[[1,0,0],[0,1,0],[0,0,1]]})")),
            ": frames[1].untouched.quads: missing");
  const char* const kBetween = R"([{"frame":%,"h":[[1,0,0],[0,1,0],[0,0,1]],"quads":{}}])";
  for (const char* outside : {"4.75", "6.25"}) {
    std::string list = kBetween;
    list.replace(list.find('%'), 1, outside);
    EXPECT_EQ(with("/between", json::parse(list)),
              ": between[0].frame: not between the frames, or not behind the one before");
  }
  EXPECT_EQ(with("/units", "px"), ": units: not one of the words that it can be");
}

TEST(ReadResult, RefusesWhatIsBelowNothing) {
  json whole = good();
  json& solved = whole["frames"][1];
  solved.update(json::parse(R"({"status":"solved","good":1,"good_rms":1,"sigma":1,"loss":"tukey",
      "width":1,"stage":"library"})"));
  solved["untouched"] = {{"h", solved["h"]}, {"quads", solved["quads"]}};
  whole["smooth"] = 1;
  ASSERT_EQ(refusal(whole.dump()), "nothing thrown");
  const auto expectRefused = [&](const std::string& pointer, const json& value, const char* why) {
    json j = whole;
    j[json::json_pointer(pointer)] = value;
    EXPECT_EQ(refusal(j.dump()), ": " + placeOf(pointer) + why);
  };
  for (const char* count : {"/base_tracks", "/handed_over", "/left_out", "/seed",
                            "/frames/1/tracks", "/frames/1/handed_over", "/frames/1/good"}) {
    expectRefused(count, -1, ": a whole number from 0 on is needed");
  }
  for (const char* length :
       {"/worst_tracks/0/moves", "/frames/1/width", "/frames/1/smoothed",
        "/frames/1/quads/tracks/covariance/0/0/0", "/frames/1/quads/tracks/covariance/2/1/1",
        "/frames/1/untouched/quads/tracks/covariance/0/0/0", "/tracks/0/covariance/1/1"}) {
    expectRefused(length, -0.25, ": a number from 0 on is needed");
  }
  for (const char* length : {"/max_error", "/worst_tracks/0/off", "/frames/1/rms",
                             "/frames/1/noise", "/frames/1/good_rms", "/frames/1/sigma",
                             "/frames/1/expected_error", "/frames/1/quads/tracks/deviation/0"}) {
    expectRefused(length, -0.25, ": a number from 0 on or null is needed");
  }
  expectRefused("/smooth", 0.0, ": a number above 0 or null is needed");
}

// Every field that is taken away, or is of another type, is read or refused, and never ends in
// anything else.
TEST(ReadResult, SurvivesDamage) {
  const json whole = good().flatten();
  int refused = 0;
  for (const auto& field : whole.items()) {
    for (const json& value : {json(nullptr), json("x"), json(-1e300), json::array(), json(true)}) {
      json j = good();
      j[json::json_pointer(field.key())] = value;
      refused += refusal(j.dump()) != "nothing thrown";
    }
  }
  EXPECT_GT(refused, 200);
  const std::string text = good().dump();
  std::mt19937 random(5);
  for (int i = 0; i < 3000; ++i) {
    std::string broken = text.substr(0, i % 3 == 0 ? random() % text.size() : text.size());
    for (int k = 0; k < i % 4 && !broken.empty(); ++k) {
      broken[random() % broken.size()] = static_cast<char>(random() % 256);
    }
    refused += refusal(broken) != "nothing thrown";
  }
  EXPECT_GT(refused, 2000);
}

TEST(ReadResult, RefusesATruncatedFile) {
  const std::string text = written(twoFrames(), Format::Json);
  EXPECT_NE(refusal(text.substr(0, text.size() / 2)).find("its end is missing"), std::string::npos);
}

TEST(ReadResult, CanBeRebasedAsTheResultItself) {
  SolveOptions options;
  options.base = 20;
  ShotResult result = solveShot(readTracks(CORNERPIN_DATA "/facade.csv"), options);
  ShotResult again = read(written(result, Format::Json));
  rebase(result, 60);
  rebase(again, 60);
  EXPECT_EQ(written(again, Format::Json), written(result, Format::Json));
}
