// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <string>

#include "tests/support/files.h"
#include "tests/support/process.h"

namespace {

constexpr int kTracks = 1000;
constexpr int kFrames = 10000;

void writeRows(const std::string& path) {
  std::FILE* file = std::fopen(path.c_str(), "w");
  ASSERT_NE(file, nullptr);
  std::fputs("track,frame,x,y,weight\n", file);
  for (int t = 0; t < kTracks; ++t) {
    for (int f = 0; f < kFrames; ++f) {
      std::fprintf(file, "t%04d,%d,%d.%03d,%d.250,0.75\n", t, f, t % 97 * 20, f % 1000,
                   t % 89 * 11);
    }
  }
  ASSERT_EQ(std::fclose(file), 0);
}

}  // namespace

// The last line is refused, so that the run ends with the reading.
TEST(LargeInput, TenMillionRowsAreReadInSecondsAndInMemoryProportionalToThem) {
  const TemporaryFolder folder;
  const std::string path = folder / "in.csv";
  writeRows(path);
  std::FILE* file = std::fopen(path.c_str(), "a");
  std::fputs("t0000,0,1,1,1\n", file);
  std::fclose(file);
  ChildOptions options;
  options.err = folder / "err";
  const auto start = std::chrono::steady_clock::now();
  const ChildResult result = waitForChild(startChild({CORNERPIN_PROGRAM, "solve", path}, options));
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  const double megabytes = static_cast<double>(result.usage.ru_maxrss) / 1024;
  std::printf("%d rows: %.1f s, %.0f MB at most\n", kTracks * kFrames, seconds, megabytes);
  EXPECT_EQ(result.code, 3);
  EXPECT_EQ(readFile(options.err),
            path + ":10000002: track \"t0000\" is given twice in frame 0, first on line 2\n");
  EXPECT_LT(seconds, 120.0);     // an unoptimised build on a busy machine
  EXPECT_LT(megabytes, 1000.0);  // 100 bytes a row
}
