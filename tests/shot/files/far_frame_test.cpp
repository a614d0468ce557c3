// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/far_frame.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

using namespace cornerpin;

namespace {

// Rows on lines 2, 3, ... in these frames.
std::string farIn(const std::vector<int>& frames) {
  std::vector<Observation> rows;
  for (int frame : frames) {
    Observation o;
    o.frame = frame;
    o.line = static_cast<std::uint32_t>(rows.size() + 2);
    rows.push_back(o);
  }
  const auto ends = std::minmax_element(frames.begin(), frames.end());
  const auto far = findFarFrame(rows, *ends.first, *ends.second);
  if (!far) return "none";
  return std::to_string(far->line) + ": " + std::to_string(far->frame) + " is " +
         std::to_string(far->away) + " from " + std::to_string(far->frames);
}

std::vector<int> shot(int frames, const std::vector<int>& others) {
  std::vector<int> all;
  for (int f = 0; f < frames; ++f) all.push_back(f);
  all.insert(all.end(), others.begin(), others.end());
  return all;
}

}  // namespace

TEST(FindFarFrame, FindsTheSideWithFewerRows) {
  EXPECT_EQ(farIn(shot(10, {1000000})), "12: 1000000 is 999991 from 11");
  EXPECT_EQ(farIn(shot(10, {-1000000, -999999, -1000001})), "12: -1000000 is 1000000 from 13");
  EXPECT_EQ(farIn({50000, 0, 0}), "2: 50000 is 50000 from 2");
  EXPECT_EQ(farIn({0, 50000}), "3: 50000 is 50000 from 2");
}

TEST(FindFarFrame, WantsMoreThanTenThousandFrames) {
  EXPECT_EQ(farIn({0, 10000}), "none");
  EXPECT_EQ(farIn({0, 10001}), "3: 10001 is 10001 from 2");
  EXPECT_EQ(farIn({0, 9000, 18000}), "none");
  EXPECT_EQ(farIn({7}), "none");
}

TEST(FindFarFrame, WantsMoreThanAHundredTimesTheFramesSeen) {
  EXPECT_EQ(farIn(shot(199, {20198})), "none");  // 200 frames, 20,000 off
  EXPECT_EQ(farIn(shot(199, {20199})), "201: 20199 is 20001 from 200");
  EXPECT_EQ(farIn(shot(199, {20199, 20199, 20200})), "none");  // 201 frames
}

TEST(FindFarFrame, HoldsForAllThirtyTwoBits) {
  constexpr int kLow = std::numeric_limits<int>::min();
  constexpr int kHigh = std::numeric_limits<int>::max();
  EXPECT_EQ(farIn({kLow, kLow, kHigh}), "4: 2147483647 is 4294967295 from 2");
  EXPECT_EQ(farIn({kHigh, kHigh, kLow}), "4: -2147483648 is 4294967295 from 2");
}
