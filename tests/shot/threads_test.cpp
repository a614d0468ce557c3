// SPDX-License-Identifier: BSD-3-Clause
#include <cornerpin/shot.h>
#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "tests/shot/interface/plain_shot.h"
#include "tests/shot/made_shots.h"
#include "tests/support/files.h"

using namespace cornerpin;

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

// The bit patterns of the transforms and of the figures of trust.
made::Bits bitsOf(const ShotResult& result) {
  made::Bits bits;
  const auto add = [&](double value) {
    bits.emplace_back();
    std::memcpy(&bits.back(), &value, sizeof value);
  };
  for (const FrameResult& frame : result.frames) {
    for (const auto& row : frame.h) {
      for (double element : row) add(element);
    }
    for (double deviation : frame.figures.deviations()) add(deviation);
  }
  return bits;
}

TEST(SolveShot, HasTheSameBitsWithAnyNumberOfThreads) {
  for (std::uint32_t seed = 1; seed < 16; ++seed) {
    SolveOptions options = made::relayOptions(seed);
    options.threads = 1;
    const made::Bits alone = bitsOf(solveShot(made::relayShot(seed), options));
    for (unsigned threads : {2u, 3u, 1024u}) {
      options.threads = threads;
      EXPECT_EQ(bitsOf(solveShot(made::relayShot(seed), options)), alone) << seed;
    }
  }
}

// As progress tells. From the first frame there is one sweep.
TEST(SolveShot, SweepsBothWaysAtOnceWhereItMay) {
  const Tracks tracks = made::shot(1);
  for (int base : {tracks.firstFrame(), tracks.firstFrame() + tracks.frameCount() / 2}) {
    for (unsigned threads : {1u, 2u}) {
      SolveOptions options;
      options.base = base;
      options.threads = threads;
      std::set<std::thread::id> seen;
      std::vector<std::size_t> counts;
      solveShot(tracks, options, [&](Phase phase, std::size_t done, std::size_t) {
        if (phase != Phase::Solving) return;
        seen.insert(std::this_thread::get_id());
        counts.push_back(done);
      });
      EXPECT_EQ(seen.size(), base == tracks.firstFrame() ? 1u : threads);
      for (std::size_t i = 0; i < counts.size(); ++i) EXPECT_EQ(counts[i], i);
    }
  }
}

TEST(SolveShot, GoesEveryWayInTheMadeShots) {
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
  for (std::uint32_t seed = 1; seed < 61; ++seed) {
    const ShotResult result = solveShot(made::relayShot(seed), made::relayOptions(seed));
    EXPECT_GT(result.handedOver, 0) << seed;
    EXPECT_EQ(result.whyBase.empty(), made::relayOptions(seed).base.has_value()) << seed;
  }
}

// All that a result gives, and what is made of it and written.
std::vector<std::string> allOf(const shot::Result& result, const std::string& folder) {
  std::vector<std::string> texts = {result.toJson(),
                                    result.toCsv(),
                                    result.summary(),
                                    result.trackAdvice(),
                                    result.closingSentence(),
                                    result.rebase(20).toJson(),
                                    std::to_string(result.frames().size()),
                                    std::to_string(result.tracks().size())};
  result.write(folder + ".json");
  result.report(folder + ".html");
  result.writeExplanation(folder + ".csv");
  for (const char* ending : {".json", ".html", ".csv"}) texts.push_back(readFile(folder + ending));
  return texts;
}

TEST(Result, IsUsedByTwoThreadsAtOnce) {
  const TemporaryFolder folder;
  const shot::Tracks tracks = shot::tracksFromArrays(plain::relay().given());
  shot::Options options;
  options.influences = true;
  const shot::Result result = shot::solve(tracks, options);
  const std::vector<std::string> alone = allOf(result, folder / "alone");
  std::vector<std::string> both[2];
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < 2; ++i) {
    threads.emplace_back(
        [&, i] { both[i] = allOf(result, folder / ("thread" + std::to_string(i))); });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_TRUE(both[0] == alone);
  EXPECT_TRUE(both[1] == alone);
}

TEST(Tracks, AreSolvedByTwoThreadsAtOnce) {
  const shot::Tracks tracks = shot::tracksFromArrays(plain::relay().given());
  shot::Options options;
  options.drop = {"t03"};
  options.advice = false;
  const std::string alone = shot::solve(tracks, options).toJson();
  std::string both[2];
  std::vector<std::thread> threads;
  for (std::string& json : both) {
    threads.emplace_back([&] { json = shot::solve(tracks, options).toJson(); });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_TRUE(both[0] == alone);
  EXPECT_TRUE(both[1] == alone);
}
