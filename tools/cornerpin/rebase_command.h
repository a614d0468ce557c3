// SPDX-License-Identifier: BSD-3-Clause
#ifndef TOOLS_CORNERPIN_REBASE_COMMAND_H
#define TOOLS_CORNERPIN_REBASE_COMMAND_H

#include "tools/cornerpin/command.h"

namespace cornerpin {

/// `cornerpin rebase`: reads a result and writes it relative to another frame.
Command addRebase(CLI::App& app);

}  // namespace cornerpin

#endif
