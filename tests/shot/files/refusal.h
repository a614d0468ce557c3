// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SHOT_FILES_REFUSAL_H
#define TESTS_SHOT_FILES_REFUSAL_H

#include <string>

#include "shot/files/input_error.h"
#include "tests/support/files.h"

namespace cornerpin {

/// What is said, behind the file's name, where a file with this text is refused by who reads it.
template <class Read>
std::string refusalBy(const Read& read, const std::string& text) {
  const TemporaryFolder folder;
  writeFile(folder / "in", text);
  try {
    read(folder / "in");
  } catch (const InputError& error) {
    return std::string(error.what()).substr(error.file.size());
  }
  return "nothing thrown";
}

}  // namespace cornerpin

#endif
