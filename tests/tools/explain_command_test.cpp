// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include "tests/support/files.h"
#include "tests/tools/program.h"

// A track that stands still while the surface moves is ignored, and named with what to type.
TEST(ExplainCommand, NamesATrackThatDoesNotBelong) {
  const TemporaryFolder folder;
  std::string text = "track,frame,x,y\n";
  for (int t = 0; t < 16; ++t) {
    for (int f = 0; f < 6; ++f) {
      const int x = 100 * (t % 4) + (t == 5 ? 0 : 20 * f);
      text += (t == 5 ? "p,q" : "t" + std::to_string(t)).insert(0, "\"") + "\"," +
              std::to_string(f) + "," + std::to_string(x) + "." + std::to_string(7 * t * f % 10) +
              "," + std::to_string(100 * (t / 4)) + "." + std::to_string(3 * t * f % 10) + "\n";
    }
  }
  writeFile(folder / "in.csv", text);
  const std::string result = folder / "r.json";
  cornerpin({"solve", folder / "in.csv", "--base", "0", "-o", result});
  const Outcome run = cornerpin({"explain", result});
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_TRUE(contains(run.out, "ignored in 5 of 6 frames: 1-5:\n      --drop '\"p,q\"'\n"))
      << run.out;
  EXPECT_TRUE(contains(run.out, "add its --drop to: cornerpin solve in.csv\n")) << run.out;
  EXPECT_EQ(cornerpin({"solve", folder / "in.csv", "--drop", "\"p,q\"", "--quiet"}).code, 0);
}

TEST(ExplainCommand, WantsAResult) {
  const Outcome run = cornerpin({"explain", kFacade});
  EXPECT_EQ(run.code, 3);
  EXPECT_EQ(
      run.err,
      "cornerpin: " + kFacade +
          ": these are tracks, not a result: give what cornerpin solve -o shot.json writes\n");
  EXPECT_EQ(cornerpin({"explain"}).err,
            "cornerpin: explain wants result, for example: cornerpin explain shot.json\n");
}
