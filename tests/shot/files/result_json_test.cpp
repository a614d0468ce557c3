// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/result_json.h"

#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>

#include "tests/shot/files/two_frames.h"

using namespace cornerpin;
using nlohmann::json;

TEST(ResultJson, HoldsEveryFieldAndEveryBit) {
  ShotResult result = twoFrames();
  result.frames[1].h = {{{0.1, 1.0 / 3.0, 1e300}, {-2.5, 5e-324, 0}, {0, -0.01, 1}}};
  const json j = json::parse(written(result, Format::Json));
  EXPECT_EQ(j["cornerpin"], 2);
  EXPECT_EQ(j["base_frame"], 5);
  EXPECT_EQ(j["reference_frame"], 5);
  EXPECT_EQ(j["front"], json::parse("[2,3.25]"));
  EXPECT_EQ(j["base_tracks"], 4);
  EXPECT_EQ(j["handed_over"], 3);
  EXPECT_EQ(j["left_out"], 2);
  EXPECT_TRUE(j["base_why"].is_null());
  EXPECT_EQ(j["frames"][1]["handed_over"], 2);
  EXPECT_EQ(j["units"], "pixels of the input");
  ASSERT_EQ(j["frames"].size(), 2u);
  const json& held = j["frames"][1];
  EXPECT_EQ(held["frame"], 6);
  EXPECT_EQ(held["status"], "held");
  EXPECT_EQ(held["tracks"], 0);
  EXPECT_TRUE(held["rms"].is_null());
  EXPECT_EQ(held["reason"], "the fit failed: a \"quoted\"\nreason");
  EXPECT_EQ(held["h"].get<Homography>(), result.frames[1].h);
  EXPECT_EQ(j["frames"][0]["status"], "base");
  EXPECT_EQ(j["frames"][0]["rms"], 0);
  EXPECT_FALSE(j["frames"][0].contains("reason"));
}

TEST(ResultJson, SaysHowASolvedFrameCameAbout) {
  ShotResult result = twoFrames();
  result.loss = Loss::Cauchy;
  result.seed = 77;
  FrameResult& solved = result.frames[1];
  solved.verdict = {};
  solved.verdict.status = Status::Solved;
  solved.verdict.origin.stage = Stage::Sampled;
  solved.verdict.origin.grounds = Grounds::Searched;
  solved.tracks = 4;
  solved.good = 3;
  solved.goodRms = 0.25;
  solved.sigma = 0.5;
  const json j = json::parse(written(result, Format::Json));
  EXPECT_EQ(j["loss"], "cauchy");
  EXPECT_EQ(j["seed"], 77);
  EXPECT_EQ(j["frames"][1]["stage"], "sampled");
  EXPECT_EQ(j["frames"][1]["why"], "nothing to start from, this one 3 of 4 tracks");
  EXPECT_EQ(j["frames"][1]["good"], 3);
  EXPECT_EQ(j["frames"][1]["good_rms"], 0.25);
  EXPECT_EQ(j["frames"][1]["sigma"], 0.5);
  EXPECT_FALSE(j["frames"][0].contains("stage"));
}

TEST(RoundedResultJson, IsTheSameWithFewerDigits) {
  ShotResult result = twoFrames();
  EXPECT_EQ(roundedResultJson(result, 17), written(result, Format::Json));
  result.frames[1].h = {{{0.123456789, 1.0 / 3.0, 1e300}, {-2.5, 0, 0}, {0, -0.01, 1}}};
  const json j = json::parse(roundedResultJson(result, 3));
  EXPECT_EQ(j["frames"][1]["h"], json::parse("[[0.123,0.333,1e300],[-2.5,0,0],[0,-0.01,1]]"));
  EXPECT_EQ(j["frames"][1]["reason"], "the fit failed: a \"quoted\"\nreason");
  EXPECT_EQ(j["front"], json::parse("[2,3.25]"));
}

TEST(ResultJson, SaysWhatWasFoundToHelp) {
  const json j = json::parse(written(twoFrames(), Format::Json));
  EXPECT_EQ(j["advice"], json::parse(R"([{"first":5,"last":6,"text":"do \"this\""}])"));
}

TEST(ResultJson, SaysHowFarToTrustAFrame) {
  ShotResult result = twoFrames();
  result.frames[1].verdict.status = Status::Reduced;
  result.frames[1].verdict.model = Model::Affine;
  result.frames[1].verdict.onTop = true;
  const json j = json::parse(written(result, Format::Json));
  EXPECT_EQ(
      j["worst_tracks"],
      json::parse(
          R"([{"track":"a \"b\"","first":60,"last":81,"peak":70,"moves":9.3,"off":0.5,"stands_out":true}])"));
  EXPECT_FALSE(j["frames"][0].contains("model"));
  EXPECT_TRUE(j["frames"][0]["noise"].is_null());
  EXPECT_EQ(j["frames"][1]["status"], "reduced");
  EXPECT_EQ(j["frames"][1]["model"], "affine");
  EXPECT_EQ(j["frames"][1]["on_top"], true);
  EXPECT_FALSE(j["frames"][1].contains("kept_from"));
  result.frames[1].verdict.keptFrom = {4, 17};
  EXPECT_EQ(json::parse(written(result, Format::Json))["frames"][1]["kept_from"], json({4, 17}));
  EXPECT_EQ(j["frames"][1]["noise"], 0.25);
}

TEST(ResultJson, SaysWhatMakesAFrameDoubtful) {
  ShotResult result = twoFrames();
  result.frames[0].expectedError = 0.0625;
  const json j = json::parse(written(result, Format::Json));
  EXPECT_EQ(j["max_error"], 0.1);
  EXPECT_EQ(j["frames"][0]["verdict"], "good");
  EXPECT_EQ(j["frames"][0]["expected_error"], 0.0625);
  EXPECT_EQ(j["frames"][0]["doubts"], json::array());
  EXPECT_EQ(j["frames"][1]["verdict"], "doubtful");
  EXPECT_TRUE(j["frames"][1]["expected_error"].is_null());
  EXPECT_EQ(j["frames"][1]["doubts"],
            json::parse(R"([{"code":"no-figures","text":"corner 1 of \"tracks\""},)"
                        R"({"code":"held","text":"b\n"}])"));
  result.maxError = std::nan("");
  EXPECT_TRUE(json::parse(written(result, Format::Json))["max_error"].is_null());
}

TEST(ResultJson, ReplacesBrokenTextInAReason) {
  ShotResult result = twoFrames();
  result.frames[1].texts = std::make_shared<FrameTexts>(FrameTexts{"", "\xff"});
  EXPECT_TRUE(json::accept(written(result, Format::Json)));
}

TEST(ResultJson, HasEveryQuadInEveryFrame) {
  ShotResult result = twoFrames();
  result.quads.push_back({"sign", {{{0, 0}, {4, 0}, {4, -4}, {0, -4}}}});
  for (FrameResult& frame : result.frames) frame.figures.quads.emplace_back();
  result.frames[1].figures.quads[1][0] = {2.0, -1.0, 7.0};
  result.frames[1].figures.quads[1][3].xx = HUGE_VAL;
  const json j = json::parse(written(result, Format::Json));
  EXPECT_EQ(j["quads"], json::parse(R"([{"name":"tracks","corners":[[1,2],[3,2],[3,4.5],[1,4.5]]},)"
                                    R"({"name":"sign","corners":[[0,0],[4,0],[4,-4],[0,-4]]}])"));
  const json& base = j["frames"][0]["quads"];
  EXPECT_EQ(base.size(), 2u);
  EXPECT_EQ(base["sign"]["corners"], j["quads"][1]["corners"]);
  EXPECT_EQ(base["tracks"]["deviation"], json::parse("[0,0,0,0]"));
  const json& held = j["frames"][1]["quads"];
  EXPECT_EQ(held["sign"]["corners"], json::parse("[[10,0],[18,0],[9,-1],[5,-1]]"));
  EXPECT_EQ(held["sign"]["covariance"],
            json::parse("[[[2,-1],[-1,7]],[[0,0],[0,0]],[[0,0],[0,0]],null]"));
  EXPECT_EQ(held["sign"]["deviation"], json::parse("[3,0,0,null]"));
}

TEST(ResultJson, HasNoPlaceForACornerOnOrBehindTheHorizon) {
  ShotResult result = twoFrames();
  result.quads[0].corners = {{{0, 0}, {1, 3.5}, {0, 4}, {0, 5}}};
  const json j = json::parse(written(result, Format::Json))["frames"][1]["quads"]["tracks"];
  EXPECT_EQ(j["corners"], json::parse("[[10,0],[96,14],[null,null],[null,null]]"));
  EXPECT_EQ(j["covariance"], json::parse("[[[0.125,0],[0,0.125]],null,[[0,0],[0,0.015625]],"
                                         "[[0,0],[0,9.332636185032189e-302]]]"));
  EXPECT_EQ(j["deviation"], json::parse("[0.5,null,0.125,3.054936363499605e-151]"));
}

TEST(ResultJson, SaysWhatBecameOfEachTrack) {
  const json tracks = json::parse(written(twoFrames(), Format::Json))["tracks"];
  EXPECT_EQ(tracks,
            json::parse(R"([{"name":"a \"b\"","place":[0.1,-2],"covariance":[[0.25,0.125],[0.125,)"
                        R"(0.5]],"good":[[5,6]],"ignored":[],"absent":[]},)"
                        R"({"name":"other","place":null,"covariance":null,"good":[],)"
                        R"("ignored":[[6,6]],"absent":[[5,5]]}])"));
}

TEST(ResultJson, HasALineForEachQuadTrackAndFrame) {
  const std::string text = written(twoFrames(), Format::Json);
  for (const char* line : {"\n{\"name\":\"tracks\",", "\n{\"name\":\"other\",",
                           "\n{\"track\":\"a \\\"b", "\n{\"frame\":5,", "\n{\"frame\":6,"}) {
    EXPECT_NE(text.find(line), std::string::npos) << line;
  }
}

TEST(ResultJson, SaysWhyASolvedFrameIsAsItIs) {
  ShotResult result = twoFrames();
  FrameResult& frame = result.frames[1];
  frame.verdict = {};
  frame.verdict.status = Status::Solved;
  frame.verdict.origin = {Stage::Sampled, Grounds::Searched, Stage::Library, 20};
  frame.tracks = 31;
  frame.good = 25;
  frame.loss = Loss::Huber;
  frame.width = 1.75;
  const json solved = json::parse(written(result, Format::Json))["frames"][1];
  EXPECT_EQ(solved["why"], "the library's solve fits 20 of 31 tracks, this one 25 of 31 tracks");
  EXPECT_FALSE(solved.contains("reason"));
  EXPECT_EQ(solved["loss"], "huber");
  EXPECT_EQ(solved["width"], 1.75);
  frame.texts = std::make_shared<FrameTexts>();
  EXPECT_FALSE(json::parse(written(result, Format::Json))["frames"][1].contains("why"));
}

TEST(ResultJson, SaysWhyAFrameIsReduced) {
  ShotResult result = twoFrames();
  FrameResult& frame = result.frames[1];
  frame.verdict = {};
  frame.verdict.status = Status::Reduced;
  frame.verdict.model = Model::Affine;
  frame.verdict.shortfall = Shortfall::FewAgree;
  frame.verdict.tracks = 8;
  frame.verdict.good = frame.verdict.fitted = 4;
  frame.verdict.origin = {Stage::Library, Grounds::Searched, Stage::Library, 4};
  frame.good = 4;
  const json reduced = json::parse(written(result, Format::Json))["frames"][1];
  EXPECT_EQ(reduced["reason"], "only 4 of its 8 tracks agree on a transform, any four do");
  for (const char* name : {"why", "stage", "good", "good_rms", "sigma", "loss", "width"}) {
    EXPECT_FALSE(reduced.contains(name)) << name;
  }
}

TEST(ResultJson, KeepsTheFitBesideWhatWasDoneToIt) {
  ShotResult result = twoFrames();
  const json plain = json::parse(written(result, Format::Json));
  EXPECT_TRUE(plain["smooth"].is_null());
  EXPECT_EQ(plain["fill"], false);
  EXPECT_EQ(plain["between"], json::array());
  EXPECT_EQ(plain["frames"][1]["smoothed"], 0);
  EXPECT_EQ(plain["frames"][1]["filled"], false);
  EXPECT_FALSE(plain["frames"][1].contains("untouched"));
  FrameResult& frame = result.frames[1];
  frame.untouched = std::make_shared<Untouched>(Untouched{frame.h, frame.figures.quads});
  frame.h = {{{1, 0, 0.5}, {0, 1, -2}, {0, 0, 1}}};
  frame.smoothed = 0.75;
  frame.filled = true;
  result.smooth = 1.5;
  result.fill = true;
  const json j = json::parse(written(result, Format::Json));
  EXPECT_EQ(j["smooth"], 1.5);
  EXPECT_EQ(j["fill"], true);
  const json& touched = j["frames"][1];
  EXPECT_EQ(touched["smoothed"], 0.75);
  EXPECT_EQ(touched["filled"], true);
  EXPECT_EQ(touched["h"], json::parse("[[1,0,0.5],[0,1,-2],[0,0,1]]"));
  EXPECT_EQ(touched["quads"]["tracks"]["corners"][0], json::parse("[1.5,0]"));
  EXPECT_EQ(touched["untouched"]["h"], plain["frames"][1]["h"]);
  EXPECT_EQ(touched["untouched"]["quads"], plain["frames"][1]["quads"]);
}

TEST(ResultJson, HasTransformsBetweenFrames) {
  ShotResult result = twoFrames();
  result.between = {{5.25, {{{1, 0, 0.5}, {0, 1, -2}, {0, 0, 1}}}}};
  EXPECT_EQ(json::parse(written(result, Format::Json))["between"],
            json::parse(R"([{"frame":5.25,"h":[[1,0,0.5],[0,1,-2],[0,0,1]],"quads":{"tracks":)"
                        R"({"corners":[[1.5,0],[3.5,0],[3.5,2.5],[1.5,2.5]]}}}])"));
}

TEST(ResultJson, IsTheSameAsAText) {
  EXPECT_EQ(resultJson(twoFrames()), written(twoFrames(), Format::Json));
}
