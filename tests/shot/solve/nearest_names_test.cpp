// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/nearest_names.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

using namespace cornerpin;

namespace {

using Names = std::vector<std::string>;

// The definition, one step at a time.
std::size_t plainSlips(std::string_view a, std::string_view b) {
  if (a.empty() || b.empty()) return a.size() + b.size();
  const auto tail = [](std::string_view text, std::size_t n) { return text.substr(n); };
  const std::size_t other = plainSlips(tail(a, 1), tail(b, 1)) + (a[0] == b[0] ? 0 : 1);
  std::size_t slips =
      std::min({plainSlips(tail(a, 1), b) + 1, plainSlips(a, tail(b, 1)) + 1, other});
  if (a.size() > 1 && b.size() > 1 && a[0] == b[1] && a[1] == b[0]) {
    slips = std::min(slips, plainSlips(tail(a, 2), tail(b, 2)) + 1);
  }
  return slips;
}

}  // namespace

TEST(NearestNames, CountsSlips) {
  EXPECT_EQ(slipsBetween("solve", "solve"), 0u);
  EXPECT_EQ(slipsBetween("slove", "solve"), 1u);
  EXPECT_EQ(slipsBetween("", "abc"), 3u);
  EXPECT_EQ(slipsBetween("kitten", "sitting"), 3u);
  std::mt19937 random(1);
  const auto text = [&random] {
    std::string letters;
    const unsigned length = static_cast<unsigned>(random()) % 6;
    for (unsigned i = 0; i < length; ++i) letters += static_cast<char>('a' + random() % 3);
    return letters;
  };
  for (int i = 0; i < 500; ++i) {
    const std::string a = text();
    const std::string b = text();
    EXPECT_EQ(slipsBetween(a, b), plainSlips(a, b)) << a << " " << b;
  }
}

TEST(NearestNames, AreTheFewestSlipsAway) {
  const Names names = {"t100", "t001", "t010", "t011", "corner", "t0x1"};
  EXPECT_EQ(nearestNames("t0011", names), (Names{"t001", "t011", "t010"}));
  EXPECT_EQ(nearestNames("t0011", names, 1), (Names{"t001"}));
  EXPECT_EQ(nearestNames("Corner", names), (Names{"corner"}));
  EXPECT_EQ(nearestNames("sky", names), Names{});
  EXPECT_EQ(nearestNames("x", names), Names{});
  EXPECT_EQ(nearestNames("ab", {"cd", "b", "cb"}), (Names{"b", "cb"}));
}
