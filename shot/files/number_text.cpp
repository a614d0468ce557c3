// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/number_text.h"

#include <fmt/format.h>

#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

#include "shot/plane/picture.h"
#include "shot/solve/wording.h"

namespace cornerpin {

namespace {

// Of the smallest double, with its sign and 324 zeros in front of 17 digits.
constexpr std::size_t kLongestDecimal = 352;

// How much of the text is shown: never a part of a UTF-8 character.
std::size_t shownLength(std::string_view text) {
  if (text.size() <= kShownLength) return text.size();
  const auto continues = [&](std::size_t i) { return (text[i] & 0xc0) == 0x80; };
  std::size_t length = kShownLength;
  while (length > kShownLength - 3 && continues(length)) --length;
  return length;
}

template <class T>
Parsed parseBare(std::string_view text, T& value) {
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (stop == end && error == std::errc()) return Parsed::Number;
  const bool all = stop == end && error == std::errc::result_out_of_range;
  return all ? Parsed::OutOfRange : Parsed::Nothing;
}

template <class T>
Parsed parseWhole(std::string_view text, T& value) {
  if (parseBare(text, value) == Parsed::Number) return Parsed::Number;
  text = trimmed(text);
  if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
  return parseBare(text, value);
}

template <class T>
void appendFixed(std::string& text, T number) {
  std::array<char, kLongestDecimal> digits;
  char* const begin = digits.data();
  const auto written =
      std::to_chars(begin, begin + digits.size(), number, std::chars_format::fixed);
  text.append(begin, written.ptr);
}

}  // namespace

std::string shown(std::string_view value) {
  const std::string text = printable(value.substr(0, shownLength(value)));
  return "\"" + text + (value.size() > kShownLength ? "...\"" : "\"");
}

Parsed parse(std::string_view text, double& value) { return parseWhole(text, value); }
Parsed parse(std::string_view text, std::int32_t& value) { return parseWhole(text, value); }

Parsed parseFrame(std::string_view text, std::int32_t& frame) {
  const Parsed parsed = parse(text, frame);
  if (parsed != Parsed::Nothing) return parsed;
  double number = 0.0;
  const bool isNumber = parse(text, number) == Parsed::Number;
  if (!isNumber || !std::isfinite(number) || number != std::floor(number)) return Parsed::Nothing;
  if (std::fabs(number) > std::numeric_limits<std::int32_t>::max()) return Parsed::OutOfRange;
  frame = static_cast<std::int32_t>(number);
  return Parsed::Number;
}

void appendDecimal(std::string& text, double number) { appendFixed(text, number); }
void appendDecimal(std::string& text, float number) { appendFixed(text, number); }

double roundedTo(int digits, double number) {
  if (!std::isfinite(number)) return number;
  const std::string text = fmt::format("{:.{}g}", number, digits);
  parse(text, number);
  return number;
}

bool hasDecimalComma(std::string_view text) {
  std::string pointed(text);
  const std::size_t comma = pointed.find(',');
  if (comma == std::string::npos || comma + 1 == pointed.size()) return false;
  pointed[comma] = '.';
  double value = 0.0;
  return parse(pointed, value) == Parsed::Number;
}

std::string flawOfNumber(std::string_view name, std::string_view text, Parsed parsed) {
  if (parsed == Parsed::OutOfRange) return fmt::format("{} is out of range: {}", name, shown(text));
  return fmt::format("{} must be a number, not {}{}", name, shown(text),
                     hasDecimalComma(text) ? ": write a decimal point" : "");
}

std::string flawOfWholeNumber(std::string_view name, std::string_view text, Parsed parsed) {
  const bool isLarge = parsed == Parsed::OutOfRange;
  return fmt::format("{} {} {}", name, isLarge ? "is too large:" : "must be a whole number, not",
                     shown(text));
}

std::string flawOfFrame(std::string_view text, Parsed parsed, std::int32_t frame) {
  if (parsed != Parsed::Number) return flawOfWholeNumber("frame", text, parsed);
  const bool fits = -kFurthestFrame <= frame && frame <= kFurthestFrame;
  return fits ? "" : flawOfWholeNumber("frame", text, Parsed::OutOfRange);
}

std::string flawOfPosition(std::string_view name, std::string_view text, double number) {
  if (!std::isfinite(number)) return fmt::format("{} must be finite, not {}", name, shown(text));
  if (std::fabs(number) > static_cast<double>(std::numeric_limits<float>::max())) {
    return fmt::format("{} is too large: {}", name, shown(text));
  }
  return "";
}

}  // namespace cornerpin
