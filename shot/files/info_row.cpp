// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/info_row.h"

#include <fmt/format.h>

namespace cornerpin {

std::string infoRow(const std::string& label, const std::string& text) {
  return fmt::format("{:<14}{}\n", label, text);
}

std::string fileRows(const FileLook& look, const std::string& kind) {
  return infoRow("file", look.name) +
         infoRow("", fmt::format("{}{}, {}", kind, look.packed ? ", packed with gzip" : "",
                                 sizeText(look.bytes)));
}

}  // namespace cornerpin
