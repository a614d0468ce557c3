// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/result_file.h"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace cornerpin;

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
