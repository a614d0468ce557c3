// SPDX-License-Identifier: BSD-3-Clause
#ifndef TOOLS_CORNERPIN_PROGRAM_H
#define TOOLS_CORNERPIN_PROGRAM_H

#include <CLI/CLI.hpp>
#include <vector>

#include "tools/cornerpin/command.h"

namespace cornerpin {

/// The program `cornerpin`: its options and its commands, for whoever runs it or describes it.
class Program {
 public:
  Program();
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  /// Does what a command line says, and returns the exit code. Says on standard error what is wrong
  /// with the command line itself; throws what commands throw (`Command`).
  int run(int argc, const char* const* argv);

  const Command& itself() const { return itself_; }
  const std::vector<Command>& commands() const { return commands_; }

 private:
  void addHelp();
  const Command* parsed() const;
  int printHelp(const Command* command, bool all) const;

  CLI::App app_;
  Command itself_;
  std::vector<Command> commands_;
  std::string helpAbout_;
};

}  // namespace cornerpin

#endif
