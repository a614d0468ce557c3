// SPDX-License-Identifier: BSD-3-Clause
#include "show/endless_file.h"

#include <cornerpin/shot.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/support/files.h"

using namespace cornerpin;

TEST(EndlessFile, IsAPipeOrADevice) {
  const TemporaryFolder folder;
  writeFile(folder / "file", "");
  ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
  std::filesystem::create_symlink("pipe", folder / "link");
  for (const std::string& path : {folder / "pipe", folder / "link", std::string("/dev/zero")}) {
    EXPECT_TRUE(isEndless(path)) << path;
    EXPECT_THROW(refuseEndless(path), shot::InputError) << path;
  }
  for (const std::string& path : {folder / "file", folder / "none", folder.path().string()}) {
    EXPECT_FALSE(isEndless(path)) << path;
    EXPECT_NO_THROW(refuseEndless(path)) << path;
  }
}
