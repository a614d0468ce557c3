// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/frame_range.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <utility>

#include "tests/support/refusal.h"

using namespace cornerpin;

namespace {

constexpr int kLeast = std::numeric_limits<int>::min();
constexpr int kMost = std::numeric_limits<int>::max();

std::string refusalOf(const char* text) {
  return refusal([&] { parseFrameRange(text); });
}

}  // namespace

TEST(FrameRange, IsOneFrameSeveralOrOpenAtItsEnd) {
  const std::pair<const char*, FrameRange> cases[] = {
      {"60", {60, 60}},       {"60-81", {60, 81}},   {"60-", {60, kMost}},
      {"-5", {-5, -5}},       {"-10--3", {-10, -3}}, {"-10-3", {-10, 3}},
      {"-10-", {-10, kMost}}, {"0-0", {0, 0}},       {"-2147483648", {kLeast, kLeast}},
      {"007", {7, 7}}};
  for (const auto& [text, range] : cases) EXPECT_EQ(parseFrameRange(text), range) << text;
}

TEST(FrameRange, SaysWhatToWriteInstead) {
  const std::string form = " is no range of frames: write it like 60, 60-81 or 60-";
  for (const char* text : {"", "x", "1.5", "1-2x", "1--", "1-2-", "-", "--5", "+5", " 5", "1:2"}) {
    EXPECT_EQ(refusalOf(text), "\"" + std::string(text) + "\"" + form);
  }
  EXPECT_EQ(refusalOf("2-1"), "\"2-1\" runs backwards: write 1-2");
  EXPECT_EQ(refusalOf("-3--10"), "\"-3--10\" runs backwards: write -10--3");
  const std::string large =
      " has a frame that is too large: take one from -2147483648 to 2147483647";
  for (const char* text : {"99999999999", "1-2147483648", "-2147483649-5"}) {
    EXPECT_EQ(refusalOf(text), "\"" + std::string(text) + "\"" + large);
  }
}

TEST(FrameRange, ReadsBackWhatItPrints) {
  std::mt19937 random(1);
  for (int i = 0; i < 2000; ++i) {
    const int size = i % 3 == 0 ? 5 : i % 3 == 1 ? 1000 : kMost;
    const int a = std::uniform_int_distribution<int>(-size, size)(random);
    const int b = std::uniform_int_distribution<int>(a, size)(random);
    for (const FrameRange range : {FrameRange{a, b}, FrameRange{a, a}, FrameRange{a, kMost}}) {
      EXPECT_EQ(parseFrameRange(range.text()), range) << range.text();
      EXPECT_TRUE(looksLikeFrames(range.text()));
    }
  }
  EXPECT_EQ((FrameRange{-10, -3}.text()), "-10--3");
  EXPECT_EQ((FrameRange{4, 4}.text()), "4");
  EXPECT_EQ((FrameRange{4, kMost}.text()), "4-");
}

TEST(FrameRange, HasItsEnds) {
  const FrameRange range = {-1, 2};
  EXPECT_FALSE(range.has(-2));
  EXPECT_TRUE(range.has(-1));
  EXPECT_TRUE(range.has(2));
  EXPECT_FALSE(range.has(3));
  EXPECT_FALSE(range.isAll());
  EXPECT_TRUE(FrameRange().isAll());
  EXPECT_TRUE(FrameRange().has(kLeast) && FrameRange().has(kMost));
}

TEST(FrameRange, LooksLikeDigitsAndMinuses) {
  for (const char* text : {"1", "-1", "1-", "3--1"}) EXPECT_TRUE(looksLikeFrames(text)) << text;
  for (const char* text : {"", "-", "--", "1*", "a", "1 "}) EXPECT_FALSE(looksLikeFrames(text));
}
