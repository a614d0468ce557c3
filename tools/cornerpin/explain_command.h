// SPDX-License-Identifier: BSD-3-Clause
#ifndef TOOLS_CORNERPIN_EXPLAIN_COMMAND_H
#define TOOLS_CORNERPIN_EXPLAIN_COMMAND_H

#include "tools/cornerpin/command.h"

namespace cornerpin {

/// `cornerpin explain`: says how two results explainer.
Command addExplain(CLI::App& app);

}  // namespace cornerpin

#endif
