// SPDX-License-Identifier: BSD-3-Clause
#ifndef TOOLS_CORNERPIN_HELP_TEXT_H
#define TOOLS_CORNERPIN_HELP_TEXT_H

#include <string>
#include <vector>

#include "tools/cornerpin/command.h"

namespace cornerpin {

/// What a command's --help prints, or its --help-all.
std::string helpOf(const Command& command, bool all);

/// The same of the program, which lists the commands; --help-all has the help of them all behind
/// it.
std::string helpOf(const Command& program, const std::vector<Command>& commands, bool all);

/// How a command is called: "cornerpin solve [OPTIONS] tracks".
std::string usageOf(const Command& command);

}  // namespace cornerpin

#endif
