// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/number_text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "tests/shot/random.h"

using namespace cornerpin;

TEST(Shown, QuotesOnOneLineAndCutsBetweenCharacters) {
  EXPECT_EQ(shown("a"), "\"a\"");
  EXPECT_EQ(shown("a\nb\x7f"), "\"a?b?\"");
  EXPECT_EQ(shown(std::string(60, 'a')), "\"" + std::string(60, 'a') + "\"");
  EXPECT_EQ(shown(std::string(61, 'a')), "\"" + std::string(60, 'a') + "...\"");
  EXPECT_EQ(shown(std::string(59, 'a') + "\xC3\xBC"), "\"" + std::string(59, 'a') + "...\"");
}

TEST(Parse, TakesWholeTextsOnly) {
  double value = 0.0;
  EXPECT_EQ(parse(" +1.5e3\t", value), Parsed::Number);
  EXPECT_EQ(value, 1500.0);
  EXPECT_EQ(parse("1e999", value), Parsed::OutOfRange);
  for (const char* text : {"", "1 2", "1x", "+-1", "0x10", "1,5"}) {
    EXPECT_EQ(parse(text, value), Parsed::Nothing) << text;
  }
  std::int32_t whole = 0;
  EXPECT_EQ(parse("-2147483648", whole), Parsed::Number);
  EXPECT_EQ(whole, -2147483647 - 1);
  EXPECT_EQ(parse("2147483648", whole), Parsed::OutOfRange);
  EXPECT_EQ(parse("1.0", whole), Parsed::Nothing);
}

TEST(ParseFrame, TakesWholeNumbersHoweverTheyAreWritten) {
  std::int32_t frame = 0;
  for (const char* text : {"12", "12.0", "+12.", "1.2E+1", " 12.000\t"}) {
    frame = 0;
    EXPECT_EQ(parseFrame(text, frame), Parsed::Number) << text;
    EXPECT_EQ(frame, 12) << text;
  }
  EXPECT_EQ(parseFrame("-3.0", frame), Parsed::Number);
  EXPECT_EQ(frame, -3);
  for (const char* text : {"2147483648", "2147483648.0", "-1e30", "1e400"}) {
    EXPECT_NE(parseFrame(text, frame), Parsed::Number) << text;
  }
  for (const char* text : {"", "1.5", "nan", "inf", "1.0x", "1,0"}) {
    EXPECT_EQ(parseFrame(text, frame), Parsed::Nothing) << text;
  }
}

// The C library's conversion is correctly rounded.
TEST(ParsesPlain, GivesTheNearestDouble) {
  made::Random random(1);
  for (int i = 0; i < 20000; ++i) {
    std::string text = std::to_string(static_cast<std::int64_t>(random.real(0.0, 1e13)));
    const double place = random.real(0.0, static_cast<double>(text.size()));
    text.insert(static_cast<std::size_t>(place), ".");
    double value = 0.0;
    ASSERT_TRUE(parsesPlain(text, value)) << text;
    ASSERT_EQ(value, std::strtod(text.c_str(), nullptr)) << text;
  }
  double value = 0.0;
  EXPECT_TRUE(parsesPlain("-0.5", value));
  EXPECT_EQ(value, -0.5);
  for (const char* text : {"", "-", ".", "1e3", " 1", "1234567890123456", "nan"}) {
    EXPECT_FALSE(parsesPlain(text, value)) << text;
  }
}

TEST(ParsesPlain, TakesShortWholeNumbers) {
  std::int32_t value = -1;
  EXPECT_TRUE(parsesPlain("0", value));
  EXPECT_EQ(value, 0);
  EXPECT_TRUE(parsesPlain("000001001", value));
  EXPECT_EQ(value, 1001);
  EXPECT_TRUE(parsesPlain("999999999", value));
  EXPECT_EQ(value, 999999999);
  for (const char* text : {"", "-1", "+1", "1.0", " 1", "1 ", "1000000000", "0000000001", "a"}) {
    EXPECT_FALSE(parsesPlain(text, value)) << text;
  }
}

TEST(FlawOfPosition, IsWhatSinglePrecisionDoesNotHold) {
  EXPECT_EQ(flawOfPosition("x", "1", 1.0), "");
  EXPECT_EQ(flawOfPosition("x", "3.5e38", 3.5e38), "x is too large: \"3.5e38\"");
  EXPECT_EQ(flawOfPosition("x", "inf", HUGE_VAL), "x must be finite, not \"inf\"");
}

TEST(AppendDecimal, WritesTheShortestNumberWithoutAnExponent) {
  const auto decimal = [](auto number) {
    std::string text = "x";
    appendDecimal(text, number);
    return text;
  };
  EXPECT_EQ(decimal(0.1), "x0.1");
  EXPECT_EQ(decimal(-430.0), "x-430");
  EXPECT_EQ(decimal(1e-7), "x0.0000001");
  EXPECT_EQ(decimal(1e22), "x10000000000000000000000");
  EXPECT_EQ(decimal(616.02000000000001), "x616.02");
  EXPECT_EQ(decimal(0.1f), "x0.1");
  EXPECT_EQ(decimal(16777216.0f), "x16777216");
  for (const double number : {5e-324, -5e-324, 1.7976931348623157e308, 1.0 / 3.0, 2.0 / 3e5}) {
    const std::string text = decimal(number).substr(1);
    EXPECT_EQ(text.find_first_not_of("-0123456789."), std::string::npos) << text;
    double read = 0.0;
    EXPECT_EQ(parse(text, read), Parsed::Number);
    EXPECT_EQ(read, number);
  }
}

TEST(RoundedTo, KeepsSoManyDigits) {
  EXPECT_EQ(roundedTo(9, 1234.5678901234), 1234.56789);
  EXPECT_EQ(roundedTo(9, -1.23456789012e-7), -1.23456789e-7);
  EXPECT_EQ(roundedTo(9, 987654321987.0), 987654322000.0);
  EXPECT_EQ(roundedTo(3, 0.1), 0.1);
  EXPECT_EQ(roundedTo(1, 0.0), 0.0);
  EXPECT_EQ(roundedTo(9, HUGE_VAL), HUGE_VAL);
  EXPECT_TRUE(std::isnan(roundedTo(9, std::nan(""))));
}
