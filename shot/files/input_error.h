// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_INPUT_ERROR_H
#define SHOT_FILES_INPUT_ERROR_H

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace cornerpin {

/// Input that cannot be read or is refused. `what` is "FILE:LINE: text", or "FILE: text" where no
/// line is to blame; of several, one below the other, and file and line are the first one's.
class InputError : public std::runtime_error {
 public:
  InputError(const std::string& file, const std::string& text)
      : std::runtime_error(file + ": " + text), file(file) {}
  InputError(const std::string& file, std::uint32_t line, const std::string& text)
      : std::runtime_error(file + ":" + std::to_string(line) + ": " + text),
        file(file),
        line(line) {}
  explicit InputError(const std::vector<InputError>& several)
      : std::runtime_error(joined(several)),
        file(several.front().file),
        line(several.front().line) {}

  std::string file;        ///< "<stdin>" for standard input
  std::uint32_t line = 0;  ///< from 1; 0 for none

 private:
  static std::string joined(const std::vector<InputError>& several) {
    std::string text;
    for (const InputError& error : several)
      text += (text.empty() ? "" : "\n") + std::string(error.what());
    return text;
  }
};

}  // namespace cornerpin

#endif
