// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/csv_text.h"

#include <fmt/format.h>

#include <cmath>

namespace cornerpin {

std::string csvNumber(double value) {
  return std::isfinite(value) ? fmt::format("{}", value) : std::string();
}

std::string csvText(const std::string& text) {
  if (text.empty()) return text;
  const bool blank =
      text.front() == ' ' || text.front() == '\t' || text.back() == ' ' || text.back() == '\t';
  if (!blank && text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (char c : text) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
  return quoted + "\"";
}

}  // namespace cornerpin
