// SPDX-License-Identifier: BSD-3-Clause
#include "show/shot_figures.h"

#include <gtest/gtest.h>

#include <cmath>

#include "shot/advice/closing_words.h"

using namespace cornerpin;

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

// Frames from 100 on, solved but for the first, with these expected errors.
ShotResult shotWith(const std::vector<double>& errors) {
  ShotResult result;
  result.frames.resize(errors.size());
  for (std::size_t i = 0; i < errors.size(); ++i) {
    FrameResult& frame = result.frames[i];
    frame.frame = 100 + static_cast<int>(i);
    frame.verdict.status = i == 0 ? Status::Base : Status::Solved;
    frame.expectedError = errors[i];
    frame.goodRms = 0.12345;
  }
  return result;
}

}  // namespace

TEST(ShotFigures, HaveTheWorstFrame) {
  ShotResult result = shotWith({0.0, 1.23456, 0.5, kNan});
  result.frames[3].verdict.status = Status::Held;
  result.frames[3].doubts = {{}};
  result.frames[2].verdict.status = Status::Reduced;
  const ShotFigures figures = figuresOf(result);
  EXPECT_EQ(figures.first, 100);
  EXPECT_EQ(figures.last, 103);
  EXPECT_EQ(figures.frames, 4u);
  EXPECT_EQ(figures.doubtful, 1u);
  EXPECT_EQ(figures.reduced, 1u);
  EXPECT_EQ(figures.held, 1u);
  EXPECT_EQ(figures.worst, 1.23);
  EXPECT_EQ(figures.worstFrame, 101);
  EXPECT_EQ(figures.rms, 0.123);
  EXPECT_EQ(figures.text, closingSentence(result));
  ASSERT_EQ(figures.line.size(), 4u);
  EXPECT_EQ(figures.line[1], 1.23);
  EXPECT_TRUE(std::isnan(figures.line[3]));
}

TEST(ShotFigures, KnowNothingWhereNoFrameDoes) {
  const ShotFigures figures = figuresOf(shotWith({kNan, kNan}));
  EXPECT_TRUE(std::isnan(figures.worst));
  EXPECT_EQ(figures.worstFrame, std::nullopt);
}

TEST(ShotFigures, DrawAtMostSixtyValuesEachTheLargestOfItsFrames) {
  std::vector<double> errors(121, 0.25);
  errors[0] = 4.0;
  errors[120] = 8.0;
  const std::vector<double> line = figuresOf(shotWith(errors)).line;
  ASSERT_EQ(line.size(), 60u);
  EXPECT_EQ(line.front(), 4.0);
  EXPECT_EQ(line.back(), 8.0);
  for (std::size_t i = 1; i < 59; ++i) EXPECT_EQ(line[i], 0.25) << i;
}

TEST(ShotFigures, AreReadAsTheyWereWritten) {
  ShotResult result = shotWith({0.0, kNan, 3.5});
  const std::string text = figuresJson(figuresOf(result)).dump();
  const auto json = nlohmann::json::parse(text);
  const std::string file = "a.json";
  EXPECT_EQ(figuresJson(figuresIn(JsonField(json, file))).dump(), text);
}
