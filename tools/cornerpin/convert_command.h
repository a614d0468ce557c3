// SPDX-License-Identifier: BSD-3-Clause
#ifndef TOOLS_CORNERPIN_CONVERT_COMMAND_H
#define TOOLS_CORNERPIN_CONVERT_COMMAND_H

#include "tools/cornerpin/command.h"

namespace cornerpin {

/// `cornerpin convert`: writes tracks, a pin or a result in another format.
Command addConvert(CLI::App& app);

}  // namespace cornerpin

#endif
