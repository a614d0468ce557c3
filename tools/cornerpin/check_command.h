// SPDX-License-Identifier: BSD-3-Clause
#ifndef TOOLS_CORNERPIN_CHECK_COMMAND_H
#define TOOLS_CORNERPIN_CHECK_COMMAND_H

#include "tools/cornerpin/command.h"

namespace cornerpin {

/// `cornerpin check`: says how two files of the same tracks or pins differ, and what explains it.
Command addCheck(CLI::App& app);

}  // namespace cornerpin

#endif
