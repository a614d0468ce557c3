// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/refused_rows.h"

#include <gtest/gtest.h>

#include <string>

using namespace cornerpin;

namespace {

std::string raised(const RefusedRows& rows) {
  try {
    rows.raise();
  } catch (const InputError& error) {
    return error.what();
  }
  return "nothing";
}

RefusedRows refused(unsigned count) {
  RefusedRows rows;
  for (unsigned i = 0; i < count; ++i) rows.add({"a.csv", i + 2, "bad"});
  return rows;
}

std::string lines(unsigned count) {
  std::string text;
  for (unsigned i = 0; i < count; ++i) {
    text += (i > 0 ? "\na.csv:" : "a.csv:") + std::to_string(i + 2) + ": bad";
  }
  return text;
}

}  // namespace

TEST(RefusedRows, RaisesNothingWhereNoRowWasRefused) { EXPECT_EQ(raised({}), "nothing"); }

TEST(RefusedRows, NamesTenAndCountsTheRest) {
  EXPECT_EQ(raised(refused(1)), lines(1));
  EXPECT_EQ(raised(refused(10)), lines(10));
  EXPECT_EQ(raised(refused(11)), lines(10) + "\na.csv: 1 more row is refused");
  EXPECT_EQ(raised(refused(1000)), lines(10) + "\na.csv: 990 more rows are refused");
}

TEST(RefusedRows, NamesWhatCameLastWhateverCameBefore) {
  RefusedRows rows = refused(12);
  rows.addLast({"a.csv", 99, "a quote is never closed"});
  EXPECT_EQ(raised(rows), lines(10) +
                              "\na.csv: 2 more rows are refused\n"
                              "a.csv:99: a quote is never closed");
  RefusedRows alone;
  alone.addLast({"a.csv", "Is a directory"});
  EXPECT_EQ(raised(alone), "a.csv: Is a directory");
}

TEST(RefusedRows, EndWithTheFileWhereThereAreTooMany) {
  RefusedRows rows = refused(10 + 10000);
  EXPECT_EQ(raised(rows), lines(10) + "\na.csv: 10000 more rows are refused");
  const std::string all =
      lines(10) + "\na.csv: 10000 more rows are refused, and what follows is not read";
  try {
    rows.add({"a.csv", 99999, "bad"});
    FAIL();
  } catch (const InputError& error) {
    EXPECT_EQ(error.what(), all);
    rows.addLast(error);
  }
  EXPECT_EQ(raised(rows), all);
}

TEST(RefusedRows, KeepsFileAndLineOfTheFirst) {
  try {
    refused(3).raise();
    FAIL();
  } catch (const InputError& error) {
    EXPECT_EQ(error.file, "a.csv");
    EXPECT_EQ(error.line, 2u);
  }
}
