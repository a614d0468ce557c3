// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

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

double secondsOf(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
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
  const ChildResult result = waitForChild(startChild({CORNERPIN_PROGRAM, "solve", path}, options));
  const double seconds = secondsOf(result.usage.ru_utime) + secondsOf(result.usage.ru_stime);
  const double megabytes = static_cast<double>(result.usage.ru_maxrss) / 1024;
  std::printf("%d rows: %.1f s of processor time, %.0f MB at most\n", kTracks * kFrames, seconds,
              megabytes);
  EXPECT_EQ(result.code, 3);
  EXPECT_EQ(readFile(options.err),
            "cornerpin: " + path +
                ":10000002: track \"t0000\" is given twice in frame 0, first on line 2\n");
  EXPECT_LT(seconds, 60.0);      // in an unoptimised build
  EXPECT_LT(megabytes, 1000.0);  // 100 bytes a row
}
