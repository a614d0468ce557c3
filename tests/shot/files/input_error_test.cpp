// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/input_error.h"

#include <gtest/gtest.h>

using namespace cornerpin;

TEST(InputError, NamesFileAndLine) {
  const InputError error("shot.csv", 12, "the row has 4 fields");
  EXPECT_STREQ(error.what(), "shot.csv:12: the row has 4 fields");
  EXPECT_EQ(error.file, "shot.csv");
  EXPECT_EQ(error.line, 12u);
}

TEST(InputError, NamesSeveralOneBelowTheOther) {
  const InputError error({InputError("a.csv", 3, "bad"), InputError("a.csv", "worse")});
  EXPECT_STREQ(error.what(), "a.csv:3: bad\na.csv: worse");
  EXPECT_EQ(error.file, "a.csv");
  EXPECT_EQ(error.line, 3u);
}

TEST(InputError, NamesTheFileAloneWhereNoLineIsToBlame) {
  const InputError error("shot.csv", "the file is empty");
  EXPECT_STREQ(error.what(), "shot.csv: the file is empty");
  EXPECT_EQ(error.file, "shot.csv");
  EXPECT_EQ(error.line, 0u);
}
