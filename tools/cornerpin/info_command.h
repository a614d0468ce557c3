// SPDX-License-Identifier: BSD-3-Clause
#ifndef TOOLS_CORNERPIN_INFO_COMMAND_H
#define TOOLS_CORNERPIN_INFO_COMMAND_H

#include "tools/cornerpin/command.h"

namespace cornerpin {

/// `cornerpin info`: says what a file of tracks or a result is.
Command addInfo(CLI::App& app);

}  // namespace cornerpin

#endif
