// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_NUMBER_TEXT_H
#define SHOT_FILES_NUMBER_TEXT_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// Numbers in text files, read alike in every locale.
namespace cornerpin {

/// Without the blanks and tabs at both ends.
inline std::string_view trimmed(std::string_view text) {
  const auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
  return text;
}

/// A value as messages show it: in quotes, on one line, at most `kShownLength` bytes of it.
std::string shown(std::string_view value);
constexpr std::size_t kShownLength = 60;

enum class Parsed { Number, OutOfRange, Nothing };

/// The whole text as a number; blanks around it and a leading plus are fine.
Parsed parse(std::string_view text, double& value);
Parsed parse(std::string_view text, std::int32_t& value);

/// A frame's number; programs that count in floating point write whole ones such as `12.0`.
Parsed parseFrame(std::string_view text, std::int32_t& frame);

/// Whether a number becomes of it with a point in place of a comma.
bool hasDecimalComma(std::string_view text);

constexpr std::size_t kExactDigits = 15;
constexpr std::array<double, kExactDigits> kPowersOfTen = {
    1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14};

/// Takes digits off the front of the text and appends them to the number; how many.
inline std::size_t takeDigits(std::string_view& text, std::int64_t& number) {
  std::size_t count = 0;
  for (; count < text.size() && text[count] >= '0' && text[count] <= '9'; ++count) {
    number = 10 * number + (text[count] - '0');
  }
  text.remove_prefix(count);
  return count;
}

/// A short decimal number without an exponent; false for all else. A double holds its digits and
/// the power of ten below them exactly, so that their quotient is the double nearest to the number,
/// as `parse` gives it, in a fraction of the time.
inline bool parsesPlain(std::string_view text, double& value) {
  const bool negative = !text.empty() && text[0] == '-';
  if (negative) text.remove_prefix(1);
  if (text.size() > kExactDigits) return false;
  std::int64_t digits = 0;
  const std::size_t whole = takeDigits(text, digits);
  if (!text.empty() && text[0] == '.') text.remove_prefix(1);
  const std::size_t decimals = takeDigits(text, digits);
  if (!text.empty() || whole + decimals == 0) return false;
  value = static_cast<double>(digits) / kPowersOfTen[decimals];
  if (negative) value = -value;
  return true;
}

/// A whole number of at most nine digits without a sign, which is a frame (`flawOfFrame`); false
/// for all else.
inline bool parsesPlain(std::string_view text, std::int32_t& value) {
  constexpr std::size_t kShort = 9;
  std::int64_t digits = 0;
  if (text.empty() || text.size() > kShort) return false;
  takeDigits(text, digits);
  value = static_cast<std::int32_t>(digits);
  return text.empty();
}

/// Appends the number as the shortest decimal without an exponent that reads back as the same.
void appendDecimal(std::string& text, double number);
void appendDecimal(std::string& text, float number);

/// The number nearest to it that so many decimal digits can tell; what is not finite stays.
double roundedTo(int digits, double number);

/// What is wrong with a text that did not parse as a number of this name, with the text: `x must be
/// a number, not "a"`.
std::string flawOfNumber(std::string_view name, std::string_view text, Parsed parsed);

/// The same for whole numbers, such as frames.
std::string flawOfWholeNumber(std::string_view name, std::string_view text, Parsed parsed);

/// The same for frames, which lie between `kFurthestFrame` and its negative; empty for those.
std::string flawOfFrame(std::string_view text, Parsed parsed, std::int32_t frame);

/// What is wrong with a position, with its text; empty where it is finite and single precision, in
/// which the library computes, holds it.
std::string flawOfPosition(std::string_view name, std::string_view text, double number);

}  // namespace cornerpin

#endif
