// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/suggestion.h"

#include <gtest/gtest.h>

using cornerpin::suggestionFor;

TEST(SuggestionFor, FindsTheWordOneTypingErrorAway) {
  const std::vector<std::string> known = {"solve", "rebase", "help"};
  for (const char* word : {"slove", "solv", "solvee", "zolve", "sovle", "solce"}) {
    EXPECT_EQ(suggestionFor(word, known), "solve") << word;
  }
  EXPECT_EQ(suggestionFor("hlep", known), "help");
}

TEST(SuggestionFor, AllowsAnErrorInThreeLetters) {
  EXPECT_EQ(suggestionFor("refrence", {"--reference"}), "--reference");
  EXPECT_EQ(suggestionFor("rfrence", {"--reference"}), "--reference");  // seven letters, two errors
  EXPECT_EQ(suggestionFor("rfrnce", {"--reference"}), "");              // six letters, three errors
  EXPECT_EQ(suggestionFor("at", {"it"}), "");
  EXPECT_EQ(suggestionFor("dance", {"solve", "rebase", "help"}), "");
}

TEST(SuggestionFor, CountsNeitherCaseNorDashes) {
  EXPECT_EQ(suggestionFor("-json", {"--loss", "--json"}), "--json");
  EXPECT_EQ(suggestionFor("--JSON", {"--loss", "--json"}), "--json");
  EXPECT_EQ(suggestionFor("--o", {"--at", "-o", "--output"}), "-o");
  EXPECT_EQ(suggestionFor("version", {"-V", "--version"}), "--version");
  EXPECT_EQ(suggestionFor("--", {"--at"}), "");
  EXPECT_EQ(suggestionFor("", {"--at"}), "");
}

TEST(SuggestionFor, TakesThreeLettersForTheFirstWordThatTheyBegin) {
  EXPECT_EQ(suggestionFor("--ref", {"--base", "--reference"}), "--reference");
  EXPECT_EQ(suggestionFor("--thr", {"--strict", "--threads"}), "--threads");
  EXPECT_EQ(suggestionFor("--th", {"--strict", "--threads"}), "");
}

TEST(SuggestionFor, PrefersTheNearest) {
  EXPECT_EQ(suggestionFor("--quads", {"--quad", "--quads"}), "--quads");
  EXPECT_EQ(suggestionFor("--bases", {"--base-only", "--base"}), "--base");
}
