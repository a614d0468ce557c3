// SPDX-License-Identifier: BSD-3-Clause
#include "shot/advice/closing_words.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace cornerpin;

namespace {

ShotResult goodShot(std::size_t frames) {
  ShotResult result;
  result.quads = {{"a", {{{0, 0}, {1, 0}, {1, 1}, {0, 1}}}}};
  for (std::size_t i = 0; i < frames; ++i) {
    FrameResult frame;
    frame.frame = static_cast<int>(i);
    frame.expectedError = 0.25 * static_cast<double>(i);
    frame.figures.quads.resize(1);
    result.frames.push_back(frame);
  }
  return result;
}

}  // namespace

TEST(ClosingWords, SayHowFarCornersMayBeOffWhereAllIsGood) {
  EXPECT_EQ(closingWords(goodShot(5), false),
            "Good: all 5 frames. No corner is expected to be more than 1 px off.\n");
  EXPECT_EQ(closingWords(goodShot(2), false),
            "Good: both frames. No corner is expected to be more than 0.25 px off.\n");
  EXPECT_EQ(closingWords(goodShot(1), false), "Good: the only frame.\n");
  ShotResult unknown = goodShot(3);
  unknown.frames[1].expectedError = std::nan("");
  EXPECT_EQ(closingWords(unknown, false), "Good: all 3 frames.\n");
}

TEST(ClosingWords, SayWhichFramesAreDoubtfulWhyAndWhatHelps) {
  ShotResult result = goodShot(20);
  result.frames[2].doubts = {{DoubtCode::Jump, "jumps"}};
  result.frames[4].doubts = {{DoubtCode::ExpectedError, "far off"},
                             {DoubtCode::Jump, "jumps, too"}};
  result.frames[12].doubts = {{DoubtCode::Rival, "others agree"}};
  result.advice = {{{2, 4}, "do this"}};
  EXPECT_EQ(closingWords(result, false),
            "Good: 17 of 20 frames. Doubtful: 2, 4, 12.\n"
            "  12          others agree (frame 12: may be 3 px off)\n"
            "  2-4         far off;\n"
            "              jumps, too (frame 4);\n"
            "              do this\n");
  EXPECT_EQ(advisedStretches(result),
            "  2-4         far off;\n"
            "              jumps, too (frame 4);\n"
            "              do this\n");
  result.advice.clear();
  EXPECT_EQ(advisedStretches(result), "");
}

TEST(ClosingWords, ComeInParts) {
  ShotResult result = goodShot(20);
  EXPECT_EQ(closingSentence(result),
            "Good: all 20 frames. No corner is expected to be more than 4.75 px off.");
  EXPECT_TRUE(closingStretches(result).empty());
  result.frames[4].doubts = {{DoubtCode::ExpectedError, "far off"},
                             {DoubtCode::Jump, "jumps, too"}};
  result.frames[12].doubts = {{DoubtCode::Rival, "others agree"}};
  result.advice = {{{4, 4}, "do this"}};
  EXPECT_EQ(closingSentence(result), "Good: 18 of 20 frames. Doubtful: 4, 12.");
  const std::vector<StretchWords> words = closingStretches(result);
  ASSERT_EQ(words.size(), 2u);
  EXPECT_EQ(words[0].text, "others agree (frame 12: may be 3 px off)");
  EXPECT_EQ(words[1].frames.first, 4);
  EXPECT_EQ(words[1].frames.last, 4);
  EXPECT_EQ(words[1].text, "far off; jumps, too (frame 4); do this");
}

TEST(ClosingWords, NameThreeStretchesAtMost) {
  ShotResult result = goodShot(50);
  for (std::size_t i = 0; i < 50; i += 10) result.frames[i].doubts = {{DoubtCode::Jump, "jumps"}};
  EXPECT_EQ(closingWords(result, false),
            "Good: 45 of 50 frames. Doubtful: 0, 10, 20, 30, 40.\n"
            "  40          jumps (frame 40: may be 10 px off)\n"
            "  30          jumps (frame 30: may be 7.5 px off)\n"
            "  20          jumps (frame 20: may be 5 px off)\n");
}

TEST(ClosingWords, SayThatOnlyTheGivenFrameIsGood) {
  ShotResult result = goodShot(3);
  result.referenceFrame = 1;
  for (std::size_t i : {0u, 2u}) result.frames[i].doubts = {{DoubtCode::Jump, "jumps"}};
  EXPECT_EQ(closingWords(result, false)
                .rfind("Good: only frame 1, which the others start from. Doubtful: 0, 2.\n", 0),
            0u);
  result.referenceFrame = 2;
  EXPECT_EQ(closingWords(result, false).rfind("Good: 1 of 3 frames. Doubtful: 0, 2.\n", 0), 0u);
}

TEST(ClosingWords, MarkTheVerdictForATerminal) {
  ShotResult result = goodShot(2);
  EXPECT_EQ(closingWords(result, true).rfind("\033[32mGood\033[0m: both", 0), 0u);
  result.frames[1].doubts = {{DoubtCode::Jump, "jumps"}};
  EXPECT_NE(closingWords(result, true).find(" \033[33mDoubtful\033[0m: 1."), std::string::npos);
}
