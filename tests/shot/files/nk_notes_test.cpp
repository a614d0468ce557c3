// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/nk_notes.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace cornerpin;

TEST(NkNotes, NameTenOfAKind) {
  const std::string file = "f.nk";
  std::vector<std::string> all = {"first"};
  NkNotes notes(file, all);
  std::uint32_t texts = 0;
  for (std::uint32_t line = 1; line <= 12; ++line) {
    notes.add(NkNotes::About::Nodes, line, [&] { return std::to_string(++texts); });
  }
  for (std::uint32_t line = 1; line <= 10; ++line)
    notes.add(NkNotes::About::Pins, line, [] { return std::string("pin"); });
  EXPECT_EQ(texts, 10u);
  ASSERT_EQ(all.size(), 21u);
  notes.close();
  ASSERT_EQ(all.size(), 22u);
  EXPECT_EQ(all[0], "first");
  EXPECT_EQ(all[10], "f.nk:10: 10");
  EXPECT_EQ(all[20], "f.nk:10: pin");
  EXPECT_EQ(all[21], "f.nk: and 2 more nodes");
}
