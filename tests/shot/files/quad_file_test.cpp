// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/quad_file.h"

#include <gtest/gtest.h>

#include <string>

#include "shot/files/input_error.h"
#include "tests/shot/files/refusal.h"

using namespace cornerpin;

namespace {

const std::string kSquare = "[[0,0],[4,0.5],[4,4],[0,4]]";

QuadFile read(const std::string& text) {
  const TemporaryFolder folder;
  writeFile(folder / "q.json", text);
  return readQuads(folder / "q.json");
}

std::string refusal(const std::string& text) { return refusalBy(readQuads, text); }

}  // namespace

TEST(QuadFile, HoldsCornersByName) {
  const QuadFile file = read("{\"sign\":" + kSquare + ",\"a door\":" + kSquare + "}");
  ASSERT_EQ(file.quads.size(), 2u);
  EXPECT_EQ(file.quads[0].name, "a door");
  EXPECT_EQ(file.quads[1].name, "sign");
  EXPECT_EQ(file.quads[1].corners[1].x, 4.0);
  EXPECT_EQ(file.quads[1].corners[1].y, 0.5);
  EXPECT_FALSE(file.frame);
}

TEST(QuadFile, HoldsAListAsAResultDoes) {
  const std::string item = R"("corners":)" + kSquare + "}";
  const QuadFile file = read(R"({"cornerpin":2,"reference_frame":-3,"quads":[{"name":"z",)" + item +
                             R"(,{"name":"b",)" + item + R"(],"frames":[]})");
  ASSERT_EQ(file.quads.size(), 2u);
  EXPECT_EQ(file.quads[0].name, "z");
  EXPECT_EQ(file.quads[1].name, "b");
  EXPECT_EQ(file.quads[1].corners[3].y, 4.0);
  EXPECT_EQ(file.frame, -3);
}

TEST(QuadFile, SaysWhatIsWrong) {
  EXPECT_EQ(refusal("[]"), ": an object is needed");
  EXPECT_EQ(refusal("{}"), ": there is no quad");
  EXPECT_EQ(refusal("{\"quads\":[]}"), ": there is no quad");
  EXPECT_EQ(refusal("{\"quads\":{}}"), ": quads: a list is needed");
  EXPECT_EQ(refusal("{\"quads\":[{\"name\":\"a\"}]}"), ": quads[0].corners: missing");
  EXPECT_EQ(refusal("{\"sign\":[[0,0],[1,0],[1,1]]}"), ": sign: a list of 4 is needed");
  EXPECT_EQ(refusal("{\"sign\":[[0,0],[1,0],[1,1],[0]]}"), ": sign[3]: a list of 2 is needed");
  EXPECT_EQ(refusal("{\"sign\":[[0,0],[1,0],[1,1],[0,null]]}"), ": sign[3][1]: a number is needed");
  EXPECT_EQ(refusal("{\"sign\":[[0,0],[1,1],[1,0],[0,1]]}"),
            ": the quad \"sign\" crosses itself: give its corners in the order around it");
  EXPECT_EQ(refusal("{\"a\":" + kSquare + ",\"a\":" + kSquare + "}"), ": a: there twice");
  EXPECT_EQ(refusal("{\"\":" + kSquare + "}"), ": a quad's name is empty");
}
