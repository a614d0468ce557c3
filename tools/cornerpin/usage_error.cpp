// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/usage_error.h"

#include <cornerpin/shot.h>
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <system_error>

#include "tools/cornerpin/option_list.h"
#include "tools/cornerpin/suggestion.h"

namespace cornerpin {

namespace {

using Words = std::vector<std::string>;

bool isOption(const std::string& word) { return word.size() > 1 && word.front() == '-'; }

// "--base" of "--base=5".
std::string nameIn(const std::string& word) { return word.substr(0, word.find('=')); }

// A command line that starts with a command and has these words behind it.
std::string lineOf(const std::string& command, const Words& words) {
  std::string line = "cornerpin " + command;
  for (const std::string& word : words) line += " " + shot::shellWord(word);
  return line;
}

bool endsIn(const std::string& text, const std::string& end) {
  return text.size() > end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

bool isFile(const std::string& word) {
  std::error_code ignored;
  for (const char* end : {".csv", ".csv.gz", ".txt", ".tsv", ".json"}) {
    if (endsIn(word, end)) return true;
  }
  return std::filesystem::is_regular_file(word, ignored);
}

Words optionNamesOf(const Command& command) {
  Words names;
  for (const ListedOption& option : optionsOf(*command.parser)) {
    names.insert(names.end(), option.names.begin(), option.names.end());
  }
  return names;
}

bool has(const Words& words, const std::string& word) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

// Where to look things up.
std::string seeHelp(const Command* command) {
  return command == nullptr ? "see cornerpin --help"
                            : fmt::format("see cornerpin {} --help", command->text->name);
}

std::string ending(const std::string& meant, const Command* command) {
  return meant.empty() ? "; " + seeHelp(command) : ": did you mean " + meant + "?";
}

// The command that has an option, the one that was typed first of all.
const Command* ownerOf(const std::string& option, const UsedParser& parser) {
  if (parser.command != nullptr) {
    return has(optionNamesOf(*parser.command), option) ? parser.command : nullptr;
  }
  for (const Command& command : parser.commands) {
    if (has(optionNamesOf(command), option)) return &command;
  }
  return nullptr;
}

std::string unknownOption(const std::string& word, const UsedParser& parser) {
  const std::string name = nameIn(word);
  const bool before = parser.command == nullptr || has(parser.program.parser->remaining(), word);
  const Command* owner = before ? ownerOf(name, parser) : nullptr;
  if (owner != nullptr) {
    Words rest = parser.words;
    const auto command = std::find(rest.begin(), rest.end(), owner->text->name);
    if (command != rest.end()) rest.erase(command);
    return "the command goes first: " + lineOf(owner->text->name, rest);
  }
  if (parser.command != nullptr && has(optionNamesOf(parser.program), name)) {
    return fmt::format("{} has no option {}: type cornerpin {}", parser.command->text->name, name,
                       name);
  }
  const Command& asked = parser.command != nullptr ? *parser.command : parser.program;
  const std::string subject =
      parser.command != nullptr ? std::string(asked.text->name) + " has" : "there is";
  return fmt::format("{} no option {}{}", subject, name,
                     ending(suggestionFor(name, optionNamesOf(asked)), parser.command));
}

std::string unknownCommand(const std::string& word, const UsedParser& parser) {
  if (isFile(word)) {
    const char* const command = endsIn(word, ".json") ? "info" : "solve";
    return fmt::format("{} is a file, not a command: type {}", shot::shellWord(word),
                       lineOf(command, parser.words));
  }
  Words known;
  for (const Command& command : parser.commands) known.emplace_back(command.text->name);
  for (const std::string& name : optionNamesOf(parser.program)) known.push_back(name);
  return fmt::format("{} is no command{}", shot::shellWord(word),
                     ending(suggestionFor(word, known), nullptr));
}

// -output is read as -o with the rest as its value, and -json as unknown letters.
std::string longNameWithOneDash(const UsedParser& parser) {
  if (parser.command == nullptr) return "";
  const Words names = optionNamesOf(*parser.command);
  for (const std::string& word : parser.words) {
    if (word.size() > 2 && word[0] == '-' && word[1] != '-' && has(names, "-" + nameIn(word))) {
      return fmt::format("{} wants two dashes: did you mean -{}?", nameIn(word), nameIn(word));
    }
  }
  return "";
}

// --json=yes
std::string flagWithValue(const UsedParser& parser) {
  if (parser.command == nullptr) return "";
  for (const ListedOption& option : optionsOf(*parser.command->parser)) {
    for (const std::string& word : parser.words) {
      const std::string name = nameIn(word);
      if (name != word && !option.takesValue() && has(option.names, name)) {
        return fmt::format("{} takes no value: did you mean {}?", name, name);
      }
    }
  }
  return "";
}

// What nobody has use for, an option before all others.
std::string unusedWord(const UsedParser& parser) {
  const Words unused = parser.program.parser->remaining(true);
  const auto option = std::find_if(unused.begin(), unused.end(), isOption);
  if (option != unused.end()) return unknownOption(*option, parser);
  if (unused.empty()) return "";
  if (parser.command == nullptr) return unknownCommand(unused.front(), parser);
  return fmt::format("{} is one word too many for {}; {}", shot::shellWord(unused.front()),
                     parser.command->text->name, seeHelp(parser.command));
}

std::string missing(const std::string& name, const Command& command) {
  return fmt::format("{} wants {}, for example: {}", command.text->name, name,
                     command.text->example);
}

// An option without its value, or with one too many.
std::string wrongCount(const std::string& name, const Command& command) {
  const CLI::Option* option = command.parser->get_option_no_throw(name);
  if (option == nullptr || option->results().size() > 1) {
    return fmt::format("{} is given more than once: leave one out", name);
  }
  return fmt::format("{} wants a value: {} {}", name, name, nameIn(option->get_option_text()));
}

}  // namespace

std::string textOf(const CLI::ParseError& error, const UsedParser& parser) {
  if (std::string text = longNameWithOneDash(parser); !text.empty()) return text;
  if (std::string text = unusedWord(parser); !text.empty()) return text;
  if (std::string text = flagWithValue(parser); !text.empty()) return text;
  const std::string what = error.what();
  const std::size_t colon = std::min(what.find(": "), what.size());
  const std::string name = what.substr(0, colon);
  if (parser.command == nullptr) return what + "; " + seeHelp(nullptr);
  if (dynamic_cast<const CLI::RequiredError*>(&error) != nullptr) {
    return missing(what.substr(0, what.find(' ')), *parser.command);
  }
  if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr) {
    return wrongCount(name, *parser.command);
  }
  if (colon == what.size()) return what + "; " + seeHelp(parser.command);
  const std::string text = name + " " + what.substr(colon + 2);
  return text.back() == '?' ? text : text + "; " + seeHelp(parser.command);
}

}  // namespace cornerpin
