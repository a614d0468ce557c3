// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/csv_text.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace cornerpin;

TEST(CsvNumber, IsTheShortestThatReadsBack) {
  EXPECT_EQ(csvNumber(0.1), "0.1");
  EXPECT_EQ(csvNumber(1.0 / 3.0), "0.3333333333333333");
  EXPECT_EQ(csvNumber(-2.0), "-2");
  EXPECT_EQ(csvNumber(5e-324), "5e-324");
}

TEST(CsvNumber, IsEmptyWhereThereIsNone) {
  EXPECT_EQ(csvNumber(std::nan("")), "");
  EXPECT_EQ(csvNumber(HUGE_VAL), "");
  EXPECT_EQ(csvNumber(-HUGE_VAL), "");
}

TEST(CsvText, StandsAsItIsWhereItCan) {
  for (const char* text : {"", "t042", "a b", "a;b:c", "'a'", "\u00fc"}) {
    EXPECT_EQ(csvText(text), text);
  }
}

TEST(CsvText, IsQuotedWhereItEndsAFieldOrALine) {
  EXPECT_EQ(csvText("a,b"), "\"a,b\"");
  EXPECT_EQ(csvText("a\nb"), "\"a\nb\"");
  EXPECT_EQ(csvText("a\r"), "\"a\r\"");
}

TEST(CsvText, DoublesQuotes) {
  EXPECT_EQ(csvText("\""), "\"\"\"\"");
  EXPECT_EQ(csvText("a\"b\""), "\"a\"\"b\"\"\"");
}

// Readers drop blanks around what is not quoted.
TEST(CsvText, IsQuotedWhereABlankStandsAtAnEnd) {
  EXPECT_EQ(csvText(" a"), "\" a\"");
  EXPECT_EQ(csvText("\ta"), "\"\ta\"");
  EXPECT_EQ(csvText("a "), "\"a \"");
  EXPECT_EQ(csvText("a\t"), "\"a\t\"");
  EXPECT_EQ(csvText(" "), "\" \"");
}
