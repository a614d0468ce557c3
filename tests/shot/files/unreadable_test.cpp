// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/unreadable.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "tests/support/files.h"

using cornerpin::whyUnreadable;

TEST(WhyUnreadable, SaysWhatToDo) {
  EXPECT_EQ(whyUnreadable("-", EBADF), "standard input is closed: open it, or name a file");
  EXPECT_EQ(whyUnreadable("a", ENOTDIR),
            "a part of the path is a file, not a folder: check the path");
  EXPECT_EQ(whyUnreadable("a", EISDIR), "this is a folder: name a file in it");
  EXPECT_EQ(whyUnreadable("a", EACCES), "it may not be read: change its rights, or copy it");
  EXPECT_EQ(whyUnreadable("a", EIO),
            "Input/output error: try again, or with a copy of it elsewhere");
}

TEST(WhyUnreadable, NamesTheFileThatMayBeMeant) {
  const TemporaryFolder folder;
  const auto meant = [&](const std::string& typed) {
    return whyUnreadable(folder / typed, ENOENT);
  };
  const std::string none = "there is no such file: check its name and folder";
  EXPECT_EQ(meant("board.csv"), none);
  EXPECT_EQ(meant("none/board.csv"), none);
  for (const char* name : {"board.csv", "board.json", "coard.csv", "x.csv"}) {
    writeFile(folder / name, "");
  }
  EXPECT_EQ(meant("bord.csv"), "there is no such file: did you mean " + folder / "board.csv" + "?");
  EXPECT_EQ(meant("xoard.csv"),
            "there is no such file: did you mean " + folder / "board.csv" + "?");
  EXPECT_EQ(meant("boadr.josn"),
            "there is no such file: did you mean " + folder / "board.json" + "?");
  EXPECT_EQ(meant("brd.cv"), none);  // three slips
  EXPECT_EQ(meant("abc"), none);     // too short to have one
  EXPECT_EQ(meant("a.csv"), "there is no such file: did you mean " + folder / "x.csv" + "?");
}
