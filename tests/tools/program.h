// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_TOOLS_PROGRAM_H
#define TESTS_TOOLS_PROGRAM_H

#include <string>
#include <vector>

#include "tests/support/process.h"

inline const std::string kFacade = CORNERPIN_DATA "/facade.csv";

// Runs the program.
inline Outcome cornerpin(std::vector<std::string> arguments, const ChildOptions& options = {}) {
  arguments.insert(arguments.begin(), CORNERPIN_PROGRAM);
  return runProgram(arguments, options);
}

inline bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

#endif
