// SPDX-License-Identifier: BSD-3-Clause
#include "shot/lapack_info.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>

TEST(LapackInfo, NamesVersionAndFile) {
  const std::string info = cornerpin::lapackInfo();
  std::smatch match;
  ASSERT_TRUE(std::regex_match(info, match, std::regex("[0-9]+\\.[0-9]+\\.[0-9]+ \\((.*)\\)"))) << info;
  EXPECT_TRUE(std::filesystem::is_regular_file(match[1].str())) << info;
}
