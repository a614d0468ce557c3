// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/info_row.h"

#include <gtest/gtest.h>

using namespace cornerpin;

TEST(InfoRow, PutsTheTextInAColumnOfItsOwn) {
  EXPECT_EQ(infoRow("frames", "0-9"), "frames        0-9\n");
  EXPECT_EQ(infoRow("a", "\x1b[1m"), "a             ?[1m\n");
  EXPECT_EQ(infoRow("", "0-9"), "              0-9\n");
}

TEST(FileRows, NameTheFileItsKindAndSize) {
  EXPECT_EQ(fileRows({"a.csv", "a.csv", 1234, false, false}, "tracks"),
            "file          a.csv\n              tracks, 1.23 kB\n");
  EXPECT_EQ(fileRows({"-", "standard input", 5, true, false}, "tracks"),
            "file          standard input\n              tracks, packed with gzip, 5 bytes\n");
}

TEST(Describe, PutsProgramsAndInputsForPeople) {
  EXPECT_EQ(describe(ProgramVersion{"cornerpin", "0.1.0", "12ab"}), "cornerpin 0.1.0, commit 12ab");
  EXPECT_EQ(describe(ProgramVersion{"cornerpin", "0.1.0", ""}), "cornerpin 0.1.0");
  EXPECT_EQ(describe(InputFile{"a.csv", "34cd", "", 1}), "a.csv, 1 row, SHA-256 34cd");
  EXPECT_EQ(describe(InputFile{"", "", "", 7}), "a pipe, 7 rows");
}
