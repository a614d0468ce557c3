// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_INPUT_ERROR_H
#define SHOT_FILES_INPUT_ERROR_H

#include <cstdint>
#include <stdexcept>
#include <string>

namespace cornerpin {

/// Input that cannot be read or is refused. `what` is "FILE:LINE: text", or "FILE: text" where no
/// line is to blame.
class InputError : public std::runtime_error {
 public:
  InputError(const std::string& file, const std::string& text)
      : std::runtime_error(file + ": " + text), file(file) {}
  InputError(const std::string& file, std::uint32_t line, const std::string& text)
      : std::runtime_error(file + ":" + std::to_string(line) + ": " + text),
        file(file),
        line(line) {}

  std::string file;        ///< "<stdin>" for standard input
  std::uint32_t line = 0;  ///< from 1; 0 for none
};

}  // namespace cornerpin

#endif
