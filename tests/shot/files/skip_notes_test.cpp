// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/skip_notes.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace cornerpin;

TEST(SkipNotes, NameTenOfAKind) {
  const std::string file = "f.nk";
  std::vector<std::string> all = {"first"};
  SkipNotes notes(file, all, {"nodes", "pins", "keys"});
  std::uint32_t texts = 0;
  for (std::uint32_t line = 1; line <= 12; ++line) {
    notes.add(0, line, [&] { return std::to_string(++texts); });
  }
  for (std::uint32_t line = 1; line <= 10; ++line)
    notes.add(1, line, [] { return std::string("pin"); });
  EXPECT_EQ(texts, 10u);
  ASSERT_EQ(all.size(), 21u);
  notes.close();
  ASSERT_EQ(all.size(), 22u);
  EXPECT_EQ(all[0], "first");
  EXPECT_EQ(all[10], "f.nk:10: 10");
  EXPECT_EQ(all[20], "f.nk:10: pin");
  EXPECT_EQ(all[21], "f.nk: and 2 more nodes");
}
