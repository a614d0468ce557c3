// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/doubt.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace cornerpin;

// The words are part of the files.
TEST(DoubtCodes, HaveTheirWords) {
  std::vector<std::string> words;
  for (DoubtCode code : kDoubtCodes) words.emplace_back(nameOf(code));
  EXPECT_EQ(words,
            (std::vector<std::string>{"expected-error", "no-figures", "nothing-to-check", "chance",
                                      "budget", "rival", "jump", "reduced", "held"}));
}
