// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/colour.h"

#include <unistd.h>

#include <cstdlib>

namespace cornerpin {

bool isDumbTerminal() {
  const char* const terminal = std::getenv("TERM");
  return terminal != nullptr && std::string(terminal) == "dumb";
}

bool isColoured(Colour when, int file) {
  if (when != Colour::Auto) return when == Colour::Always;
  const char* const unwanted = std::getenv("NO_COLOR");
  return ::isatty(file) != 0 && !isDumbTerminal() && (unwanted == nullptr || *unwanted == '\0');
}

Mark doubtfulMark(Colour when, int file) {
  if (!isColoured(when, file)) return [](const std::string& text) { return text; };
  return [](const std::string& text) { return "\033[33m" + text + "\033[0m"; };
}

}  // namespace cornerpin
