// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/files.h"
#include "tests/tools/program.h"

TEST(SolveOutputs, WritesTheFileOnStandardOutputWithoutATable) {
  for (const char* name : {"-", "/dev/stdout"}) {
    const Outcome run = cornerpin({"solve", kFacade, "-o", name, "--format", "csv"});
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(std::count(run.out.begin(), run.out.end(), '\n'), 72) << name;
  }
}

TEST(SolveOutputs, WritesJsonOnStandardOutputUnlessAskedForAnotherFormat) {
  for (const char* name : {"-", "/dev/stdout"}) {
    EXPECT_EQ(cornerpin({"solve", kFacade, "-o", name}).out,
              cornerpin({"solve", kFacade, "--json"}).out)
        << name;
  }
}

TEST(SolveOutputs, DoesNotReplaceTheQuadsThatItReads) {
  const TemporaryFolder folder;
  const std::string quads = folder / "quads.json";
  const std::string text = R"({"sign":[[0,0],[9,0],[9,9],[0,9]]})";
  writeFile(quads, text);
  for (const char* option : {"-o", "--explain"}) {
    const Outcome run = cornerpin(
        {"solve", kFacade, "--json", "--reference", "0", "--quads", quads, option, quads});
    EXPECT_EQ(run.code, 2);
    EXPECT_EQ(run.err, "cornerpin: \"" + quads +
                           "\" is the file that is read: not replaced; name another\n");
  }
  EXPECT_EQ(readFile(quads), text);
}
