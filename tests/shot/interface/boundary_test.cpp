// SPDX-License-Identifier: BSD-3-Clause
#include <cornerpin/shot.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tests/shot/interface/plain_shot.h"
#include "tests/support/files.h"

using namespace cornerpin::shot;

namespace {

using Work = std::function<void(const Progress&)>;

// Pieces of work that go through all phases together, with the folder that they write to.
std::vector<Work> allWork(const TemporaryFolder& folder, unsigned threads) {
  Options options;
  options.threads = threads;
  options.smooth = 0.5;
  options.fill = true;
  options.influences = true;
  const Tracks relay = tracksFromArrays(plain::relay().given());
  const Tracks screen = readTracks(CORNERPIN_DATA "/screen4.csv");
  const Result result = solve(screen, options);
  std::vector<Work> all;
  all.emplace_back([](const Progress& p) { readTracks(CORNERPIN_DATA "/facade.csv", {}, p); });
  all.emplace_back([=](const Progress& p) { solve(relay, options, p); });
  all.emplace_back([=](const Progress& p) { solve(screen, options, p); });
  const std::string path = folder / "out";
  all.emplace_back([=](const Progress& p) { result.write(path + ".json", {}, p); });
  all.emplace_back([=](const Progress& p) { result.write(path + ".csv", {}, p); });
  all.emplace_back([=](const Progress& p) { result.writeExplanation(path + ".csv", p); });
  return all;
}

const std::set<std::string> kPhases = {"reading",      "choosing the base frame", "solving",
                                       "handing over", "figures of trust",        "smoothing",
                                       "filling",      "looking for what helps",  "writing"};

}  // namespace

TEST(Boundary, TellsAllPhasesWhatIsDoneOfThem) {
  const TemporaryFolder folder;
  std::set<std::string> phases;
  for (const Work& work : allWork(folder, 2)) {
    work([&](const char* phase, std::size_t done, std::size_t total) {
      phases.insert(phase);
      EXPECT_TRUE(total == 0 || done <= total) << phase << ' ' << done << " of " << total;
      return true;
    });
  }
  EXPECT_EQ(phases, kPhases);
}

// Ends the work at a report of a phase. Returns whether it came to that one.
bool isCancelled(const Work& work, const std::string& phase, std::size_t report) {
  std::size_t reports = 0;
  bool ended = false;
  const Progress progress = [&](const char* name, std::size_t, std::size_t) {
    EXPECT_FALSE(ended) << "asked again after the end: " << name;
    ended = name == phase && reports++ == report;
    return !ended;
  };
  try {
    work(progress);
    EXPECT_FALSE(ended) << phase;
    return false;
  } catch (const Cancelled& cancelled) {
    EXPECT_STREQ(cancelled.what(), "cancelled");
    EXPECT_TRUE(ended);
    return true;
  }
}

TEST(Boundary, CancelsInEveryPhaseAndLeavesNothingBehind) {
  for (const unsigned threads : {1u, 2u}) {
    const TemporaryFolder folder;
    std::set<std::string> cancelled;
    for (const Work& work : allWork(folder, threads)) {
      for (const std::string& phase : kPhases) {
        for (const std::size_t report : {std::size_t{0}, std::size_t{2}}) {
          if (isCancelled(work, phase, report)) {
            cancelled.insert(phase);
            EXPECT_EQ(folder.entryCount(), 0u) << phase;
          }
          for (const char* name : {"out.json", "out.csv"}) std::filesystem::remove(folder / name);
        }
      }
    }
    EXPECT_EQ(cancelled, kPhases);
  }
}

TEST(Boundary, PassesOnWhatTheProgressThrows) {
  const Tracks tracks = readTracks(CORNERPIN_DATA "/screen4.csv");
  for (const std::string wanted : {"solving", "looking for what helps"}) {
    const Progress progress = [&](const char* phase, std::size_t done, std::size_t) {
      // Such an error the solver throws itself where options make no sense.
      if (phase == wanted && done > 0) throw std::invalid_argument("of my own");
      return true;
    };
    try {
      solve(tracks, {}, progress);
      FAIL() << "went on: " << wanted;
    } catch (const std::invalid_argument& error) {
      EXPECT_STREQ(error.what(), "of my own");
    }
  }
}

TEST(Boundary, SolvesTheSameBehindACancelledSolve) {
  const Tracks tracks = readTracks(CORNERPIN_DATA "/graf13.csv");
  const std::string before = solve(tracks).toJson();
  const Progress never = [](const char*, std::size_t, std::size_t) { return false; };
  EXPECT_THROW(solve(tracks, {}, never), Cancelled);
  EXPECT_TRUE(solve(tracks).toJson() == before);
}

TEST(Boundary, ErrorsAreCopied) {
  const InputError error("f:3: text", "f", 3);
  const InputError copy = error;  // NOLINT(performance-unnecessary-copy-initialization)
  EXPECT_STREQ(copy.what(), "f:3: text");
  EXPECT_EQ(copy.file, "f");
  EXPECT_EQ(copy.line, 3u);
}
