// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/lapack_info.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <string>

TEST(LapackInfo, NamesVersionAndFile) {
  const std::string info = cornerpin::lapackInfo();
  int major = 0, minor = 0, patch = 0, length = 0;
  ASSERT_EQ(std::sscanf(info.c_str(), "%d.%d.%d (%n", &major, &minor, &patch, &length), 3) << info;
  ASSERT_EQ(info.back(), ')');
  const std::string file = info.substr(static_cast<std::size_t>(length),
                                       info.size() - 1 - static_cast<std::size_t>(length));
  EXPECT_GE(major, 3);
  EXPECT_TRUE(std::filesystem::is_regular_file(file)) << info;
}
