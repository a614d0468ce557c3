// SPDX-License-Identifier: BSD-3-Clause
#ifndef TOOLS_CORNERPIN_USAGE_ERROR_H
#define TOOLS_CORNERPIN_USAGE_ERROR_H

#include <string>
#include <vector>

#include "tools/cornerpin/command.h"

namespace CLI {
class ParseError;
}

namespace cornerpin {

/// A command line and the parser after it was refused.
struct UsedParser {
  const Command& program;
  const std::vector<Command>& commands;
  const Command* command;  ///< that was parsed; null for none
  const std::vector<std::string>& words;
};

/// What is wrong with the command line, and what to type instead.
std::string textOf(const CLI::ParseError& error, const UsedParser& parser);

}  // namespace cornerpin

#endif
