// SPDX-License-Identifier: BSD-3-Clause
#ifndef TOOLS_CORNERPIN_COMPLETIONS_H
#define TOOLS_CORNERPIN_COMPLETIONS_H

#include <string>

/// What shells complete: commands, options, their choices, and names of files.
namespace cornerpin {

class Program;

std::string bashCompletionsOf(const Program& program);
std::string zshCompletionsOf(const Program& program);
std::string fishCompletionsOf(const Program& program);

}  // namespace cornerpin

#endif
