// SPDX-License-Identifier: BSD-3-Clause
#include "shot/report/gzip.h"

#include <gtest/gtest.h>

#include "tests/shot/report/unpacked.h"

using namespace cornerpin;

TEST(Gzip, IsReadAgain) {
  std::string mixed;
  for (unsigned i = 0; i < 300'000; ++i)
    mixed += static_cast<char>(i % 7 == 0 ? i * 2654435761u >> 24 : 'a');
  for (const std::string& text : {std::string(), std::string("a"), mixed})
    EXPECT_EQ(unpacked(gzip(text)), text);
}

TEST(Gzip, IsTheSameWheneverItIsDone) {
  EXPECT_EQ(gzip("the same"), gzip("the same"));
  // Bytes 4 to 7 are the time.
  EXPECT_EQ(gzip("text").substr(4, 4), std::string(4, '\0'));
}
