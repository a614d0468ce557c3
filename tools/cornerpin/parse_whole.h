// SPDX-License-Identifier: BSD-3-Clause
#ifndef TOOLS_CORNERPIN_PARSE_WHOLE_H
#define TOOLS_CORNERPIN_PARSE_WHOLE_H

#include <charconv>
#include <optional>
#include <string>
#include <system_error>

namespace cornerpin {

/// The whole text as a number; none where anything else stands in it.
template <class Number>
std::optional<Number> parseWhole(const std::string& text) {
  Number number = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && stop == end ? std::optional<Number>(number) : std::nullopt;
}

}  // namespace cornerpin

#endif
