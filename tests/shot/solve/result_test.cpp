// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/result.h"

#include <gtest/gtest.h>

using namespace cornerpin;

TEST(Describe, SpeaksOfOneFrameOrOfSeveral) {
  EXPECT_EQ(describe({"t042", {0, 60, 81, 70, 9.31}}),
            "t042, frames 60-81: without it the worst corner moves 9.3 px");
  EXPECT_EQ(describe({"b", {0, 5, 5, 5, 120.4}}),
            "b, frame 5: without it the worst corner moves 120 px");
}
