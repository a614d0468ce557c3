// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/result_csv.h"

#include <gtest/gtest.h>

#include "tests/shot/files/two_frames.h"

using namespace cornerpin;

TEST(ResultCsv, HasOneRowPerFrame) {
  EXPECT_EQ(
      written(twoFrames(), Format::Csv),
      "frame,h00,h01,h02,h10,h11,h12,h20,h21,h22,rms,tracks,status,inliers,inlier_rms,scale,stage,"
      "model,on_top,noise,deviation0,deviation1,deviation2,deviation3,why,reason,loss,width\n"
      "5,1,0,0,0,1,0,0,0,1,0,4,base,,,,,,,,0,0,0,0,,,,\n"
      "6,0.1,0.3333333333333333,1e+300,-2.5,5e-324,0,0,-0.01,1,,0,held,,,,,held,false,0.25,0.5,,"
      "0.125,1e-300,,\"the fit failed: a \"\"quoted\"\"\nreason\",,\n");
}

TEST(ResultCsv, SaysHowASolvedFrameCameAbout) {
  ShotResult result = twoFrames();
  FrameResult& solved = result.frames[1];
  solved.verdict = {};
  solved.verdict.status = Status::Solved;
  solved.verdict.model = Model::Projective;
  solved.verdict.origin.stage = Stage::Sampled;
  solved.verdict.origin.grounds = Grounds::TooFew;
  solved.good = 3;
  solved.goodRms = 0.25;
  solved.sigma = 0.5;
  solved.loss = Loss::Huber;
  solved.width = 0.75;
  EXPECT_NE(written(result, Format::Csv)
                .find(",0,solved,3,0.25,0.5,sampled,projective,false,0.25,0.5,,0.125,1e-300,"
                      "too few tracks to tell a bad one,,huber,0.75\n"),
            std::string::npos);
}

TEST(ResultCsv, CarriesTheQuadToEveryFrame) {
  ShotResult result = twoFrames();
  result.frames[1].h = {{{2, 0, 10}, {0, 2, 20}, {0, 0, 1}}};
  const Quad quad = {{{0, 0}, {1, 0}, {1.5, 1}, {-2, 1}}};
  const std::string csv = written(result, Format::Csv, quad);
  EXPECT_NE(csv.find(",stage,qx0,qy0,qx1,qy1,qx2,qy2,qx3,qy3,model,"), std::string::npos);
  EXPECT_NE(csv.find(",held,,,,,10,20,12,20,13,22,6,22,held,"), std::string::npos);
}

TEST(ResultCsv, HasNoPlaceForACornerOnOrBehindTheHorizon) {
  ShotResult result = twoFrames();
  result.frames[1].h = {{{1, 0, 0}, {0, 1, 0}, {0, -0.01, 1}}};
  const Quad quad = {{{0, 0}, {1, 0}, {0, 100}, {0, 101}}};
  EXPECT_NE(written(result, Format::Csv, quad).find(",held,,,,,0,0,1,0,,,,,held,"),
            std::string::npos);
}
