// SPDX-License-Identifier: BSD-3-Clause
#ifndef TOOLS_CORNERPIN_SOLVE_COMMAND_H
#define TOOLS_CORNERPIN_SOLVE_COMMAND_H

#include <string>
#include <vector>

#include "tools/cornerpin/command.h"

namespace cornerpin {

/// `cornerpin solve`: reads tracks, solves the shot, writes the transforms and prints a summary.
Command addSolve(CLI::App& app);

/// Refuses what cannot be behind `cornerpin solve`, as far as that is known before a file is read:
/// throws `std::invalid_argument`.
void checkSolveWords(std::vector<std::string> words);

}  // namespace cornerpin

#endif
