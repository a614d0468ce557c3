// SPDX-License-Identifier: BSD-3-Clause
#include "shot/summary.h"

#include <gtest/gtest.h>

using namespace cornerpin;

namespace {

FrameResult frame(int number, Status status, double rms) {
  FrameResult f;
  f.frame = number;
  f.status = status;
  f.rms = rms;
  f.tracks = 9;
  if (status == Status::Held) f.reason = "no tracks";
  return f;
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
  EXPECT_EQ(s.firstHeld[0]->frame, 4);
}

TEST(Summary, ListsNoMoreThanFiveFramesOfAKind) {
  ShotResult result;
  for (int i = 0; i < 20; ++i) result.frames.push_back(frame(i, Status::Solved, i));
  for (int i = 20; i < 40; ++i) result.frames.push_back(frame(i, Status::Held, i));
  EXPECT_EQ(summarise(result).worst.size(), 5u);
  EXPECT_EQ(summarise(result).firstHeld.size(), 5u);
  EXPECT_NE(summaryTable(result).find("and 15 more"), std::string::npos);
}

TEST(Summary, SpeaksOfBaseLeftOutAndHeldFrames) {
  ShotResult result;
  result.baseFrame = 12;
  result.baseTracks = 9;
  result.leftOut = 3;
  result.frames = {frame(12, Status::Base, 0.0), frame(13, Status::Held, 0.0)};
  EXPECT_EQ(summaryTable(result),
            "base frame    12  (9 tracks, 3 absent there and left out)\n"
            "solved        1 of 2 frames\n"
            "held          1\n"
            "RMS residual  median -, worst -\n"
            "held frames   frame  reason\n"
            "                 13  no tracks\n");
}
