// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/result_file.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "tests/support/files.h"

using namespace cornerpin;
using nlohmann::json;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

ShotResult twoFrames() {
  ShotResult result;
  result.baseFrame = 5;
  result.baseTracks = 4;
  result.leftOut = 2;
  FrameResult base;
  base.frame = 5;
  base.status = Status::Base;
  base.tracks = 4;
  base.h = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
  FrameResult held = base;
  held.frame = 6;
  held.status = Status::Held;
  held.tracks = 0;
  held.rms = kNaN;
  held.h = {{{0.1, 1.0 / 3.0, 1e300}, {-2.5, 5e-324, 0}, {0, -0.01, 1}}};
  held.reason = "a \"quoted\"\nreason";
  result.frames = {base, held};
  return result;
}

std::string written(const ShotResult& result, Format format, std::optional<Quad> quad = {}) {
  const TemporaryFolder folder;
  OutputFile out(folder / "r");
  ShotTrust trust;
  trust.corners = {{{1, 2}, {3, 2}, {3, 4.5}, {1, 4.5}}};
  trust.frames.resize(result.frames.size());
  trust.frames.front().noise = kNaN;
  trust.frames.back() = {0.25, {0.5, kNaN, 0.125, 1e-300}};
  trust.worst = {{"a \"b\"", {3, 60, 81, 70, 9.3, 0.5, true}}};
  writeResult(result, trust, format, quad, out);
  out.commit();
  return readFile(folder / "r");
}

}  // namespace

TEST(ResultJson, HoldsEveryFieldAndEveryBit) {
  const ShotResult result = twoFrames();
  const json j = json::parse(written(result, Format::Json));
  EXPECT_EQ(j["cornerpin"], 1);
  EXPECT_EQ(j["base_frame"], 5);
  EXPECT_EQ(j["base_tracks"], 4);
  EXPECT_EQ(j["left_out"], 2);
  EXPECT_EQ(j["units"], "fit");
  ASSERT_EQ(j["frames"].size(), 2u);
  const json& held = j["frames"][1];
  EXPECT_EQ(held["frame"], 6);
  EXPECT_EQ(held["status"], "held");
  EXPECT_EQ(held["tracks"], 0);
  EXPECT_TRUE(held["rms"].is_null());
  EXPECT_EQ(held["reason"], "a \"quoted\"\nreason");
  EXPECT_EQ(held["h"].get<Homography>(), result.frames[1].h);
  EXPECT_EQ(j["frames"][0]["status"], "base");
  EXPECT_EQ(j["frames"][0]["rms"], 0);
  EXPECT_FALSE(j["frames"][0].contains("reason"));
  EXPECT_FALSE(j["frames"][0].contains("quad"));
}

TEST(ResultJson, SaysHowASolvedFrameCameAbout) {
  ShotResult result = twoFrames();
  result.loss = Loss::Cauchy;
  result.seed = 77;
  FrameResult& solved = result.frames[1];
  solved.status = Status::Solved;
  solved.stage = Stage::Sampled;
  solved.why = "a why";
  solved.inliers = 3;
  solved.inlierRms = 0.25;
  solved.scale = 0.5;
  const json j = json::parse(written(result, Format::Json));
  EXPECT_EQ(j["loss"], "cauchy");
  EXPECT_EQ(j["seed"], 77);
  EXPECT_EQ(j["frames"][1]["stage"], "sampled");
  EXPECT_EQ(j["frames"][1]["why"], "a why");
  EXPECT_EQ(j["frames"][1]["inliers"], 3);
  EXPECT_EQ(j["frames"][1]["inlier_rms"], 0.25);
  EXPECT_EQ(j["frames"][1]["scale"], 0.5);
  EXPECT_FALSE(j["frames"][0].contains("stage"));
  solved.reason.clear();
  solved.model = Model::Projective;
  EXPECT_NE(
      written(result, Format::Csv)
          .find(",0,solved,3,0.25,0.5,sampled,projective,false,0.25,0.5,,0.125,1e-300,a why,\n"),
      std::string::npos);
}

TEST(ResultJson, ReplacesBrokenTextInAReason) {
  ShotResult result = twoFrames();
  result.frames[1].reason = "\xff";
  EXPECT_TRUE(json::accept(written(result, Format::Json)));
}

TEST(ResultCsv, HasOneRowPerFrame) {
  EXPECT_EQ(
      written(twoFrames(), Format::Csv),
      "frame,h00,h01,h02,h10,h11,h12,h20,h21,h22,rms,tracks,status,inliers,inlier_rms,scale,stage,"
      "model,on_top,noise,deviation0,deviation1,deviation2,deviation3,why,reason\n"
      "5,1,0,0,0,1,0,0,0,1,0,4,base,,,,,,,,0,0,0,0,,\n"
      "6,0.1,0.3333333333333333,1e+300,-2.5,5e-324,0,0,-0.01,1,,0,held,,,,,held,false,0.25,0.5,,"
      "0.125,1e-300,,\"a \"\"quoted\"\"\nreason\"\n");
}

TEST(ResultQuad, IsCarriedToEveryFrame) {
  ShotResult result = twoFrames();
  result.frames[1].h = {{{2, 0, 10}, {0, 2, 20}, {0, 0, 1}}};
  const Quad quad = parseQuad("0,0,1,0,1.5,1,-2,1");
  const json j = json::parse(written(result, Format::Json, quad));
  EXPECT_EQ(j["frames"][1]["quad"], json::parse("[[10,20],[12,20],[13,22],[6,22]]"));
  EXPECT_EQ(j["frames"][0]["quad"], json::parse("[[0,0],[1,0],[1.5,1],[-2,1]]"));
  const std::string csv = written(result, Format::Csv, quad);
  EXPECT_NE(csv.find(",stage,qx0,qy0,qx1,qy1,qx2,qy2,qx3,qy3,model,"), std::string::npos);
  EXPECT_NE(csv.find(",held,,,,,10,20,12,20,13,22,6,22,held,"), std::string::npos);
}

TEST(ResultJson, SaysHowFarToTrustAFrame) {
  ShotResult result = twoFrames();
  result.frames[1].status = Status::Reduced;
  result.frames[1].model = Model::Affine;
  result.frames[1].onTop = true;
  const json j = json::parse(written(result, Format::Json));
  EXPECT_EQ(j["corners"], json::parse("[[1,2],[3,2],[3,4.5],[1,4.5]]"));
  EXPECT_EQ(
      j["worst_tracks"],
      json::parse(
          R"([{"track":"a \"b\"","first":60,"last":81,"peak":70,"moves":9.3,"off":0.5,"stands_out":true}])"));
  EXPECT_FALSE(j["frames"][0].contains("model"));
  EXPECT_TRUE(j["frames"][0]["noise"].is_null());
  EXPECT_EQ(j["frames"][0]["deviation"], json::parse("[0,0,0,0]"));
  EXPECT_EQ(j["frames"][1]["status"], "reduced");
  EXPECT_EQ(j["frames"][1]["model"], "affine");
  EXPECT_EQ(j["frames"][1]["on_top"], true);
  EXPECT_EQ(j["frames"][1]["noise"], 0.25);
  EXPECT_EQ(j["frames"][1]["deviation"], json::parse("[0.5,null,0.125,1e-300]"));
}

TEST(ExplanationRow, QuotesNamesAndLeavesOutWhatHasNoValue) {
  EXPECT_EQ(explanationRow("t1", -3, {0.5, 1, 0.25, kNaN}), "t1,-3,0.5,1,0.25,\n");
  EXPECT_EQ(explanationRow("a,\"b\"", 0, {kNaN, 0, 0, 2}), "\"a,\"\"b\"\"\",0,,0,0,2\n");
  EXPECT_EQ(explanationRow(" a", 0, {}), "\" a\",0,0,0,0,0\n");
}

TEST(ResultQuad, HasNoPlaceOnOrBehindTheHorizon) {
  ShotResult result = twoFrames();
  result.frames[1].h = {{{1, 0, 0}, {0, 1, 0}, {0, -0.01, 1}}};
  const Quad quad = parseQuad("0,0,1,99,0,100,0,101");
  const json j = json::parse(written(result, Format::Json, quad));
  const json& q = j["frames"][1]["quad"];
  EXPECT_EQ(q[0], json::parse("[0,0]"));
  EXPECT_FALSE(q[1][0].is_null());
  EXPECT_EQ(q[2], json::parse("[null,null]"));
  EXPECT_EQ(q[3], json::parse("[null,null]"));
  EXPECT_NE(written(result, Format::Csv, quad).find(",,,,held,"), std::string::npos);
}

TEST(ParseQuad, ReadsEightNumbers) {
  const Quad quad = parseQuad("-1,2.5,3e1,4,5,6,7,-8");
  EXPECT_EQ(quad[0].x, -1.0);
  EXPECT_EQ(quad[0].y, 2.5);
  EXPECT_EQ(quad[1].x, 30.0);
  EXPECT_EQ(quad[3].y, -8.0);
}

TEST(ParseQuad, RefusesAnythingElse) {
  for (const char* text :
       {"", "1", "1,2,3,4,5,6,7", "1,2,3,4,5,6,7,8,9", "1,2,3,4,5,6,7,x", "1,2,3,4,5,6,7,inf",
        "1;2;3;4;5;6;7;8", "1,2,3,4,5,6,7,8 ", "1,,3,4,5,6,7,8", "1,2,3,4,5,6,7,"}) {
    EXPECT_THROW(parseQuad(text), std::invalid_argument) << text;
  }
}

TEST(FormatOf, GoesByTheExtensionInAnyCase) {
  EXPECT_EQ(formatOf("a/b.json"), Format::Json);
  EXPECT_EQ(formatOf("b.CSV"), Format::Csv);
  EXPECT_EQ(formatOf("b.txt"), std::nullopt);
  EXPECT_EQ(formatOf("json"), std::nullopt);
  EXPECT_EQ(formatOf("a.json/b"), std::nullopt);
}
