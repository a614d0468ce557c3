// SPDX-License-Identifier: BSD-3-Clause
#include "show/digest.h"

#include <gtest/gtest.h>

#include <sstream>

using namespace cornerpin;

// Examples of the standard.
TEST(Sha256Of, IsThatOfAllBytes) {
  std::istringstream none;
  EXPECT_EQ(sha256Of(none), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
  std::istringstream many(std::string(1'000'000, 'a'));
  EXPECT_EQ(sha256Of(many), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}
