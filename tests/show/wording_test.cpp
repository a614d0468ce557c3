// SPDX-License-Identifier: BSD-3-Clause
#include "show/wording.h"

#include <cornerpin/shot.h>
#include <gtest/gtest.h>

using namespace cornerpin;

TEST(LengthText, HasThreeDigitsOrAllInFrontOfThePoint) {
  EXPECT_EQ(lengthText(0.09184), "0.0918 px");
  EXPECT_EQ(lengthText(17.949), "17.9 px");
  EXPECT_EQ(lengthText(999.4), "999 px");
  EXPECT_EQ(lengthText(999.5), "1000 px");
  EXPECT_EQ(lengthText(1234.4), "1234 px");
  EXPECT_EQ(lengthText(999999.0), "999999 px");
  EXPECT_EQ(lengthText(1.0e6), "1e+06 px");
}

TEST(CountText, HasSeveralUnlessThereIsOne) {
  EXPECT_EQ(countText(0, "frame"), "0 frames");
  EXPECT_EQ(countText(1, "frame"), "1 frame");
  EXPECT_EQ(countText(2, "frame"), "2 frames");
}

TEST(InQuotes, IsOnOneLineAndEndsBetweenCharacters) {
  EXPECT_EQ(inQuotes(""), "\"\"");
  EXPECT_EQ(inQuotes("a\nb"), "\"a?b\"");
  const std::string sixty(60, 'x');
  EXPECT_EQ(inQuotes(sixty), "\"" + sixty + "\"");
  EXPECT_EQ(inQuotes(sixty + "y"), "\"" + sixty + "...\"");
  const std::string smile = "\xf0\x9f\x98\x80";
  EXPECT_EQ(inQuotes(sixty.substr(0, 57) + smile), "\"" + sixty.substr(0, 57) + "...\"");
  const std::string euro = "\xe2\x82\xac";
  EXPECT_EQ(inQuotes(sixty.substr(0, 58) + euro), "\"" + sixty.substr(0, 58) + "...\"");
  EXPECT_EQ(inQuotes(sixty.substr(0, 57) + euro + "y"),
            "\"" + sixty.substr(0, 57) + euro + "...\"");
}

TEST(RefuseFile, NamesTheLineWhereOneIsToBlame) {
  const auto refusal = [](std::uint32_t line) {
    try {
      refuseFile("a.json", line, "no");
    } catch (const shot::InputError& error) {
      EXPECT_EQ(error.file, "a.json");
      EXPECT_EQ(error.line, line);
      return std::string(error.what());
    }
    return std::string();
  };
  EXPECT_EQ(refusal(0), "a.json: no");
  EXPECT_EQ(refusal(7), "a.json:7: no");
}
