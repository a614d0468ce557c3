// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/result.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace cornerpin;

TEST(Describe, SpeaksOfOneFrameOrOfSeveral) {
  EXPECT_EQ(describe({"t042", {0, 60, 81, 70, 9.31}}),
            "t042, frames 60-81: without it the worst corner moves 9.3 px");
  EXPECT_EQ(describe({"b", {0, 5, 5, 5, 120.4}}),
            "b, frame 5: without it the worst corner moves 120 px");
}

TEST(Describe, GivesTwoDigitsAndNoMoreThanWholePixels) {
  const auto moves = [](double pixels) {
    const std::string text = describe({"a", {0, 1, 1, 1, pixels}});
    return text.substr(text.find("moves"));
  };
  EXPECT_EQ(moves(0.0123), "moves 0.012 px");
  EXPECT_EQ(moves(9.94), "moves 9.9 px");
  EXPECT_EQ(moves(12.7), "moves 13 px");
  EXPECT_EQ(moves(1234.5), "moves 1234 px");
}

// The base frame's tracks say which side of the horizon is in front.
TEST(Carried, IsNowhereOnTheHorizonAndBehindIt) {
  ShotResult result;
  FrameResult frame;
  frame.h = {{{2, 0, 0}, {0, 1, 0}, {-0.01, 0, 1}}};  // the horizon is at x = 100
  EXPECT_EQ(carried(result, frame, {50, 10}).x, 200.0);
  EXPECT_EQ(carried(result, frame, {50, 10}).y, 20.0);
  EXPECT_TRUE(std::isnan(carried(result, frame, {100, 10}).x));
  EXPECT_TRUE(std::isnan(carried(result, frame, {150, 10}).y));
  result.baseCentre = {120, 0};
  EXPECT_TRUE(std::isnan(carried(result, frame, {50, 10}).x));
  EXPECT_EQ(carried(result, frame, {150, 10}).x, -600.0);
}

TEST(Carried, IsNowhereBeyondDoublePrecision) {
  FrameResult frame;
  frame.h = {{{1e300, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
  EXPECT_TRUE(std::isnan(carried({}, frame, {1e300, 5}).x));
  EXPECT_TRUE(std::isnan(carried({}, frame, {1e300, 5}).y));
  frame.h = {{{1, 0, 0}, {1e300, 1, 0}, {0, 0, 1}}};
  EXPECT_TRUE(std::isnan(carried({}, frame, {1e300, 5}).x));
}
