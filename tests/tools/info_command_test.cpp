// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include "tests/support/files.h"
#include "tests/tools/program.h"

namespace {

const std::string kDigest = "SHA-256       ";

// The lines behind the first two, which name the file.
std::string restOf(const std::string& out) {
  return out.substr(out.find('\n', out.find('\n') + 1) + 1);
}

}  // namespace

// The digest and the rows are those that sha256sum and wc tell.
TEST(InfoCommand, SaysWhatAFileOfTracksIs) {
  const Outcome run = cornerpin({"info", CORNERPIN_DATA "/screen4.csv"});
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.out.rfind("file          " CORNERPIN_DATA "/screen4.csv\n"
                          "              tracks in CSV with commas, 12.9 kB\n",
                          0),
            0u)
      << run.out;
  const Outcome sum = runProgram({"/usr/bin/env", "sha256sum", CORNERPIN_DATA "/screen4.csv"});
  EXPECT_TRUE(contains(run.out, kDigest + sum.out.substr(0, 64) + "\n")) << run.out;
  EXPECT_TRUE(contains(run.out, "\nrows          397\n")) << run.out;
  EXPECT_TRUE(contains(run.out, "in 12 frames: 87-88, 92, 94, 96-103\n")) << run.out;
}

TEST(InfoCommand, SaysWhatAResultIs) {
  const TemporaryFolder folder;
  const std::string path = folder / "in.json";
  const Outcome solved = cornerpin({"solve", kFacade, "--base", "20", "-o", path});
  const Outcome run = cornerpin({"info", path});
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_TRUE(contains(run.out, "\nmade from     facade.csv, ")) << run.out;
  EXPECT_TRUE(contains(run.out, "\noptions       --base 20\n")) << run.out;
  EXPECT_TRUE(contains(run.out, "\n\nGood: ")) << run.out;
  // In a pipe and packed it is the same result.
  ChildOptions options;
  options.in = path;
  EXPECT_EQ(restOf(cornerpin({"info", "-"}, options).out), restOf(run.out));
  const Outcome packed =
      runProgram({"/bin/sh", "-c", "gzip -c \"$1\" | \"$0\" info -", CORNERPIN_PROGRAM, path});
  EXPECT_EQ(restOf(packed.out), restOf(run.out)) << packed.err;
}

TEST(InfoCommand, NamesWhatIsSkipped) {
  const TemporaryFolder folder;
  writeFile(folder / "a.rz2", "pointTrack \"a\"\n{\n 1 10 20\n}\ncamera\n");
  EXPECT_EQ(cornerpin({"info", folder / "a.rz2"}).err,
            "cornerpin: note: " + (folder / "a.rz2") + ":5: \"camera\" is skipped\n");
}

TEST(InfoCommand, ReadsAPipeByAnyName) {
  const Outcome run =
      runProgram({"/bin/bash", "-c", "\"$0\" info <(cat \"$1\")", CORNERPIN_PROGRAM, kFacade});
  EXPECT_EQ(run.code, 0) << run.err;
  EXPECT_EQ(restOf(run.out), restOf(cornerpin({"info", kFacade}).out));
}

TEST(InfoCommand, ColoursTheVerdictWhereAsked) {
  const TemporaryFolder folder;
  const std::string path = folder / "in.json";
  cornerpin({"solve", kFacade, "--base", "20", "-o", path});
  const std::string mark = "\n\033[32mGood\033[0m: ";
  EXPECT_FALSE(contains(cornerpin({"info", path}).out, "\033"));
  EXPECT_TRUE(contains(cornerpin({"info", path, "--color", "always"}).out, mark));
}

TEST(InfoCommand, SaysWhichFileCannotBeReadAndWhy) {
  const TemporaryFolder folder;
  const Outcome none = cornerpin({"info", folder / "no.csv"});
  EXPECT_EQ(none.code, 3);
  EXPECT_EQ(none.out, "");
  EXPECT_EQ(none.err, "cornerpin: " + (folder / "no.csv") +
                          ": there is no such file: check its name and folder\n");
  writeFile(folder / "other.json", "{\"a\":1}");
  EXPECT_EQ(cornerpin({"info", folder / "other.json"}).err,
            "cornerpin: " + (folder / "other.json") +
                ": this is JSON, but no result: give what cornerpin solve -o shot.json writes\n");
  ChildOptions closed;
  closed.in = "";
  EXPECT_EQ(cornerpin({"info", "-"}, closed).err,
            "cornerpin: <stdin>: standard input is closed: open it, or name a file\n");
  EXPECT_EQ(cornerpin({"info", ""}).code, 2);
}

// What a solve refuses as a likely mistake is shown.
TEST(InfoCommand, ShowsAFrameFarFromAllOthers) {
  const TemporaryFolder folder;
  writeFile(folder / "in.csv", "track,frame,x,y\na,1,1,1\na,2,1,1\na,50000,1,1\n");
  EXPECT_EQ(cornerpin({"solve", folder / "in.csv"}).code, 3);
  const Outcome run = cornerpin({"info", folder / "in.csv"});
  EXPECT_EQ(run.err, "");
  EXPECT_TRUE(contains(run.out, "1-50000  (50000 frames), no track in 49997 frames: 3-49999\n"))
      << run.out;
}
