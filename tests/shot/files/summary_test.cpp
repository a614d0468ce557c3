// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/summary.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace cornerpin;

namespace {

FrameResult frame(int number, Status status, double rms) {
  FrameResult f;
  f.frame = number;
  f.verdict.status = status;
  f.rms = 2.0 * rms;
  f.goodRms = rms;
  f.tracks = 9;
  f.good = 9;
  if (status == Status::Held) f.reason = "no tracks";
  return f;
}

void setDeviations(FrameResult& f, const std::array<double, 4>& deviations) {
  f.figures.quads.resize(1);
  for (std::size_t i = 0; i < 4; ++i) f.figures.quads[0][i].xx = deviations[i] * deviations[i];
}

}  // namespace

TEST(Summary, TakesItsFiguresFromTheSolvedFrames) {
  ShotResult result;
  result.frames = {frame(1, Status::Solved, 3.0), frame(2, Status::Base, 0.0),
                   frame(3, Status::Solved, 1.0), frame(4, Status::Held, 99.0),
                   frame(5, Status::Solved, 2.0)};
  const Summary s = summarise(result);
  EXPECT_EQ(s.solved, 3u);
  EXPECT_EQ(s.held, 1u);
  EXPECT_EQ(s.medianRms, 2.0);
  EXPECT_EQ(s.worstRms, 3.0);
  ASSERT_EQ(s.worst.size(), 3u);
  EXPECT_EQ(s.worst[0]->frame, 1);
  EXPECT_EQ(s.worst[1]->frame, 5);
  EXPECT_EQ(s.firstUnsolved[0]->frame, 4);
}

TEST(Summary, ListsNoMoreThanFiveFramesOfAKind) {
  ShotResult result;
  for (int i = 0; i < 20; ++i) result.frames.push_back(frame(i, Status::Solved, i));
  for (int i = 20; i < 40; ++i) result.frames.push_back(frame(i, Status::Held, i));
  EXPECT_EQ(summarise(result).worst.size(), 5u);
  EXPECT_EQ(summarise(result).firstUnsolved.size(), 5u);
  EXPECT_NE(summaryTable(result).find("and 15 more"), std::string::npos);
}

TEST(Summary, TakesAnRmsBeyondNumbersForTheWorst) {
  ShotResult result;
  for (int i = 0; i < 9; ++i) {
    result.frames.push_back(frame(i, Status::Solved, i % 3 == 1 ? std::nan("") : 9.0 - i));
  }
  const Summary s = summarise(result);
  EXPECT_EQ(s.worst[0]->frame, 1);
  EXPECT_EQ(s.worst[2]->frame, 7);
  EXPECT_EQ(s.worst[3]->frame, 0);
  EXPECT_EQ(s.worst[4]->frame, 2);
  EXPECT_EQ(s.medianRms, 7.0);
}

TEST(Summary, SpeaksOfBaseLeftOutAndHeldFrames) {
  ShotResult result;
  result.baseFrame = result.referenceFrame = 12;
  result.baseTracks = 9;
  result.leftOut = 3;
  result.frames = {frame(12, Status::Base, 0.0), frame(13, Status::Held, 0.0)};
  result.quads = {{"tracks", {}}};
  EXPECT_EQ(summaryTable(result),
            "base frame    12  (9 tracks, 3 left out)\n"
            "solved        1 of 2 frames\n"
            "reduced       0\n"
            "held          1\n"
            "good          2 of 2 frames\n"
            "RMS residual  median -, worst -\n"
            "corner noise  no figure in any of 1 frame\n"
            "not in full   frame  model        reason\n"
            "                 13  held         no tracks\n");
}

TEST(Summary, CountsTracksThatAreLeftOutByReason) {
  ShotResult result;
  result.baseFrame = result.referenceFrame = 12;
  result.baseTracks = 9;
  result.leftOut = 3;
  result.unused = {{{"a", Unused::Dropped}, {"b", Unused::NoWeight}, {"c", Unused::Dropped}}};
  result.frames = {frame(12, Status::Base, 0.0)};
  EXPECT_EQ(summaryTable(result).rfind(
                "base frame    12  (9 tracks, left out: 1 of weight 0, 2 dropped)\n", 0),
            0u);
}

TEST(Summary, SaysWhyTheBaseFrameWasChosen) {
  ShotResult result;
  result.baseFrame = result.referenceFrame = 12;
  result.baseTracks = 9;
  result.leftOut = 1;
  result.whyBase = "for a reason";
  result.frames = {frame(12, Status::Base, 0.0)};
  const std::string table = summaryTable(result);
  EXPECT_EQ(table.find("base frame    12  (9 tracks, 1 left out)\n"
                       "chosen        for a reason\n"
                       "solved        1 of 1 frames\n"),
            0u)
      << table;
}

TEST(Summary, WritesNumbersOfAnySize) {
  ShotResult result;
  result.referenceFrame = result.baseFrame = 1;
  result.frames = {frame(1, Status::Base, 0.0),           frame(2, Status::Solved, 3e30),
                   frame(3, Status::Solved, 0.000123456), frame(4, Status::Solved, 12345.67891),
                   frame(5, Status::Solved, 0.0),         frame(6, Status::Solved, std::nan(""))};
  result.quads = {{"tracks", {}}};
  setDeviations(result.frames[1], {HUGE_VAL, HUGE_VAL, HUGE_VAL, HUGE_VAL});
  setDeviations(result.frames[2], {2.5e-7, 2.5e-7, 2.5e-7, 2.5e-7});
  const std::string table = summaryTable(result);
  EXPECT_NE(table.find("  2    3e+30       9\n"), std::string::npos) << table;
  EXPECT_NE(table.find("  3 0.000123       9\n"), std::string::npos) << table;
  EXPECT_NE(table.find("  4 12345.6789       9\n"), std::string::npos) << table;
  EXPECT_NE(table.find("  5   0.0000       9\n"), std::string::npos) << table;
  EXPECT_NE(table.find("  6        -       9\n"), std::string::npos) << table;
  EXPECT_EQ(table.find("inf"), std::string::npos) << table;
  EXPECT_NE(table.find("worst 2.5e-07 in frame 3, no figure in 4 frames\n"), std::string::npos)
      << table;
}

// Each frame by the largest of its four figures; of four frames the lower of the middle two counts.
TEST(Summary, GivesTheMedianAndTheWorstNoiseOfTheCorners) {
  ShotResult result;
  for (int f = 0; f < 6; ++f) result.frames.push_back(frame(f, Status::Solved, 0.5));
  result.frames[0].verdict.status = Status::Base;
  result.quads = {{"tracks", {}}};
  setDeviations(result.frames[0], {0.0, 0.0, 0.0, 0.0});
  setDeviations(result.frames[1], {2.0, 3.0, 1.0, 0.5});
  setDeviations(result.frames[2], {0.5, 1.0, 0.5, 9.0});
  setDeviations(result.frames[3], {4.0, 0.5, 0.5, 0.5});
  setDeviations(result.frames[4], {20.0, 0.5, std::nan(""), 0.5});
  setDeviations(result.frames[5], {0.25, 0.5, 0.25, 0.25});
  const std::string table = summaryTable(result);
  EXPECT_NE(
      table.find("corner noise  median 3.0000, worst 9.0000 in frame 2, no figure in 1 frame\n"),
      std::string::npos)
      << table;
}

TEST(Summary, WritesFourDecimalsFromAThousandthToAHundredThousand) {
  const auto shown = [](double rms) {
    ShotResult result;
    result.frames = {frame(1, Status::Solved, rms)};
    const std::string table = summaryTable(result);
    const std::size_t start = table.find("median ") + 7;
    return table.substr(start, table.find(',', start) - start);
  };
  EXPECT_EQ(shown(0.001), "0.0010");
  EXPECT_EQ(shown(0.000999), "0.000999");
  EXPECT_EQ(shown(99999.5), "99999.5000");
  EXPECT_EQ(shown(1e5), "1e+05");
}

TEST(Summary, SpeaksOfReducedFramesOfNoiseAndOfTheWorstTracks) {
  ShotResult result;
  result.referenceFrame = result.baseFrame = 1;
  result.frames = {frame(1, Status::Base, 0.0), frame(2, Status::Solved, 0.5),
                   frame(3, Status::Reduced, 0.25)};
  result.frames[2].verdict.model = Model::Affine;
  result.frames[2].reason = "3 of the 4 tracks needed";
  result.quads = {{"tracks", {}}};
  setDeviations(result.frames[1], {0.125, 0.5, 0.25, 0.125});
  setDeviations(result.frames[2], {std::nan(""), std::nan(""), std::nan(""), std::nan("")});
  result.worst = {{"t042", {7, 60, 81, 70, 9.3, 12.5, true}},
                  {"b", {1, 5, 5, 5, 0.25, 7.0, true}},
                  {"ordinary", {2, 6, 7, 6, 99.0, 2.0, false}}};
  EXPECT_EQ(summarise(result).reduced, 1u);
  const std::string table = summaryTable(result);
  EXPECT_NE(table.find("solved        2 of 3 frames\n"
                       "reduced       1\n"
                       "held          0\n"
                       "good          3 of 3 frames\n"
                       "RMS residual  median 0.5000, worst 0.5000\n"
                       "corner noise  median 0.5000, worst 0.5000 in frame 2, no figure in 1 "
                       "frame\n"),
            std::string::npos)
      << table;
  EXPECT_NE(
      table.find("worst tracks  t042, frames 60-81: without it the worst corner moves 9.3 px\n"
                 "              b, frame 5: without it the worst corner moves 0.25 px\n"
                 "not in full   frame  model        reason\n"
                 "                  3  affine       3 of the 4 tracks needed\n"),
      std::string::npos)
      << table;
}

TEST(Summary, SpeaksOfTheGoodTracksOfARobustSolve) {
  ShotResult result;
  result.loss = Loss::Tukey;
  result.seed = 7;
  result.frames.push_back(frame(0, Status::Base, 0.0));
  for (int f : {1, 2, 3}) result.frames.push_back(frame(f, Status::Solved, 0.25));
  result.frames[2].good = 6;
  result.frames[2].goodRms = 0.5;
  result.frames[2].verdict.origin.stage = Stage::Sampled;
  result.frames[3].verdict.origin.stage = Stage::Neighbour;
  EXPECT_EQ(summaryTable(result),
            "base frame    0  (0 tracks, none left out)\n"
            "solved        4 of 4 frames\n"
            "reduced       0\n"
            "held          0\n"
            "good          4 of 4 frames\n"
            "good tracks   median 100 %, fewest 67 % in frame 2\n"
            "started from  the library's fit 1, the neighbour 1, samples 1 (seed 7)\n"
            "RMS residual  median 0.2500, worst 0.5000 of the good tracks\n"
            "worst frames  frame      RMS  tracks\n"
            "                  2   0.5000       9, 6 of them good\n"
            "                  1   0.2500       9\n"
            "                  3   0.2500       9\n");
}

// Frame 3 has no more than three tracks without those handed over, frame 4 no more than three at
// all.
TEST(SummaryTable, SaysWhatTheHandOverIsGoodFor) {
  ShotResult result;
  result.handedOver = 7;
  for (int i = 1; i <= 4; ++i) result.frames.push_back(frame(i, Status::Solved, 1.0));
  result.frames[1].handedOver = 5;
  result.frames[2].handedOver = 6;
  result.frames[3].tracks = 3;
  result.frames[3].handedOver = 3;
  EXPECT_NE(summaryTable(result).find("\nhand-over     7 tracks that the base frame lacks, in 3 "
                                      "frames; 1 of these have fewer than 4 others\n"),
            std::string::npos);
  result.handedOver = 0;
  EXPECT_EQ(summaryTable(result).find("hand-over"), std::string::npos);
}

TEST(Summary, GivesTheNoiseOfEachQuadAndNamesTheReferenceFrame) {
  ShotResult result;
  result.baseFrame = 1;
  result.referenceFrame = 3;
  result.quads = {{"door", {}}, {"sign", {}}};
  result.frames = {frame(1, Status::Base, 0.0), frame(2, Status::Solved, 0.5),
                   frame(3, Status::Solved, 0.5), frame(4, Status::Solved, 0.5)};
  for (FrameResult& f : result.frames) f.figures.quads.resize(2);
  for (std::size_t q : {0u, 1u}) {
    for (std::size_t i = 0; i < 4; ++i) {
      result.frames[0].figures.quads[q][i].xx = q == 0 ? 4.0 : 0.25;
      result.frames[1].figures.quads[q][i].xx = q == 0 ? 9.0 : 0.0625;
      result.frames[3].figures.quads[q][i].xx = 1.0;
    }
  }
  const std::string table = summaryTable(result);
  EXPECT_NE(table.find("none left out)\nreference     3\nsolved        4 of 4 frames\n"),
            std::string::npos)
      << table;
  EXPECT_NE(table.find("corner noise  median 2.0000, worst 3.0000 in frame 2 of door\n"
                       "corner noise  median 0.5000, worst 1.0000 in frame 4 of sign\n"),
            std::string::npos)
      << table;
}

// Frame 3 has the largest expected error, frame 9 none that could be told.
TEST(Summary, SaysWhichFramesAreDoubtfulAndWhy) {
  ShotResult result;
  for (int i = 0; i < 20; ++i) {
    result.frames.push_back(frame(i, i == 5 ? Status::Base : Status::Solved, 1.0));
    result.frames.back().expectedError = 1.0;
  }
  EXPECT_NE(summaryTable(result).find("held          0\ngood          20 of 20 frames\nRMS"),
            std::string::npos);
  EXPECT_EQ(doubtfulFrames(result), "");
  for (std::size_t f : {2u, 3u, 4u}) {
    result.frames[f].doubts = {{DoubtCode::ExpectedError, "of " + std::to_string(f)}};
  }
  result.frames[3].expectedError = 12.0;
  result.frames[8].doubts = {{DoubtCode::NothingToCheck, "first"}};
  result.frames[9].doubts = {{DoubtCode::NoFigures, "none"}, {DoubtCode::NothingToCheck, "second"}};
  result.frames[9].expectedError = std::nan("");
  result.frames[10].doubts = {{DoubtCode::NothingToCheck, "third"}};
  EXPECT_EQ(summarise(result).doubtful, 6u);
  EXPECT_EQ(doubtfulFrames(result), "6 of 20 frames are doubtful: 2-4, 8-10");
  EXPECT_NE(summaryTable(result).find("good          14 of 20 frames\n"
                                      "doubtful      6: 2-4, 8-10\n"
                                      "  expected-error       3  frame 3: of 3\n"
                                      "  no-figures           1  frame 9: none\n"
                                      "  nothing-to-check     3  frame 9: second\n"
                                      "RMS residual"),
            std::string::npos)
      << summaryTable(result);
}

TEST(Summary, NamesNoMoreThanFiveStretchesOfDoubtfulFrames) {
  ShotResult result;
  for (int i = 0; i < 20; ++i) {
    result.frames.push_back(frame(i, Status::Solved, 1.0));
    if (i % 3 != 2) result.frames.back().doubts = {{DoubtCode::Jump, "j"}};
  }
  result.frames.resize(14);
  EXPECT_EQ(doubtfulFrames(result), "10 of 14 frames are doubtful: 0-1, 3-4, 6-7, 9-10, 12-13");
  result.frames.push_back(result.frames[12]);
  result.frames.back().frame = 16;
  result.frames.push_back(result.frames[12]);
  result.frames.back().frame = 17;
  EXPECT_EQ(doubtfulFrames(result),
            "12 of 16 frames are doubtful: 0-1, 3-4, 6-7, 9-10, 12-13 and 2 more");
}

TEST(SummaryTable, SaysWhatWasDoneToTransforms) {
  ShotResult result;
  for (int f = 0; f < 6; ++f) result.frames.push_back(frame(f, Status::Solved, 0.5));
  result.frames[0].verdict.status = Status::Base;
  result.frames[4].verdict.status = Status::Held;
  result.frames[5].verdict.status = Status::Reduced;
  result.frames[1].smoothed = 0.25;
  result.frames[2].smoothed = 0.75;
  result.frames[4].filled = true;
  EXPECT_EQ(summaryTable(result).find("smoothed"), std::string::npos);
  EXPECT_EQ(summaryTable(result).find("filled in"), std::string::npos);
  EXPECT_EQ(summaryTable(result).find("between"), std::string::npos);
  result.smooth = 1.0;
  result.fill = true;
  result.between = {{0.5, kIdentity}, {1.5, kIdentity}};
  const std::string table = summaryTable(result);
  EXPECT_NE(table.find("\nsmoothed      corners moved by median 0.2500, most 0.7500 in frame 2\n"
                       "filled in     1 of 2 reduced or held frames, the others are surer as they "
                       "are, lack good "
                       "frames on both sides or contradict them\n"
                       "between       2 more transforms\n"),
            std::string::npos)
      << table;
  result.frames[5].filled = true;
  for (FrameResult& f : result.frames) f.smoothed = 0.0;
  EXPECT_NE(summaryTable(result).find("\nsmoothed      no corner moved\n"
                                      "filled in     2 of 2 reduced or held frames\n"),
            std::string::npos);
}
