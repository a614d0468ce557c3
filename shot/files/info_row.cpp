// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/info_row.h"

#include <fmt/format.h>

#include <cstddef>

#include "shot/solve/wording.h"

namespace cornerpin {

std::string infoRow(const std::string& label, const std::string& text) {
  return fmt::format("{:<14}{}\n", label, printable(text));
}

std::string fileRows(const FileLook& look, const std::string& kind) {
  return infoRow("file", look.name) +
         infoRow("", fmt::format("{}{}, {}", kind, look.packed ? ", packed with gzip" : "",
                                 sizeText(look.bytes)));
}

std::string describe(const ProgramVersion& program) {
  return fmt::format("{} {}{}", program.name, program.version,
                     program.commit.empty() ? "" : ", commit " + program.commit);
}

std::string describe(const InputFile& input) {
  return fmt::format("{}, {}{}", input.name.empty() ? "a pipe" : input.name,
                     counted(static_cast<std::size_t>(input.rows), "row"),
                     input.sha256.empty() ? "" : ", SHA-256 " + input.sha256);
}

}  // namespace cornerpin
