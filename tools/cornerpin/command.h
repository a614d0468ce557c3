// SPDX-License-Identifier: BSD-3-Clause
#ifndef TOOLS_CORNERPIN_COMMAND_H
#define TOOLS_CORNERPIN_COMMAND_H

#include <functional>

namespace CLI {
class App;
}

namespace cornerpin {

/// What the program ends with.
enum ExitCode { kSolved = 0, kFailure = 1, kUsage = 2, kUnreadable = 3, kDegraded = 4 };

/// A subcommand: its part of the parser, and what it does once the arguments are parsed.
///
/// `run` returns the exit code; it throws `std::invalid_argument` for arguments that make no sense,
/// `InputError` for input that is refused, and other exceptions for what went wrong.
struct Command {
  CLI::App* parser = nullptr;
  std::function<int()> run;
};

/// Adds a subcommand's parser. The program's help lists it with the summary; the subcommand's own
/// help opens with `help` and closes with its exit codes.
CLI::App& addParser(CLI::App& app, const char* name, const char* summary, const char* help,
                    const char* exitCodes);

}  // namespace cornerpin

#endif
