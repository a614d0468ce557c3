// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/file_look.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "shot/files/input_error.h"
#include "tests/shot/files/gzipped.h"
#include "tests/support/child.h"
#include "tests/support/files.h"

using namespace cornerpin;

namespace {

FileLook lookAtText(const std::string& text) {
  const TemporaryFolder folder;
  writeFile(folder / "in", text);
  return lookAt(folder / "in");
}

}  // namespace

TEST(FileLook, TellsJsonFromRecordsPackedOrNot) {
  EXPECT_TRUE(lookAtText("\n {\"cornerpin\":2}").json);
  EXPECT_TRUE(lookAtText("[1]").json);
  EXPECT_FALSE(lookAtText("track,frame,x,y\n").json);
  EXPECT_FALSE(lookAtText("").json);
  EXPECT_FALSE(lookAtText("{}").packed);
  const std::string packed = gzipped("{\"cornerpin\":2}");
  EXPECT_TRUE(lookAtText(packed).json);
  EXPECT_TRUE(lookAtText(packed).packed);
  EXPECT_EQ(lookAtText(packed).bytes, packed.size());
}

TEST(FileLook, RefusesWhatCannotBeRead) {
  EXPECT_THROW(lookAt("/nowhere/at/all"), InputError);
  EXPECT_THROW(lookAt("/tmp"), InputError);
}

// Twice: the second look finds the beginning again.
TEST(FileLook, KeepsWhatComesThroughAPipe) {
  const ChildRun run = runInChild([] {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    ASSERT_EQ(::write(ends[1], "{\"a\":1}", 7), 7);
    ::close(ends[1]);
    ::dup2(ends[0], STDIN_FILENO);
    for (int i = 0; i < 2; ++i) {
      const FileLook look = lookAt("-");
      EXPECT_EQ(look.path, "-");
      EXPECT_EQ(look.name, "standard input");
      EXPECT_EQ(look.bytes, 7u);
      EXPECT_TRUE(look.json);
    }
    char text[8] = {};
    EXPECT_EQ(::read(STDIN_FILENO, text, 8), 7);
    EXPECT_STREQ(text, "{\"a\":1}");
  });
  EXPECT_TRUE(run.exited) << run.out;
}

TEST(SizeText, CountsInThousands) {
  EXPECT_EQ(sizeText(0), "0 bytes");
  EXPECT_EQ(sizeText(1), "1 byte");
  EXPECT_EQ(sizeText(999), "999 bytes");
  EXPECT_EQ(sizeText(1234), "1.23 kB");
  EXPECT_EQ(sizeText(999999), "1000 kB");
  EXPECT_EQ(sizeText(345600000), "346 MB");
  EXPECT_EQ(sizeText(12345678901), "12.3 GB");
}
