// SPDX-License-Identifier: BSD-3-Clause
#ifndef TOOLS_CORNERPIN_BATCH_COMMAND_H
#define TOOLS_CORNERPIN_BATCH_COMMAND_H

#include "tools/cornerpin/command.h"

namespace cornerpin {

/// `cornerpin batch`: solves many shots, several at a time.
Command addBatch(CLI::App& app);

}  // namespace cornerpin

#endif
