// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/help_text.h"

#include <fmt/format.h>

#include "tools/cornerpin/option_list.h"

namespace cornerpin {

namespace {

constexpr std::size_t kColumn = 23;  // of the texts

// "  -o,--output FILE   Write ...", on two lines where the name is long.
std::string line(const std::string& name, const std::string& text) {
  const std::string start = "  " + name;
  if (start.size() < kColumn) return fmt::format("{:<{}}{}\n", start, kColumn, text);
  return fmt::format("{}\n{:<{}}{}\n", start, "", kColumn, text);
}

std::string line(const ListedOption& option, bool named) {
  std::string name = fmt::format("{}", fmt::join(option.names, ","));
  if (named && option.takesValue()) name += " " + option.value;
  return line(name, option.text);
}

std::string arguments(const Command& command) {
  std::string lines;
  for (const ListedOption& argument : argumentsOf(*command.parser)) lines += line(argument, false);
  return lines.empty() ? "" : "\nArguments:\n" + lines;
}

std::string options(const Command& command, bool all) {
  std::string common;
  std::string more;
  for (const ListedOption& option : optionsOf(*command.parser)) {
    (option.common ? common : more) += line(option, true);
  }
  std::string text = "\nOptions:\n" + common;
  if (more.empty()) return text;
  return text +
         (all ? "\nMore options:\n" + more
              : fmt::format("\nMore options, and what all of them mean: cornerpin {} --help-all\n",
                            command.text->name));
}

std::string exitCodes() {
  std::string lines = "\nExit codes:\n";
  for (const ExitCodeText& code : exitCodeTexts()) {
    std::string text = code.text;
    const std::size_t end = text.find('\n');
    if (end != std::string::npos) text.insert(end + 1, "     ");
    lines += fmt::format("  {}  {}\n", static_cast<int>(code.code), text);
  }
  return lines;
}

std::string opening(const Command& command, bool all) {
  std::string text = fmt::format("Example: {}\n\n{}", command.text->example, command.text->help);
  if (all && *command.text->details != '\0') text += fmt::format("\n{}", command.text->details);
  return text + "\nUsage: " + usageOf(command) + "\n";
}

}  // namespace

std::string usageOf(const Command& command) {
  const bool isProgram = *command.text->name == '\0';
  std::string usage =
      isProgram ? "cornerpin COMMAND" : fmt::format("cornerpin {}", command.text->name);
  usage += " [OPTIONS]";
  for (const ListedOption& argument : argumentsOf(*command.parser)) {
    const std::string& name = argument.names.front();
    usage += argument.required ? " " + name : " [" + name + "]";
  }
  return usage;
}

std::string helpOf(const Command& command, bool all) {
  return opening(command, all) + arguments(command) + options(command, all) + exitCodes();
}

std::string helpOf(const Command& program, const std::vector<Command>& commands, bool all) {
  std::string text = opening(program, all) + "\nCommands:\n";
  for (const Command& command : commands) text += line(command.text->name, command.text->summary);
  text += options(program, all);
  if (!all) return text + exitCodes();
  for (const Command& command : commands) {
    text += fmt::format("\n\ncornerpin {}\n\n{}{}{}", command.text->name, opening(command, true),
                        arguments(command), options(command, true));
  }
  return text + exitCodes();
}

}  // namespace cornerpin
