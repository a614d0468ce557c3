// SPDX-License-Identifier: BSD-3-Clause
#include "show/shot_figures.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/support/files.h"
#include "tests/support/small_shot.h"

using namespace cornerpin;

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

// Frames from 100 on, solved but for the first, with these expected errors.
std::vector<shot::Frame> framesWith(const std::vector<double>& errors) {
  std::vector<shot::Frame> frames(errors.size());
  for (std::size_t i = 0; i < errors.size(); ++i) {
    frames[i].frame = 100 + static_cast<int>(i);
    frames[i].status = i == 0 ? "base" : "solved";
    frames[i].expectedError = errors[i];
    frames[i].goodRms = 0.12345;
  }
  return frames;
}

}  // namespace

TEST(ShotFigures, HaveTheWorstFrame) {
  std::vector<shot::Frame> frames = framesWith({0.0, 1.23456, 0.5, kNan});
  frames[3].status = "held";
  frames[3].isDoubtful = true;
  frames[2].status = "reduced";
  const ShotFigures figures = figuresOf(frames);
  EXPECT_EQ(figures.first, 100);
  EXPECT_EQ(figures.last, 103);
  EXPECT_EQ(figures.frames, 4u);
  EXPECT_EQ(figures.doubtful, 1u);
  EXPECT_EQ(figures.reduced, 1u);
  EXPECT_EQ(figures.held, 1u);
  EXPECT_EQ(figures.worst, 1.23);
  EXPECT_EQ(figures.worstFrame, 101);
  EXPECT_EQ(figures.rms, 0.123);
  ASSERT_EQ(figures.line.size(), 4u);
  EXPECT_EQ(figures.line[1], 1.23);
  EXPECT_TRUE(std::isnan(figures.line[3]));
}

TEST(ShotFigures, KnowNothingWhereNoFrameDoes) {
  const ShotFigures figures = figuresOf(framesWith({kNan, kNan}));
  EXPECT_TRUE(std::isnan(figures.worst));
  EXPECT_EQ(figures.worstFrame, std::nullopt);
}

TEST(ShotFigures, DrawAtMostSixtyValuesEachTheLargestOfItsFrames) {
  std::vector<double> errors(121, 0.25);
  errors[0] = 4.0;
  errors[120] = 8.0;
  const std::vector<double> line = figuresOf(framesWith(errors)).line;
  ASSERT_EQ(line.size(), 60u);
  EXPECT_EQ(line.front(), 4.0);
  EXPECT_EQ(line.back(), 8.0);
  for (std::size_t i = 1; i < 59; ++i) EXPECT_EQ(line[i], 0.25) << i;
}

TEST(ShotFigures, AreReadAsTheyWereWritten) {
  const TemporaryFolder folder;
  const std::string text = figuresJson(figuresOf(framesWith({0.0, kNan, 3.5}))).dump();
  writeFile(folder / "a.json", text);
  const LinedJsonFile file(folder / "a.json");
  EXPECT_EQ(figuresJson(figuresIn(file.whole())).dump(), text);
}

TEST(ShotFigures, HaveTheResidualOfTheMedianSolvedFrame) {
  std::vector<shot::Frame> frames = framesWith({0, 0, 0, 0, 0});
  for (std::size_t i = 0; i < frames.size(); ++i) frames[i].goodRms = static_cast<double>(i);
  EXPECT_EQ(figuresOf(frames).rms, 3.0);  // of 1, 2, 3 and 4 the upper of the two in the middle
  frames[4].goodRms = kNan;
  EXPECT_EQ(figuresOf(frames).rms, 3.0);
  frames[3].goodRms = kNan;
  EXPECT_TRUE(std::isnan(figuresOf(frames).rms));
  EXPECT_TRUE(std::isnan(figuresOf(framesWith({0.0})).rms));
}

TEST(ShotFigures, AreThoseOfAResult) {
  const TemporaryFolder folder;
  writeFile(folder / "a.csv", smallShot(2));
  const shot::Result result = shot::solve(shot::readTracks(folder / "a.csv"));
  const ShotFigures figures = figuresOf(result);
  EXPECT_EQ(figures.frames, 3u);
  EXPECT_EQ(figures.last, 2);
  EXPECT_EQ(figures.text, result.closingSentence());
}
