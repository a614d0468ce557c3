// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/explanation_csv.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/support/files.h"

using namespace cornerpin;

TEST(ExplanationCsv, QuotesNamesAndLeavesOutWhatHasNoValue) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  Tracks tracks;
  tracks.names = {"t1", "a,\"b\"", " a"};
  ShotResult result;
  result.frames.resize(3);
  result.frames[0].frame = -3;
  result.frames[0].influences = {{0, 0.5, 1, 0.25, kNaN}, {1, kNaN, 0, 0, 2}};
  result.frames[1].frame = -2;
  result.frames[2].frame = -1;
  result.frames[2].influences = {{2, 0, 0, 0, 0}};
  const TemporaryFolder folder;
  OutputFile out(folder / "e");
  writeExplanationCsv(result, tracks, out);
  out.commit();
  EXPECT_EQ(readFile(folder / "e"),
            "track,frame,residual,weight,leverage,influence\n"
            "t1,-3,0.5,1,0.25,\n"
            "\"a,\"\"b\"\"\",-3,,0,0,2\n"
            "\" a\",-1,0,0,0,0\n");
}
