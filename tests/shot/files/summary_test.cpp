// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/summary.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "shot/advice/closing_words.h"

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
  if (status == Status::Held) f.texts = std::make_shared<FrameTexts>(FrameTexts{"", "no tracks"});
  return f;
}

void setDeviations(FrameResult& f, const std::array<double, 4>& deviations) {
  f.figures.quads.resize(1);
  for (std::size_t i = 0; i < 4; ++i) f.figures.quads[0][i].xx = deviations[i] * deviations[i];
}

std::string tableOf(const ShotResult& result, bool verbose = false) {
  return summaryTable(result, {verbose, false, ""});
}

// The lines of the table that begin with a label, and those without one that follow it.
std::string rowsOf(const std::string& table, const std::string& label) {
  std::istringstream lines(table);
  std::string rows;
  bool taken = false;
  for (std::string line; std::getline(lines, line);) {
    const bool labelled = !line.empty() && line.front() != ' ';
    taken = labelled ? line.rfind(label + " ", 0) == 0 : taken && !line.empty();
    if (taken) rows += line + "\n";
  }
  return rows;
}

const NamedQuad kSquare = {"tracks", {{{0, 0}, {100, 0}, {100, 100}, {0, 100}}}};

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
  EXPECT_NE(tableOf(result, true).find("...  and 15 more\n"), std::string::npos);
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

TEST(SummaryTable, SpeaksOfBaseSolvedAndHeldFrames) {
  ShotResult result;
  result.baseFrame = result.referenceFrame = 12;
  result.baseTracks = 9;
  result.leftOut = 3;
  result.whyBase = "for a reason";
  result.frames = {frame(12, Status::Base, 0.0), frame(13, Status::Held, 0.0)};
  result.quads = {kSquare};
  EXPECT_EQ(tableOf(result),
            "base frame    12  (9 tracks)\n"
            "solved        1 of 2 frames, 1 held: their neighbour's transform\n"
            "corners       nothing tells how far those may be off, in 1 frame\n"
            "\n"
            "Good: both frames.\n");
  EXPECT_EQ(tableOf(result, true),
            "base frame    12  (9 tracks)\n"
            "chosen        for a reason\n"
            "left out      3 tracks take part nowhere\n"
            "solved        1 of 2 frames, 1 held: their neighbour's transform\n"
            "corners       nothing tells how far those may be off, in 1 frame\n"
            "not in full   frame  model        reason\n"
            "                 13  held         no tracks\n"
            "\n"
            "Good: both frames.\n");
}

TEST(SummaryTable, CountsTracksThatAreLeftOutByReason) {
  ShotResult result;
  result.leftOut = 3;
  result.unused = {{{"a", Unused::Dropped}, {"b", Unused::NoWeight}, {"c", Unused::Dropped}}};
  result.frames = {frame(0, Status::Base, 0.0)};
  result.quads = {kSquare};
  const std::string table = tableOf(result, true);
  EXPECT_NE(table.find("left out      3 tracks: 1 of weight 0, 2 dropped\n"), std::string::npos)
      << table;
}

TEST(SummaryTable, WritesNumbersOfAnySize) {
  ShotResult result;
  result.frames = {frame(1, Status::Base, 0.0), frame(2, Status::Solved, 3e30),
                   frame(3, Status::Solved, 0.000123456), frame(4, Status::Solved, 12345.67891),
                   frame(5, Status::Solved, std::nan(""))};
  EXPECT_EQ(rowsOf(tableOf(result, true), "worst frames"),
            "worst frames  frame       RMS  tracks\n"
            "                  5         -       9\n"
            "                  2  3e+30 px       9\n"
            "                  4  12346 px       9\n"
            "                  3 0.000123 px       9\n");
  EXPECT_EQ(rowsOf(tableOf(result), "residual"),
            "residual      median 3e+30 px, worst - in frame 5 (RMS)\n");
}

// Each frame by the largest of its four figures; of four frames the lower of the middle two counts.
TEST(SummaryTable, SaysHowFarCornersMayBeOffInTheMedianAndTheWorstFrame) {
  ShotResult result;
  for (int f = 0; f < 6; ++f) result.frames.push_back(frame(f, Status::Solved, 0.5));
  result.quads = {kSquare};
  setDeviations(result.frames[0], {0.0, 0.0, 0.0, 0.0});
  setDeviations(result.frames[1], {2.0, 3.0, 1.0, 0.5});
  setDeviations(result.frames[2], {0.5, 1.0, 0.5, 9.0});
  setDeviations(result.frames[3], {4.0, 0.5, 0.5, 0.5});
  setDeviations(result.frames[4], {20.0, 0.5, std::nan(""), 0.5});
  setDeviations(result.frames[5], {0.25, 0.5, 0.25, 0.25});
  EXPECT_EQ(rowsOf(tableOf(result), "corners"),
            "corners       may be off by median 3 px, worst 9 px in frame 2, the bottom left "
            "corner; no figure in 1 frame\n");
}

TEST(SummaryTable, DrawsHowFarCornersMayBeOffOverTheFrames) {
  ShotResult result;
  for (int f = 0; f < 5; ++f) result.frames.push_back(frame(10 + f, Status::Solved, 0.5));
  for (std::size_t f : {1u, 2u, 3u}) result.frames[f].expectedError = 4.0 * static_cast<double>(f);
  result.frames[0].expectedError = 0.0;
  result.quads = {kSquare};
  for (FrameResult& f : result.frames) setDeviations(f, {1.0, 1.0, 1.0, 1.0});
  EXPECT_NE(tableOf(result).find("\n              ▁▃▆█x  frames 10-14, up to 12 px\n"),
            std::string::npos)
      << tableOf(result);
}

TEST(SummaryTable, SpeaksOfReducedFramesAndOfTheWorstTracks) {
  ShotResult result;
  result.frames = {frame(1, Status::Base, 0.0), frame(2, Status::Solved, 0.5),
                   frame(3, Status::Reduced, 0.25)};
  result.frames[2].verdict.model = Model::Affine;
  result.frames[2].texts = std::make_shared<FrameTexts>(FrameTexts{"", "3 of the 4 tracks needed"});
  result.worst = {{"t042", {7, 60, 81, 70, 9.3, 12.5, true}},
                  {"b", {1, 5, 5, 5, 0.25, 7.0, true}},
                  {"ordinary", {2, 6, 7, 6, 99.0, 2.0, false}}};
  EXPECT_EQ(summarise(result).reduced, 1u);
  EXPECT_EQ(rowsOf(tableOf(result), "solved"),
            "solved        2 of 3 frames, 1 reduced to a simpler transform\n");
  EXPECT_EQ(rowsOf(tableOf(result), "worst tracks"),
            "worst tracks  t042, frames 60-81: without it the worst corner moves 9.3 px\n"
            "              b, frame 5: without it the worst corner moves 0.25 px\n");
  EXPECT_EQ(rowsOf(tableOf(result, true), "not in full"),
            "not in full   frame  model        reason\n"
            "                  3  affine       3 of the 4 tracks needed\n");
}

TEST(SummaryTable, SpeaksOfTheGoodTracksOfARobustSolve) {
  ShotResult result;
  result.loss = Loss::Tukey;
  result.seed = 7;
  result.frames.push_back(frame(0, Status::Base, 0.0));
  for (int f : {1, 2, 3}) result.frames.push_back(frame(f, Status::Solved, 0.25));
  result.frames[2].good = 6;
  result.frames[2].goodRms = 0.5;
  result.frames[2].verdict.origin.stage = Stage::Sampled;
  result.frames[3].verdict.origin.stage = Stage::Neighbour;
  EXPECT_EQ(tableOf(result, true),
            "base frame    0  (0 tracks)\n"
            "solved        4 of 4 frames\n"
            "good tracks   median 100 %, fewest 67 % in frame 2\n"
            "started from  the plain fit 1, the neighbour 1, random samples 1 (seed 7)\n"
            "residual      median 0.25 px, worst 0.5 px in frame 2 (RMS of the good tracks)\n"
            "worst frames  frame       RMS  tracks\n"
            "                  2    0.5 px       9, 6 of them good\n"
            "                  1   0.25 px       9\n"
            "                  3   0.25 px       9\n"
            "\n"
            "Good: all 4 frames.\n");
}

TEST(SummaryTable, SaysWhereAllTracksAreGood) {
  ShotResult result;
  result.loss = Loss::Tukey;
  result.frames.push_back(frame(0, Status::Base, 0.0));
  for (int f : {1, 2}) result.frames.push_back(frame(f, Status::Solved, 0.25));
  EXPECT_NE(tableOf(result, false).find("\ngood tracks   all of them, in every solved frame\n"),
            std::string::npos);
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
  EXPECT_EQ(rowsOf(tableOf(result, true), "hand-over"),
            "hand-over     7 tracks that the base frame lacks, in 3 frames; 1 of these have fewer "
            "than 4 others\n");
  EXPECT_EQ(rowsOf(tableOf(result), "hand-over"), "");
  result.handedOver = 0;
  EXPECT_EQ(rowsOf(tableOf(result, true), "hand-over"), "");
}

TEST(SummaryTable, SaysOfEachQuadHowFarItMayBeOffAndNamesTheReferenceFrame) {
  ShotResult result;
  result.baseFrame = 1;
  result.referenceFrame = 3;
  result.quads = {{"door", kSquare.corners}, {"sign", kSquare.corners}};
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
  const std::string table = tableOf(result);
  EXPECT_EQ(rowsOf(table, "reference"), "reference     3\n");
  EXPECT_EQ(rowsOf(table, "corners"),
            "corners       of \"door\" may be off by median 2 px, worst 3 px in frame 2, the top "
            "left corner\n"
            "              of \"sign\" may be off by median 0.5 px, worst 1 px in frame 4, the top "
            "left corner\n");
}

// Frame 3 has the largest expected error, frame 9 none that could be told.
TEST(SummaryTable, ListsTheDoubtsWhereAskedForMore) {
  ShotResult result;
  for (int i = 0; i < 20; ++i) {
    result.frames.push_back(frame(i, i == 5 ? Status::Base : Status::Solved, 1.0));
    result.frames.back().expectedError = 1.0;
  }
  EXPECT_EQ(doubtfulFramesLine(result), "");
  for (std::size_t f : {2u, 3u, 4u}) {
    result.frames[f].doubts = {{DoubtCode::ExpectedError, "of " + std::to_string(f)}};
  }
  result.frames[3].expectedError = 12.0;
  result.frames[8].doubts = {{DoubtCode::NothingToCheck, "first"}};
  result.frames[9].doubts = {{DoubtCode::NoFigures, "none"}, {DoubtCode::NothingToCheck, "second"}};
  result.frames[9].expectedError = std::nan("");
  result.frames[10].doubts = {{DoubtCode::NothingToCheck, "third"}};
  EXPECT_EQ(summarise(result).doubtful, 6u);
  EXPECT_EQ(doubtfulFramesLine(result), "6 of 20 frames are doubtful: 2-4, 8-10");
  EXPECT_EQ(rowsOf(tableOf(result), "doubts"), "");
  EXPECT_EQ(rowsOf(tableOf(result, true), "doubts"),
            "doubts        frames, and the worst of them\n"
            "  expected-error       3  frame 3: of 3\n"
            "  no-figures           1  frame 9: none\n"
            "  nothing-to-check     3  frame 9: second\n");
}

TEST(DoubtfulFramesLine, NamesNoMoreThanFiveStretches) {
  ShotResult result;
  for (int i = 0; i < 14; ++i) {
    result.frames.push_back(frame(i, Status::Solved, 1.0));
    if (i % 3 != 2) result.frames.back().doubts = {{DoubtCode::Jump, "j"}};
  }
  EXPECT_EQ(doubtfulFramesLine(result), "10 of 14 frames are doubtful: 0-1, 3-4, 6-7, 9-10, 12-13");
  for (int i : {16, 17}) {
    result.frames.push_back(result.frames[12]);
    result.frames.back().frame = i;
  }
  EXPECT_EQ(doubtfulFramesLine(result),
            "12 of 16 frames are doubtful: 0-1, 3-4, 6-7, 9-10, 12-13 and 2 more frames");
  result.frames = {result.frames[0]};
  EXPECT_EQ(doubtfulFramesLine(result), "1 of 1 frame is doubtful: 0");
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
  for (const char* label : {"smoothed", "filled in", "between"}) {
    EXPECT_EQ(rowsOf(tableOf(result), label), "");
  }
  result.smooth = 1.0;
  result.fill = true;
  result.between = {{0.5, kIdentity}, {1.5, kIdentity}};
  EXPECT_EQ(rowsOf(tableOf(result), "smoothed"),
            "smoothed      corners moved by median 0.25 px, most 0.75 px in frame 2\n");
  EXPECT_EQ(rowsOf(tableOf(result), "filled in"),
            "filled in     1 of 2 reduced or held frames, the others are surer as they are, lack "
            "good frames on both sides or contradict them\n");
  EXPECT_EQ(rowsOf(tableOf(result), "between"), "between       2 more transforms\n");
  result.frames[5].filled = true;
  for (FrameResult& f : result.frames) f.smoothed = 0.0;
  EXPECT_EQ(rowsOf(tableOf(result), "smoothed"), "smoothed      no corner moved\n");
  EXPECT_EQ(rowsOf(tableOf(result), "filled in"), "filled in     2 of 2 reduced or held frames\n");
}

// The sentence that decides is the last thing that is read.
TEST(SummaryTable, EndsInTheClosingWordsBehindWhatWasWritten) {
  ShotResult result;
  result.quads = {kSquare};
  result.frames = {frame(1, Status::Base, 0.0), frame(2, Status::Solved, 1.0)};
  for (FrameResult& f : result.frames) setDeviations(f, {1, 1, 1, 1});
  const std::string table = summaryTable(result, {false, false, "written  a.json\n"});
  const std::string end = "written  a.json\n\n" + closingWords(result, false);
  ASSERT_GT(table.size(), end.size());
  EXPECT_EQ(table.substr(table.size() - end.size()), end);
}
