// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/written_transforms.h"

#include <gtest/gtest.h>

#include "shot/files/result_json.h"
#include "tests/shot/files/refusal.h"
#include "tests/shot/files/two_frames.h"

using namespace cornerpin;

namespace {

ResultTransforms read(const std::string& text) {
  const TemporaryFolder folder;
  writeFile(folder / "a.json", text);
  return readWrittenTransforms(folder / "a.json");
}

std::string refusal(const std::string& text) { return refusalBy(readWrittenTransforms, text); }

}  // namespace

TEST(WrittenTransforms, AreThoseOfTheResult) {
  ShotResult result = twoFrames();
  result.quads.push_back({"h", {{{-1, 0.1}, {7, 0}, {7, 5}, {-1, 1e-300}}}});
  for (FrameResult& frame : result.frames) {
    frame.figures.quads.push_back(frame.figures.quads.front());
  }
  result.frames[1].untouched =
      std::make_shared<Untouched>(Untouched{kIdentity, result.frames[1].figures.quads});
  result.between = {{5.25, result.frames[1].h}, {5.5, kIdentity}};
  const ResultTransforms transforms = read(resultJson(result));
  ASSERT_EQ(transforms.quads.size(), 2u);
  EXPECT_EQ(transforms.quads[0].corners, result.quads[0].corners);
  EXPECT_EQ(transforms.quads[1].corners, result.quads[1].corners);
  ASSERT_EQ(transforms.frames.size(), 2u);
  EXPECT_EQ(transforms.frames[0].frame, 5);
  EXPECT_EQ(transforms.frames[0].h, kIdentity);
  EXPECT_EQ(transforms.frames[1].frame, 6);
  EXPECT_EQ(transforms.frames[1].h, result.frames[1].h);
  ASSERT_EQ(transforms.between.size(), 2u);
  EXPECT_EQ(transforms.between[0].frame, 5.25);
  EXPECT_EQ(transforms.between[0].h, result.frames[1].h);
  EXPECT_EQ(transforms.between[1].h, kIdentity);
}

TEST(WrittenTransforms, StandAmongAllElse) {
  const ResultTransforms transforms = read(
      "{\"h\": [1, 2], \"frame\": 3, \"tracks\": [{\"frame\": 1, \"h\": [1]}],"
      " \"frames\": [{\"h\": [[1, 2, 3], [4, 5, -6], [7, 8, 1]], \"quads\": {\"h\": {\"h\": [9]}},"
      " \"frame\": -7, \"why\": null, \"filled\": true}]}");
  ASSERT_EQ(transforms.frames.size(), 1u);
  EXPECT_EQ(transforms.frames[0].frame, -7);
  EXPECT_EQ(transforms.frames[0].h, (Homography{{{1, 2, 3}, {4, 5, -6}, {7, 8, 1}}}));
  EXPECT_TRUE(transforms.quads.empty());
  EXPECT_TRUE(transforms.between.empty());
}

TEST(WrittenTransforms, RefuseWhatIsNotWhole) {
  EXPECT_EQ(refusal("{\"frames\": [\n{\"frame\": 1, \"h\": [[1, 2], [3]]}]}"),
            ":2: frames: 9 numbers are needed, not 3");
  EXPECT_EQ(refusal("{\"frames\": [\n{\"h\": [1, 2, 3, 4, 5, 6, 7, 8, 9]}]}"),
            ":2: frames: \"frame\" is no number");
  EXPECT_EQ(refusal("{\"between\": [{\"frame\": \"a\", \"h\": [1, 2, 3, 4, 5, 6, 7, 8, 9]}]}"),
            ":1: between: \"frame\" is no number");
  for (const char* frame : {"1e300", "-1000000001", "1.5"}) {
    EXPECT_EQ(refusal("{\"frames\": [{\"frame\": " + std::string(frame) +
                      ", \"h\": [1, 2, 3, 4, 5, 6, 7, 8, 9]}]}"),
              ":1: frames: \"frame\" is no frame's number");
  }
  EXPECT_EQ(refusal("{\"quads\": [{\"corners\": [[1, 2], [3, 4], [5, 6], [7, null]]}]}"),
            ":1: quads: 8 numbers are needed, not 7");
  EXPECT_EQ(refusal("{\"frames\":\n\n[").substr(0, 13), ":3: not JSON:");
}
