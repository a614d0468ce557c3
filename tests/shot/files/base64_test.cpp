// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/base64.h"

#include <gtest/gtest.h>

using namespace cornerpin;

// The examples of RFC 4648.
TEST(Base64, IsAsTheStandardSays) {
  EXPECT_EQ(base64(""), "");
  EXPECT_EQ(base64("f"), "Zg==");
  EXPECT_EQ(base64("fo"), "Zm8=");
  EXPECT_EQ(base64("foo"), "Zm9v");
  EXPECT_EQ(base64("foob"), "Zm9vYg==");
  EXPECT_EQ(base64("fooba"), "Zm9vYmE=");
  EXPECT_EQ(base64("foobar"), "Zm9vYmFy");
}

TEST(Base64, TakesAllBytesAndPutsThemOnOneLine) {
  EXPECT_EQ(base64(std::string("\0\xff\xfe", 3)), "AP/+");
  const std::string text = base64(std::string(3 << 20, '\0'));
  EXPECT_EQ(text, std::string(4 << 20, 'A'));
}
