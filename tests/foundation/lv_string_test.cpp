// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/foundation/lv_string.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "tests/support/allocations.h"

namespace {

const char* const kLongText = "a text that is too long for a string without an allocation";

TEST(LvString, IsEmptyByDefault) {
  const LvString text;
  EXPECT_EQ(text.size(), 0u);
  EXPECT_STREQ(text.c_str(), "");
}

TEST(LvString, CopiesANulTerminatedText) {
  char source[] = "abc";
  const LvString text(source);
  source[0] = 'x';
  EXPECT_STREQ(text.c_str(), "abc");
  EXPECT_EQ(text.size(), 3u);
}

TEST(LvString, ANullPointerGivesTheEmptyText) {
  EXPECT_EQ(LvString(static_cast<const char*>(nullptr)).size(), 0u);
}

TEST(LvString, CopiesAreIndependent) {
  LvString first("abc");
  const LvString second(first);
  first.append("d");
  EXPECT_STREQ(second.c_str(), "abc");
}

TEST(LvString, AppendsANulTerminatedText) {
  LvString text("abc");
  text.append("def");
  EXPECT_STREQ(text.c_str(), "abcdef");
}

TEST(LvString, AppendsAnotherText) {
  LvString text("abc");
  text.append(LvString("def"));
  EXPECT_STREQ(text.c_str(), "abcdef");
}

TEST(LvString, AppendOfANullPointerChangesNothing) {
  LvString text("abc");
  text.append(static_cast<const char*>(nullptr));
  EXPECT_STREQ(text.c_str(), "abc");
}

TEST(LvString, AppendsItself) {
  LvString text("abcdefgh");
  text.append(text);
  text.append(text.c_str());
  EXPECT_STREQ(text.c_str(), "abcdefghabcdefghabcdefghabcdefgh");
}

TEST(LvString, FormatsIntoANewText) {
  EXPECT_STREQ(LvString::ssprintf("%s: bad parameter %d", "sgesvd", 4).c_str(),
               "sgesvd: bad parameter 4");
}

TEST(LvString, FormatsAnyLength) {
  const std::string wide(100000, 'w');
  EXPECT_EQ(LvString::ssprintf("%s%s", wide.c_str(), wide.c_str()).size(), 200000u);
}

TEST(LvString, FormatsTheEmptyText) { EXPECT_EQ(LvString::ssprintf("%s", "").size(), 0u); }

TEST(LvString, SprintfReplacesTheText) {
  LvString text("old");
  text.sprintf("%d-%d", 1, 2);
  EXPECT_STREQ(text.c_str(), "1-2");
}

TEST(LvString, SprintfMayReadTheOldText) {
  LvString text("old");
  text.sprintf("%s%s%s%s%s%s", text.c_str(), text.c_str(), text.c_str(), text.c_str(), text.c_str(),
               text.c_str());
  EXPECT_STREQ(text.c_str(), "oldoldoldoldoldold");
}

TEST(LvString, CreateCStrGivesACopyThatFreeReleases) {
  const LvString text("abc");
  char* const copy = text.createCStr();
  ASSERT_NE(copy, nullptr);
  EXPECT_NE(copy, text.c_str());
  EXPECT_STREQ(copy, "abc");
  std::free(copy);
}

TEST(LvString, CreateCStrOfTheEmptyTextIsNotNull) {
  char* const copy = LvString().createCStr();
  ASSERT_NE(copy, nullptr);
  EXPECT_STREQ(copy, "");
  std::free(copy);
}

TEST(LvString, ComparesByContent) {
  EXPECT_TRUE(LvString("a") == LvString("a"));
  EXPECT_TRUE(LvString("a") != LvString("b"));
}

TEST(LvString, KeepsItsTextWhenSprintfRunsOutOfMemory) {
  LvString text("old");
  {
    allocations::FailAt fail(1);
    EXPECT_THROW(text.sprintf("%s", kLongText), std::bad_alloc);
  }
  EXPECT_STREQ(text.c_str(), "old");
}

TEST(LvString, LeaksNothingWhicheverAllocationFails) {
  EXPECT_GE(allocations::expectNoLeakOnAnyFailure([] {
              LvString text(kLongText);
              LvString copy(text);
              copy.append(text);
              copy.append(LvString::ssprintf("%s", kLongText));
              copy.sprintf("%s", copy.c_str());
            }),
            5u);
}

}  // namespace
