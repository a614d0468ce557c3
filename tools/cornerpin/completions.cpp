// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/completions.h"

#include <fmt/format.h>

#include "tools/cornerpin/option_list.h"
#include "tools/cornerpin/program.h"

namespace cornerpin {

namespace {

constexpr const char* kLicence = "# SPDX-License-Identifier: BSD-3-Clause\n";

std::string joined(const std::vector<std::string>& words, const char* between) {
  return fmt::format("{}", fmt::join(words, between));
}

std::string commandNamesOf(const Program& program) {
  std::vector<std::string> names;
  for (const Command& command : program.commands()) names.emplace_back(command.text->name);
  return joined(names, " ");
}

std::string optionNamesOf(const Command& command) {
  std::vector<std::string> names;
  for (const ListedOption& option : optionsOf(*command.parser)) {
    names.insert(names.end(), option.names.begin(), option.names.end());
  }
  return joined(names, " ");
}

std::string replaced(std::string text, const std::string& what, const std::string& by) {
  for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += by.size()) {
    text.replace(at, what.size(), by);
  }
  return text;
}

// What bash does for a value: words, files or nothing.
std::string bashValue(const ListedOption& option) {
  if (!option.choices.empty()) {
    return fmt::format("_cornerpin_words \"{}\"", joined(option.choices, " "));
  }
  return option.isFile ? "_cornerpin_files" : ":";
}

std::string bashCases(const Command& command) {
  std::string cases;
  for (const ListedOption& option : optionsOf(*command.parser)) {
    if (!option.takesValue()) continue;
    std::vector<std::string> patterns;
    for (const std::string& name : option.names) {
      patterns.push_back(fmt::format("{},{}", command.text->name, name));
    }
    cases += fmt::format("    {}) {}; return ;;\n", joined(patterns, " | "), bashValue(option));
  }
  cases += fmt::format("    {},*) options=\"{}\"", command.text->name, optionNamesOf(command));
  const std::vector<ListedOption> arguments = argumentsOf(*command.parser);
  if (!arguments.empty()) cases += " argument='" + bashValue(arguments.front()) + "'";
  return cases + " ;;\n";
}

// Quoted for zsh, in whose argument descriptions brackets and colons have a meaning.
std::string zshText(const std::string& text) {
  std::string safe = replaced(text, "'", "'\\''");
  for (const char* mark : {"[", "]", ":"}) safe = replaced(safe, mark, std::string("\\") + mark);
  return safe;
}

std::string zshValue(const ListedOption& option) {
  const std::string name = option.value.substr(0, option.value.find('='));
  if (!option.choices.empty()) {
    return fmt::format(":{}:({})", name, joined(option.choices, " "));
  }
  return fmt::format(":{}:{}", name, option.isFile ? "_files" : " ");
}

std::string zshOptions(const Command& command, const char* indent) {
  std::string lines;
  for (const ListedOption& option : optionsOf(*command.parser)) {
    for (const std::string& name : option.names) {
      const bool isLong = name[1] == '-';
      lines += fmt::format(" \\\n{}'*{}{}[{}]{}'", indent, name,
                           option.takesValue() && isLong ? "=" : "", zshText(option.text),
                           option.takesValue() ? zshText("").append(zshValue(option)) : "");
    }
  }
  return lines;
}

std::string zshCase(const Command& command) {
  std::string arguments;
  for (ListedOption argument : argumentsOf(*command.parser)) {
    argument.value = argument.names.front();
    arguments += fmt::format(" \\\n          '1{}'", zshValue(argument));
  }
  return fmt::format("        {})\n          _arguments{}{} ;;\n", command.text->name,
                     zshOptions(command, "          "), arguments);
}

std::string fishText(const std::string& text) {
  return "'" + replaced(replaced(text, "\\", "\\\\"), "'", "\\'") + "'";
}

std::string fishLine(const ListedOption& option, const std::string& condition) {
  std::string line = fmt::format("complete -c cornerpin -n {}", condition);
  for (const std::string& name : option.names) {
    line += name[1] == '-' ? " -l " + name.substr(2) : " -s " + name.substr(1);
  }
  if (option.takesValue()) line += option.isFile ? " -r -F" : " -x";
  if (!option.choices.empty()) line += " -a " + fishText(joined(option.choices, " "));
  return line + " -d " + fishText(option.text) + "\n";
}

}  // namespace

std::string bashCompletionsOf(const Program& program) {
  std::string cases;
  for (const Command& command : program.commands()) cases += bashCases(command);
  return kLicence + fmt::format(R"(
_cornerpin_words() {{
  mapfile -t COMPREPLY < <(compgen -W "$1" -- "$cur")
}}

_cornerpin_files() {{
  compopt -o filenames 2>/dev/null
  mapfile -t COMPREPLY < <(compgen -f -- "$cur")
}}

_cornerpin() {{
  local cur=${{COMP_WORDS[COMP_CWORD]}} prev=${{COMP_WORDS[COMP_CWORD - 1]}}
  local command= options="{}" argument='_cornerpin_words "{}"'
  COMPREPLY=()
  # --loss=tukey is three words here.
  if [ "$cur" = = ]; then
    cur=
  elif [ "$prev" = = ]; then
    prev=${{COMP_WORDS[COMP_CWORD - 2]}}
  fi
  if [ "$COMP_CWORD" -gt 1 ]; then command=${{COMP_WORDS[1]}}; fi
  case $command,$prev in
{}  esac
  case $cur in
    -*) _cornerpin_words "$options" ;;
    *) eval "$argument" ;;
  esac
}}

complete -F _cornerpin cornerpin
)",
                                optionNamesOf(program.itself()), commandNamesOf(program), cases);
}

std::string zshCompletionsOf(const Program& program) {
  std::string commands;
  std::string cases;
  for (const Command& command : program.commands()) {
    commands +=
        fmt::format("        '{}:{}'\n", command.text->name, zshText(command.text->summary));
    cases += zshCase(command);
  }
  return std::string("#compdef cornerpin\n") + kLicence +
         fmt::format(R"(
_cornerpin() {{
  local curcontext=$curcontext state line
  _arguments -C{} \
    '1:command:->command' \
    '*::argument:->argument'
  case $state in
    command)
      local -a commands=(
{}      )
      _describe command commands ;;
    argument)
      case $line[1] in
{}      esac ;;
  esac
}}

_cornerpin "$@"
)",
                     zshOptions(program.itself(), "    "), commands, cases);
}

std::string fishCompletionsOf(const Program& program) {
  std::string lines = std::string(kLicence) + "complete -c cornerpin -f\n";
  for (const ListedOption& option : optionsOf(*program.itself().parser)) {
    lines += fishLine(option, "__fish_use_subcommand");
  }
  for (const Command& command : program.commands()) {
    const std::string name = command.text->name;
    const std::string inside = fishText("__fish_seen_subcommand_from " + name);
    lines += fmt::format("complete -c cornerpin -n __fish_use_subcommand -a {} -d {}\n", name,
                         fishText(command.text->summary));
    for (const ListedOption& argument : argumentsOf(*command.parser)) {
      const std::string words = fishText(joined(argument.choices, " "));
      lines += fmt::format("complete -c cornerpin -n {} {}\n", inside,
                           argument.isFile ? "-F" : "-a " + words);
    }
    for (const ListedOption& option : optionsOf(*command.parser)) lines += fishLine(option, inside);
  }
  return lines;
}

}  // namespace cornerpin
