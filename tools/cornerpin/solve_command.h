// SPDX-License-Identifier: BSD-3-Clause
#ifndef TOOLS_CORNERPIN_SOLVE_COMMAND_H
#define TOOLS_CORNERPIN_SOLVE_COMMAND_H

#include "tools/cornerpin/command.h"

namespace cornerpin {

/// `cornerpin solve`: reads tracks, solves the shot, writes the transforms and prints a summary.
Command addSolve(CLI::App& app);

}  // namespace cornerpin

#endif
