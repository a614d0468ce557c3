// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "tests/support/scene.h"

namespace {

// The results of random shots, each in a scene of its own.
std::vector<scenes::Bits> solved() {
  std::vector<scenes::Bits> results;
  for (std::uint32_t seed = 1; seed <= 100; ++seed) {
    MMatchmove scene;
    scenes::fill(scene, scenes::randomShot(seed), seed);
    const std::string thrown = scenes::solve(scene);
    results.push_back(scenes::resultOf(scene, thrown));
  }
  return results;
}

}  // namespace

// The threads go first: what the library makes once, they make at the same time.
TEST(Matchmove, HasTheSameBitsOnSeveralThreadsAtOnce) {
  std::vector<std::vector<scenes::Bits>> results(4);
  std::vector<std::thread> threads;
  threads.reserve(results.size());
  for (std::vector<scenes::Bits>& result : results) {
    threads.emplace_back([&result] { result = solved(); });
  }
  for (std::thread& thread : threads) thread.join();
  const std::vector<scenes::Bits> alone = solved();
  for (const std::vector<scenes::Bits>& result : results) EXPECT_EQ(result, alone);
}
