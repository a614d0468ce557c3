// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include "tests/support/files.h"
#include "tests/tools/program.h"

namespace {

// Two frames, in the second of which the surface lies so far to the right.
std::string shotAt(const std::string& right) {
  return R"({"cornerpin":1,"base_frame":0,"base_tracks":4,"left_out":0,"units":"fit",)"
         R"("corners":[[0,0],[8,0],[8,8],[0,8]],"frames":[)"
         R"({"frame":0,"status":"base","tracks":4,"rms":0,"h":[[1,0,0],[0,1,0],[0,0,1]]},)"
         R"({"frame":1,"status":"solved","tracks":4,"rms":0,"h":[[1,0,)" +
         right + R"(],[0,1,0],[0,0,1]]}]})";
}

class Pair {
 public:
  Pair() {
    writeFile(first(), shotAt("2"));
    writeFile(second(), shotAt("2.5"));
  }
  std::string first() const { return folder_ / "a.json"; }
  std::string second() const { return folder_ / "b.json"; }

 private:
  TemporaryFolder folder_;
};

}  // namespace

TEST(DiffCommand, EndsInFourWhereResultsDifferAndInNoughtWhereTheyDoNot) {
  const Pair pair;
  const Outcome differ = cornerpin({"diff", pair.first(), pair.second()});
  EXPECT_EQ(differ.code, 4);
  EXPECT_EQ(differ.err, "");
  EXPECT_TRUE(contains(differ.out, "\nDifferent: corners move in 1 of 2 frames: 1. Worst: 0.5 px"))
      << differ.out;
  EXPECT_EQ(cornerpin({"diff", pair.first(), pair.second(), "--max", "0.4"}).code, 4);
  EXPECT_EQ(cornerpin({"diff", pair.first(), pair.second(), "--max", "0.5"}).code, 0);
  const Outcome same = cornerpin({"diff", pair.first(), pair.first()});
  EXPECT_EQ(same.code, 0);
  EXPECT_EQ(same.out, "Same: nothing differs.\n");
  const Outcome quiet = cornerpin({"diff", "-q", pair.first(), pair.second()});
  EXPECT_EQ(quiet.code, 4);
  EXPECT_EQ(quiet.out + quiet.err, "");
}

TEST(DiffCommand, FindsNothingBeyondRoundingBehindARebase) {
  const TemporaryFolder folder;
  cornerpin({"solve", kFacade, "--base", "20", "-o", folder / "a.json"});
  cornerpin({"rebase", folder / "a.json", "--reference", "50", "-o", folder / "b.json"});
  const Outcome run = cornerpin({"diff", folder / "a.json", folder / "b.json", "--max", "0"});
  EXPECT_EQ(run.code, 0) << run.out;
  EXPECT_TRUE(contains(run.out, "frames 20 and 50: compared relative to 20\n")) << run.out;
}

TEST(DiffCommand, RefusesWhatItCannotCompare) {
  const Pair pair;
  EXPECT_EQ(cornerpin({"diff", "-", "-"}).err,
            "cornerpin: both results want standard input: name a file for one\n");
  const Outcome wrong = cornerpin({"diff", pair.first(), pair.second(), "--max", "-1"});
  EXPECT_EQ(wrong.code, 2);
  EXPECT_EQ(wrong.err, "cornerpin: --max takes a number of pixels from 0 on, not \"-1\"\n");
  EXPECT_EQ(cornerpin({"diff", pair.first(), "/nowhere.json"}).code, 3);
  EXPECT_EQ(cornerpin({"diff", pair.first()}).err,
            "cornerpin: diff wants new, for example: cornerpin diff old.json new.json --max "
            "0.1\n");
}
