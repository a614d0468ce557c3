// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "tests/shot/made_shots.h"

TEST(SolveShot, HasTheSameBitsOnSeveralThreadsAtOnce) {
  constexpr std::uint32_t kFirst = 1;
  constexpr std::uint32_t kLast = 33;
  const made::Bits alone = made::solved(kFirst, kLast);
  std::vector<made::Bits> results(4);
  std::vector<std::thread> threads;
  threads.reserve(results.size());
  for (made::Bits& result : results) {
    threads.emplace_back([&result] { result = made::solved(kFirst, kLast); });
  }
  for (std::thread& thread : threads) thread.join();
  for (const made::Bits& result : results) EXPECT_EQ(result, alone);
}

TEST(SolveShot, GoesEveryWayInTheMadeShots) {
  using namespace cornerpin;
  bool stages[3] = {};
  bool statuses[4] = {};
  for (std::uint32_t seed = 1; seed < 33; ++seed) {
    for (const FrameResult& frame : solveShot(made::shot(seed), made::options(seed)).frames) {
      if (frame.verdict.status == Status::Solved)
        stages[static_cast<int>(frame.verdict.origin.stage)] = true;
      statuses[static_cast<int>(frame.verdict.status)] = true;
    }
  }
  for (bool seen : stages) EXPECT_TRUE(seen);
  for (bool seen : statuses) EXPECT_TRUE(seen);
}
