// SPDX-License-Identifier: BSD-3-Clause
#include "show/wording.h"

#include <cornerpin/shot.h>
#include <fmt/format.h>

namespace cornerpin {

namespace {

constexpr std::size_t kShownLength = 60;  // bytes of a value

// Never a part of a UTF-8 character.
std::string beginningOf(const std::string& value) {
  const auto continues = [&](std::size_t i) { return (value[i] & 0xc0) == 0x80; };
  std::size_t length = kShownLength;
  while (length > kShownLength - 3 && continues(length)) --length;
  return value.substr(0, length);
}

}  // namespace

std::string lengthText(double pixels) {
  const bool large = pixels >= 999.5 && pixels < 1e6;
  return (large ? fmt::format("{:.0f}", pixels) : fmt::format("{:.3g}", pixels)) + " px";
}

std::string countText(std::size_t count, const std::string& noun) {
  return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

std::string inQuotes(const std::string& value) {
  if (value.size() <= kShownLength) return "\"" + shot::printable(value) + "\"";
  return "\"" + shot::printable(beginningOf(value)) + "...\"";
}

void refuseFile(const std::string& file, std::uint32_t line, const std::string& text) {
  const std::string where = line == 0 ? file : file + ":" + std::to_string(line);
  throw shot::InputError(where + ": " + text, file, line);
}

}  // namespace cornerpin
