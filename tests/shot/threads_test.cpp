// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "tests/shot/made_shots.h"

namespace {

// Of the shots first .. last - 1, on this thread and on four at once.
void expectSameBits(made::Bits (*bitsOf)(std::uint32_t, std::uint32_t), std::uint32_t first,
                    std::uint32_t last) {
  const made::Bits alone = bitsOf(first, last);
  std::vector<made::Bits> results(4);
  std::vector<std::thread> threads;
  threads.reserve(results.size());
  for (made::Bits& result : results) {
    threads.emplace_back([&] { result = bitsOf(first, last); });
  }
  for (std::thread& thread : threads) thread.join();
  for (const made::Bits& result : results) EXPECT_EQ(result, alone);
}

}  // namespace

TEST(SolveShot, HasTheSameBitsOnSeveralThreadsAtOnce) { expectSameBits(made::solved, 1, 33); }

TEST(SolveShot, HandsOverWithTheSameBitsOnSeveralThreadsAtOnce) {
  expectSameBits(made::handedOver, 1, 7);
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

TEST(SolveShot, HandsOverInTheRelayShots) {
  using namespace cornerpin;
  for (std::uint32_t seed = 1; seed < 61; ++seed) {
    const ShotResult result = solveShot(made::relayShot(seed), made::relayOptions(seed));
    EXPECT_GT(result.handedOver, 0) << seed;
    EXPECT_EQ(result.whyBase.empty(), made::relayOptions(seed).base.has_value()) << seed;
  }
}
