// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/result_csv.h"

#include <gtest/gtest.h>

#include "shot/files/csv_records.h"
#include "tests/shot/files/two_frames.h"

using namespace cornerpin;

namespace {

// What stands in a column of the second frame's row.
std::string field(const ShotResult& result, const std::string& column) {
  const TemporaryFolder folder;
  writeFile(folder / "r.csv", written(result, Format::Csv));
  ByteSource source(folder / "r.csv");
  CsvRecords reader(source);
  reader.next();
  std::size_t i = 0;
  while (reader.field(i) != column) ++i;
  reader.next();
  reader.next();
  return std::string(reader.field(i));
}

}  // namespace

TEST(ResultCsv, HasOneRowPerFrame) {
  EXPECT_EQ(
      written(twoFrames(), Format::Csv),
      "frame,h00,h01,h02,h10,h11,h12,h20,h21,h22,rms,tracks,status,good,good_rms,sigma,stage,"
      "qx0,qy0,qx1,qy1,qx2,qy2,qx3,qy3,"
      "model,on_top,noise,deviation0,deviation1,deviation2,deviation3,why,reason,loss,width,"
      "handed_over,kept_from,verdict,expected_error,doubts,smoothed,filled\n"
      "5,1,0,0,0,1,0,0,0,1,0,4,base,,,,,1,2,3,2,3,4.5,1,4.5,,,,0,0,0,0,,,,,0,,good,0,,0,false\n"
      "6,2,0,10,0,0.5,0,0,-0.25,1,,0,held,,,,,24,2,32,2,,,,,held,false,0.25,0.5,,"
      "0.125,3.054936363499605e-151,,\"the fit failed: a \"\"quoted\"\"\nreason\",,,2,,"
      "doubtful,,no-figures held,0,false\n");
}

TEST(ResultCsv, HasOneRowPerFrameAndQuadWhereThereAreSeveral) {
  ShotResult result = twoFrames();
  result.quads.push_back({"a, \"b\"", {{{0, 0}, {4, 0}, {4, 1}, {0, 1}}}});
  for (FrameResult& frame : result.frames) frame.figures.quads.emplace_back();
  for (Symmetric2& c : result.frames[1].figures.quads[1]) c = {2.0, 0.0, 2.0};
  const std::string csv = written(result, Format::Csv);
  EXPECT_EQ(csv.rfind("frame,quad,h00,", 0), 0u);
  EXPECT_NE(csv.find("\n5,tracks,1,0,0,0,1,0,0,0,1,0,4,base,,,,,1,2,"), std::string::npos);
  EXPECT_NE(csv.find("\n5,\"a, \"\"b\"\"\",1,0,0,0,1,0,0,0,1,0,4,base,,,,,0,0,4,0,4,1,0,1,"),
            std::string::npos);
  EXPECT_NE(csv.find("\n6,tracks,2,0,10,0,0.5,0,0,-0.25,1,,0,held,,,,,24,2,32,2,,,,,held,false,"
                     "0.25,0.5,,0.125,"),
            std::string::npos);
  EXPECT_NE(csv.find("\n6,\"a, \"\"b\"\"\",2,0,10,0,0.5,0,0,-0.25,1,,0,held,,,,,10,0,18,0,24,"
                     "0.6666666666666666,13.333333333333334,0.6666666666666666,held,false,0.25,2,2,"
                     "2,2,"),
            std::string::npos)
      << csv;
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
  EXPECT_NE(
      written(result, Format::Csv)
          .find(",0,solved,3,0.25,0.5,sampled,24,2,32,2,,,,,projective,false,0.25,0.5,,0.125,3."
                "054936363499605e-151,"
                "too few tracks to tell a bad one,,huber,0.75,2,,doubtful,,no-figures "
                "held,0,false\n"),
      std::string::npos);
}

TEST(ResultCsv, SaysWhatWasDoneToATransform) {
  ShotResult result = twoFrames();
  result.frames[1].smoothed = 0.25;
  result.frames[1].filled = true;
  EXPECT_EQ(field(result, "smoothed"), "0.25");
  EXPECT_EQ(field(result, "filled"), "true");
}

// Behind the frame that they follow, with as many fields as all rows.
TEST(ResultCsv, HasRowsForTransformsBetweenFrames) {
  ShotResult result = twoFrames();
  const Homography half = {{{1, 0, 0.5}, {0, 1, -2}, {0, 0, 1}}};
  result.between = {{5.0, kIdentity}, {5.25, half}, {6.0, half}};
  const std::string csv = written(result, Format::Csv);
  EXPECT_NE(csv.find("\n5,1,0,0,0,1,0,0,0,1,0,4,base,"), std::string::npos) << csv;
  EXPECT_NE(
      csv.find(",0,false\n5,1,0,0,0,1,0,0,0,1,,,between,,,,,1,2,3,2,3,4.5,1,4.5,,,,,,,,,,,,,,,,,,\n"
               "5.25,1,0,0.5,0,1,-2,0,0,1,,,between,,,,,1.5,0,3.5,0,3.5,2.5,1.5,2.5"
               ",,,,,,,,,,,,,,,,,,\n6,2,0,10,"),
      std::string::npos)
      << csv;
  EXPECT_EQ(csv.substr(csv.rfind("\n6,")),
            "\n6,1,0,0.5,0,1,-2,0,0,1,,,between,,,,,1.5,0,3.5,0,3.5,2.5,"
            "1.5,2.5,,,,,,,,,,,,,,,,,,\n");
  result.quads.push_back({"b", {{{0, 0}, {4, 0}, {4, 1}, {0, 1}}}});
  for (FrameResult& frame : result.frames) frame.figures.quads.emplace_back();
  EXPECT_NE(written(result, Format::Csv)
                .find("\n5.25,b,1,0,0.5,0,1,-2,0,0,1,,,between,,,,,0.5,-2,4.5,-2,4.5,-1,0.5,-1,"),
            std::string::npos);
}

TEST(ResultCsv, HoldsEveryBit) {
  ShotResult result = twoFrames();
  result.frames[1].h = {{{0.1, 1.0 / 3.0, 1e300}, {-2.5, 5e-324, 0}, {0, -0.01, 1}}};
  EXPECT_NE(written(result, Format::Csv)
                .find("\n6,0.1,0.3333333333333333,1e+300,-2.5,5e-324,0,0,-0.01,1,"),
            std::string::npos);
}

TEST(ResultCsv, SaysWhyASolvedFrameIsAsItIs) {
  ShotResult result = twoFrames();
  FrameResult& frame = result.frames[1];
  frame.verdict = {};
  frame.verdict.status = Status::Solved;
  frame.verdict.origin = {Stage::Sampled, Grounds::Searched, Stage::Library, 20};
  frame.tracks = 31;
  frame.good = 25;
  EXPECT_EQ(field(result, "why"),
            "the library's solve fits 20 of 31 tracks, this one 25 of 31 tracks");
  EXPECT_EQ(field(result, "reason"), "");
  EXPECT_EQ(field(result, "stage"), "sampled");
  frame.verdict.origin = {Stage::Neighbour, Grounds::Searched, Stage::Neighbour, 25};
  EXPECT_EQ(field(result, "why"), "the neighbour's transform fits 25 of 31 tracks");
  frame.verdict.origin = {Stage::Library, Grounds::NoBadTrack, {}, 0};
  EXPECT_EQ(field(result, "why"), "no sign of a bad track");
  frame.verdict.origin = {};
  EXPECT_EQ(field(result, "why"), "");
}

TEST(ResultCsv, SaysWhyAFrameIsReduced) {
  ShotResult result = twoFrames();
  FrameResult& frame = result.frames[1];
  frame.verdict = {};
  frame.verdict.status = Status::Reduced;
  frame.verdict.model = Model::Similarity;
  frame.verdict.onTop = true;
  frame.verdict.shortfall = Shortfall::TooFewTracks;
  frame.verdict.tracks = frame.verdict.fitted = 3;
  frame.verdict.origin = {Stage::Library, Grounds::Searched, Stage::Library, 3};
  frame.good = 3;
  frame.sigma = 0.5;
  EXPECT_EQ(field(result, "reason"),
            "3 of the 4 tracks needed, too close together or too near one line");
  EXPECT_EQ(field(result, "model"), "similarity");
  EXPECT_EQ(field(result, "on_top"), "true");
  EXPECT_EQ(field(result, "kept_from"), "");
  frame.verdict.keptFrom = {4, 17};
  EXPECT_EQ(field(result, "kept_from"), "4 17");
  for (const char* column : {"why", "stage", "good", "good_rms", "sigma"}) {
    EXPECT_EQ(field(result, column), "") << column;
  }
}

TEST(ResultCsv, IsTheSameAsAText) {
  EXPECT_EQ(resultCsv(twoFrames()), written(twoFrames(), Format::Csv));
}
