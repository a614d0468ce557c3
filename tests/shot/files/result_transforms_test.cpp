// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/result_transforms.h"

#include <gtest/gtest.h>

#include <string>

#include "shot/files/input_error.h"
#include "tests/shot/files/two_frames.h"

using namespace cornerpin;

namespace {

ResultTransforms read(const std::string& text) {
  const TemporaryFolder folder;
  writeFile(folder / "r.csv", text);
  return readResultCsv(folder / "r.csv");
}

std::string refusal(const std::string& text) {
  try {
    read(text);
  } catch (const InputError& error) {
    const std::string message = error.what();
    return message.substr(message.find("r.csv") + 5);
  }
  return "";
}

const std::string kHeader =
    "frame,h00,h01,h02,h10,h11,h12,h20,h21,h22,status,qx0,qy0,qx1,qy1,qx2,qy2,qx3,qy3\n";
const std::string kBase = "5,1,0,0,0,1,0,0,0,1,base,1,2,3,2,3,4.5,1,4.5\n";

void expectSameCorners(const Quad& found, const Quad& expected) {
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(found[i].x, expected[i].x) << i;
    EXPECT_EQ(found[i].y, expected[i].y) << i;
  }
}

}  // namespace

TEST(ReadResultCsv, ReadsWhatPinsAreMadeOf) {
  ShotResult result = twoFrames();
  result.quads.push_back({"a, \"b\"", {{{0, 0}, {4, 0}, {4, 1}, {0, 1}}}});
  for (FrameResult& frame : result.frames) frame.figures.quads.emplace_back();
  result.between = {{5.25, result.frames[1].h}, {6.5, kIdentity}};
  const std::string csv = written(result, Format::Csv);
  EXPECT_TRUE(isResultCsv(csv));
  const ResultTransforms transforms = read(csv);
  ASSERT_EQ(transforms.frames.size(), 2u);
  EXPECT_EQ(transforms.frames[0].frame, 5);
  EXPECT_EQ(transforms.frames[1].frame, 6);
  EXPECT_EQ(transforms.frames[1].h, result.frames[1].h);
  EXPECT_EQ(transforms.frames[0].status, Status::Base);
  EXPECT_EQ(transforms.frames[1].status, Status::Held);
  EXPECT_EQ(transforms.baseFrame, 5);
  EXPECT_EQ(transforms.referenceFrame, 5);
  ASSERT_EQ(transforms.between.size(), 2u);
  EXPECT_EQ(transforms.between[0].frame, 5.25);
  EXPECT_EQ(transforms.between[0].h, result.frames[1].h);
  ASSERT_EQ(transforms.quads.size(), 2u);
  EXPECT_EQ(transforms.quads[1].name, "a, \"b\"");
  for (std::size_t q = 0; q < 2; ++q)
    expectSameCorners(transforms.quads[q].corners, result.quads[q].corners);
  // The middle of x from 0 to 4, y from 0 to 4.5.
  EXPECT_EQ(transforms.baseCentre.x, 2.0);
  EXPECT_EQ(transforms.baseCentre.y, 2.25);
}

// The reference frame is another than the base frame.
TEST(ReadResultCsv, TakesTheQuadFromTheFrameThatHasNoTransform) {
  const ResultTransforms read_ =
      read(kHeader + "4,1,0,10,0,1,0,0,0,1,base,11,2,13,2,13,4.5,11,4.5\n" +
           "5,1,0,0,0,1,0,0,0,1,solved,1,2,3,2,3,4.5,1,4.5\n");
  EXPECT_EQ(read_.baseFrame, 4);
  EXPECT_EQ(read_.referenceFrame, 5);
  expectSameCorners(read_.quads.at(0).corners, {{{1, 2}, {3, 2}, {3, 4.5}, {1, 4.5}}});
}

// Smoothed, the reference frame has a transform, too: here twice as large.
TEST(ReadResultCsv, TakesTheQuadBackWhereAllFramesHaveATransform) {
  const ResultTransforms read_ = read(kHeader + "5,2,0,0,0,2,0,0,0,1,base,2,4,6,4,6,9,2,9\n");
  EXPECT_EQ(read_.referenceFrame, 5);
  expectSameCorners(read_.quads.at(0).corners, {{{1, 2}, {3, 2}, {3, 4.5}, {1, 4.5}}});
}

TEST(ReadResultCsv, FindsColumnsByTheirNames) {
  const ResultTransforms read_ = read(
      "status;more;frame;h22;h21;h20;h12;h11;h10;h02;h01;h00;qy0;qx0;qy1;qx1;qy2;qx2;qy3;qx3\n"
      "base;x;5;1;0;0;0;1;0;0;0;1;2;1;2;3;4.5;3;4.5;1\n");
  expectSameCorners(read_.quads.at(0).corners, {{{1, 2}, {3, 2}, {3, 4.5}, {1, 4.5}}});
}

TEST(ReadResultCsv, RefusesWhatIsNoResult) {
  EXPECT_EQ(refusal(""), ": the file is empty");
  EXPECT_EQ(refusal("frame,h00\n"),
            ":1: a result has a column \"status\", and this header has none");
  EXPECT_EQ(refusal(kHeader), ": there is a header but no frame");
  EXPECT_EQ(refusal(kHeader + "5,1\n"), ":2: the row has 2 fields, the header has 19");
  EXPECT_EQ(refusal(kHeader + "5,1,0,a,0,1,0,0,0,1,base,,,,,,,,\n"),
            ":2: h02 must be a number, not \"a\"");
  EXPECT_EQ(refusal(kHeader + "5,1,0,inf,0,1,0,0,0,1,base,,,,,,,,\n"),
            ":2: h02 must be finite, not \"inf\"");
  EXPECT_EQ(refusal(kHeader + "5,1,0,0,0,1,0,0,0,2,base,,,,,,,,\n"), ":2: h22 has to be 1");
  EXPECT_EQ(refusal(kHeader + "5,1,0,0,0,1,0,0,0,1,good,,,,,,,,\n"),
            ":2: \"good\" is no status of a frame");
  EXPECT_EQ(refusal(kHeader + "5,1,0,0,0,1,0,0,0,1,base,,,,,,,,\n"),
            ": no frame shows all corners of the quad \"quad\"");
  const std::string behind = ":3: the frame is not the one behind the frame before";
  EXPECT_EQ(refusal(kHeader + kBase + "7,1,0,0,0,1,0,0,0,1,held,,,,,,,,\n"), behind);
  EXPECT_EQ(refusal(kHeader + kBase + "5.5,1,0,0,0,1,0,0,0,1,held,,,,,,,,\n"), behind);
  EXPECT_EQ(refusal(kHeader + kBase + "4.5,1,0,0,0,1,0,0,0,1,between,,,,,,,,\n"),
            ":3: the frame is not behind the one before");
  EXPECT_EQ(refusal(kHeader + kBase + "7.5,1,0,0,0,1,0,0,0,1,between,,,,,,,,\n" +
                    "6,1,0,0,0,1,0,0,0,1,held,,,,,,,,\n"),
            ":3: the frame is not behind the one before");
  EXPECT_EQ(refusal(kHeader + kBase + "5,1,0,1,0,1,0,0,0,1,base,,,,,,,,\n"),
            ":3: the frame has another transform than on the line above");
}

TEST(ReadResultCsv, RefusesMoreQuadsThanAnyoneHas) {
  std::string text =
      "frame,quad,h00,h01,h02,h10,h11,h12,h20,h21,h22,status,qx0,qy0,qx1,qy1,qx2,qy2,qx3,qy3\n";
  for (std::size_t i = 0; i <= kMostQuads; ++i) {
    text += "5,q" + std::to_string(i) + ",1,0,0,0,1,0,0,0,1,base,1,2,3,2,3,4.5,1,4.5\n";
  }
  EXPECT_EQ(refusal(text), ":100002: more than 100000 quads");
}

TEST(IsResultCsv, GoesByTheHeader) {
  EXPECT_TRUE(isResultCsv(kHeader + kBase));
  EXPECT_TRUE(
      isResultCsv("\xEF\xBB\xBF"
                  "frame;quad;h00;qx0\r\n"));
  EXPECT_FALSE(isResultCsv("track,frame,x,y\nh00,1,2,qx0\n"));
  EXPECT_FALSE(isResultCsv(""));
}

TEST(TransformsOf, KeepsWhatPinsAreMadeOf) {
  ShotResult result = twoFrames();
  result.between = {{5.5, kIdentity}};
  const ResultTransforms transforms = transformsOf(result);
  ASSERT_EQ(transforms.frames.size(), 2u);
  EXPECT_EQ(transforms.frames[1].h, result.frames[1].h);
  EXPECT_EQ(transforms.frames[1].status, Status::Held);
  EXPECT_EQ(transforms.quads.at(0).name, "tracks");
  EXPECT_EQ(transforms.baseCentre.y, 3.25);
  EXPECT_EQ(transforms.between.size(), 1u);
}
