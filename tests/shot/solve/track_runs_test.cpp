// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/track_runs.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "tests/support/allocations.h"

using namespace cornerpin;

namespace {

// "-2..3 good, 4..4 absent"
std::string text(const std::vector<TrackRun>& runs) {
  const char* const names[] = {"good", "ignored", "absent"};
  std::string all;
  for (const TrackRun& run : runs) {
    all += (all.empty() ? "" : ", ") + std::to_string(run.first) + ".." + std::to_string(run.last) +
           " " + names[static_cast<int>(run.use)];
  }
  return all;
}

}  // namespace

TEST(TrackRuns, JoinsBothSweepsAroundTheBaseFrame) {
  TrackRuns runs(2);
  runs.add(1, 0, TrackUse::Good);
  for (int frame : {1, 2}) runs.add(1, frame, TrackUse::Good);
  runs.add(1, 3, TrackUse::Ignored);
  for (int frame : {-1, -2}) runs.add(1, frame, TrackUse::Good);
  runs.add(1, -3, TrackUse::Ignored);
  runs.add(1, -4, TrackUse::Ignored);
  EXPECT_EQ(text(runs.of(1, -4, 3)), "-4..-3 ignored, -2..2 good, 3..3 ignored");
  EXPECT_EQ(text(runs.of(0, -4, 3)), "-4..3 absent");
}

TEST(TrackRuns, IsAbsentWhereNothingWasAdded) {
  TrackRuns runs(1);
  runs.add(0, 12, TrackUse::Good);
  runs.add(0, 15, TrackUse::Good);
  runs.add(0, 9, TrackUse::Ignored);
  EXPECT_EQ(text(runs.of(0, 8, 20)),
            "8..8 absent, 9..9 ignored, 10..11 absent, 12..12 good, 13..14 absent, 15..15 good, "
            "16..20 absent");
  EXPECT_EQ(text(runs.of(0, 9, 15)),
            "9..9 ignored, 10..11 absent, 12..12 good, 13..14 absent, 15..15 good");
}

TEST(TrackRuns, JoinsRunsThatMeetInAnyOrder) {
  TrackRuns runs(1);
  for (int frame : {5, 1, 3, 2, 4}) runs.add(0, frame, TrackUse::Ignored);
  EXPECT_EQ(text(runs.of(0, 1, 5)), "1..5 ignored");
}

TEST(TrackRuns, ReachesToTheEndsOfTheNumbers) {
  constexpr int kLow = std::numeric_limits<int>::min();
  constexpr int kHigh = std::numeric_limits<int>::max();
  TrackRuns runs(2);
  for (int frame : {kHigh - 1, kHigh}) runs.add(0, frame, TrackUse::Good);
  for (int frame : {kLow + 1, kLow}) runs.add(1, frame, TrackUse::Good);
  EXPECT_EQ(text(runs.of(0, kHigh - 2, kHigh)),
            "2147483645..2147483645 absent, 2147483646..2147483647 good");
  EXPECT_EQ(text(runs.of(1, kLow, kLow + 2)),
            "-2147483648..-2147483647 good, -2147483646..-2147483646 absent");
  // The one is not behind the other.
  runs.add(0, kLow, TrackUse::Good);
  EXPECT_EQ(text(runs.of(0, kLow, kHigh)),
            "-2147483648..-2147483648 good, -2147483647..2147483645 absent, "
            "2147483646..2147483647 good");
}

TEST(TrackRuns, NeedsMemoryForRunsNotForFrames) {
  TrackRuns runs(1);
  runs.add(0, 0, TrackUse::Good);
  const std::size_t before = allocations::made();
  for (int frame = 1; frame < 100000; ++frame) runs.add(0, frame, TrackUse::Good);
  EXPECT_EQ(allocations::made(), before);
  for (int frame = -1; frame > -100000; --frame) runs.add(0, frame, TrackUse::Good);
  EXPECT_LE(allocations::made(), before + 1);
  EXPECT_EQ(runs.of(0, -99999, 99999).size(), 1u);
}
