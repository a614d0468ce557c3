// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/glob.h"

#include <fnmatch.h>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

using namespace cornerpin;

namespace {

bool matches(const char* pattern, const char* name) { return Glob(pattern).matches(name); }

std::string randomText(const std::vector<std::string>& parts, unsigned most, std::mt19937& random) {
  std::string text;
  const unsigned count = static_cast<unsigned>(random()) % (most + 1);
  for (unsigned i = 0; i < count; ++i) text += parts[random() % parts.size()];
  return text;
}

}  // namespace

TEST(Glob, TakesStarsMarksAndSets) {
  EXPECT_TRUE(matches("n*", "n"));
  EXPECT_TRUE(matches("n*", "n001"));
  EXPECT_FALSE(matches("n*", "an"));
  EXPECT_TRUE(matches("*a*b", "xxaybab"));
  EXPECT_FALSE(matches("*a*b", "ba"));
  EXPECT_TRUE(matches("t?", "t1"));
  EXPECT_FALSE(matches("t?", "t"));
  EXPECT_FALSE(matches("t?", "t12"));
  EXPECT_TRUE(matches("t[ab]", "tb"));
  EXPECT_TRUE(matches("t[1-4]", "t3"));
  EXPECT_FALSE(matches("t[1-4]", "t5"));
  EXPECT_TRUE(matches("t[!1-4]", "t5"));
  EXPECT_FALSE(matches("t[!1-4]", "t1"));
  EXPECT_TRUE(matches("t[", "t["));
  EXPECT_TRUE(matches("t[]]", "t]"));
}

TEST(Glob, CountsCharactersNotBytes) {
  EXPECT_TRUE(matches("t?", "t\u00e4"));
  EXPECT_FALSE(matches("t??", "t\u00e4"));
  EXPECT_TRUE(matches("t[\u00e0-\u00ff]", "t\u00e4"));
  EXPECT_FALSE(matches("t[\u00e0-\u00e3]", "t\u00e4"));
  EXPECT_TRUE(matches("?", "\U0001F600"));
  EXPECT_TRUE(matches("??", "\xff\xc3"));  // no UTF-8
  EXPECT_FALSE(matches("\xff", "\xc3"));
}

// But for sets that are never closed, in which systems differ.
TEST(Glob, AgreesWithTheSystems) {
  const std::vector<std::string> elements = {
      "a", "b", "c", "*", "*", "?", "[ab]", "[!a]", "[^b-]", "[a-c]", "[]a]", "[!]-c]", "-", "]"};
  std::mt19937 random(1);
  int matched = 0;
  for (int i = 0; i < 200000; ++i) {
    const std::string pattern = randomText(elements, 6, random);
    const std::string name = randomText({"a", "b", "c", "-", "!", "]"}, 6, random);
    const bool expected = ::fnmatch(pattern.c_str(), name.c_str(), FNM_NOESCAPE) == 0;
    ASSERT_EQ(Glob(pattern).matches(name), expected) << pattern << " of " << name;
    matched += expected;
  }
  EXPECT_GT(matched, 5000);
}

// Time like the product of the lengths, not like a power of the number of stars.
TEST(Glob, IsQuickWithManyStars) {
  std::string pattern;
  for (int i = 0; i < 40; ++i) pattern += "*a";
  EXPECT_FALSE(Glob(pattern + "b").matches(std::string(2000, 'a')));
}

TEST(Glob, KnowsAPattern) {
  for (const char* text : {"a*", "?", "[a]", "a["}) EXPECT_TRUE(Glob::isPattern(text));
  for (const char* text : {"", "a", "a]", "!"}) EXPECT_FALSE(Glob::isPattern(text));
}
