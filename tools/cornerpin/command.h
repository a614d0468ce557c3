// SPDX-License-Identifier: BSD-3-Clause
#ifndef TOOLS_CORNERPIN_COMMAND_H
#define TOOLS_CORNERPIN_COMMAND_H

#include <functional>
#include <vector>

namespace CLI {
class App;
}

namespace cornerpin {

/// What the program ends with.
enum ExitCode { kSolved = 0, kFailure = 1, kUsage = 2, kUnreadable = 3, kDegraded = 4 };

/// An exit code for people: the help and the manual quote it.
struct ExitCodeText {
  ExitCode code;
  const char* text;
};
const std::vector<ExitCodeText>& exitCodeTexts();

/// What the help and the manual say of a command, beside its options. Lines are broken as the help
/// shows them; an empty line parts paragraphs. Each text ends with its last line's end.
struct CommandText {
  const char* name;     ///< empty for the program itself
  const char* summary;  ///< its line in the program's help, without a full stop
  const char* example;  ///< a whole command line
  const char* help;     ///< what most people need to know
  const char* details;  ///< the rest, in the manual and with --help-all
};

/// A subcommand: its part of the parser, and what it does once the arguments are parsed.
///
/// `run` returns the exit code; it throws `std::invalid_argument` for arguments that make no sense,
/// `shot::InputError` for input that is refused, and other exceptions for what went wrong.
struct Command {
  CLI::App* parser = nullptr;
  std::function<int()> run;
  const CommandText* text = nullptr;
};

/// Adds a subcommand's parser. The options that it is given from then on are shown by --help, until
/// `addMore` is called.
CLI::App& addParser(CLI::App& app, const CommandText& text);

/// The options that a parser is given from here on are shown by --help-all alone.
void addMore(CLI::App& parser);
constexpr const char* kMoreOptions = "More options";

}  // namespace cornerpin

#endif
