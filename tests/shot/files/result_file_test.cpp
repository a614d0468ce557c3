// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/result_file.h"

#include <gtest/gtest.h>

#include <optional>

using namespace cornerpin;

TEST(FormatOf, GoesByTheExtensionInAnyCase) {
  EXPECT_EQ(formatOf("a/b.json"), Format::Json);
  EXPECT_EQ(formatOf("b.CSV"), Format::Csv);
  EXPECT_EQ(formatOf("b.txt"), std::nullopt);
  EXPECT_EQ(formatOf("json"), std::nullopt);
  EXPECT_EQ(formatOf("a.json/b"), std::nullopt);
}
