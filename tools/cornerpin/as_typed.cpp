// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/as_typed.h"

#include <cstring>

namespace cornerpin {

std::string textAsTyped(const std::string& text) {
  struct Name {
    const char* inHeader;
    const char* before;
    const char* behind;
  };
  constexpr Name kNames[] = {{"at: ", "--at: ", ""},
                             {"fps: ", "", ": add --fps"},
                             {"frames: ", "--frames: ", ""},
                             {"pictures: ", "--pictures: ", ""},
                             {"quads: ", "", ""}};
  for (const auto& [name, before, behind] : kNames) {
    if (text.rfind(name, 0) == 0) return before + text.substr(std::strlen(name)) + behind;
  }
  return text;
}

}  // namespace cornerpin
