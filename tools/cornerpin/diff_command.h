// SPDX-License-Identifier: BSD-3-Clause
#ifndef TOOLS_CORNERPIN_DIFF_COMMAND_H
#define TOOLS_CORNERPIN_DIFF_COMMAND_H

#include "tools/cornerpin/command.h"

namespace cornerpin {

/// `cornerpin diff`: says how two results differ.
Command addDiff(CLI::App& app);

}  // namespace cornerpin

#endif
