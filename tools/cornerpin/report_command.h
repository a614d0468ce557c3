// SPDX-License-Identifier: BSD-3-Clause
#ifndef TOOLS_CORNERPIN_REPORT_COMMAND_H
#define TOOLS_CORNERPIN_REPORT_COMMAND_H

#include "tools/cornerpin/command.h"

namespace cornerpin {

/// cornerpin report: writes a page that shows whether a result is good.
Command addReport(CLI::App& app);

}  // namespace cornerpin

#endif
