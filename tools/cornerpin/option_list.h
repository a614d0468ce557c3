// SPDX-License-Identifier: BSD-3-Clause
#ifndef TOOLS_CORNERPIN_OPTION_LIST_H
#define TOOLS_CORNERPIN_OPTION_LIST_H

#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace cornerpin {

/// What the parser knows of an option or an argument, for those who tell others.
struct ListedOption {
  std::vector<std::string> names;  ///< as they are typed: "-o", "--output"; an argument's own name
  std::string value;               ///< as the help shows it: "FILE", "NAME=tukey"; none for a flag
  std::string text;
  bool required = false;
  bool common = true;   ///< shown by --help
  bool isFile = false;  ///< the value is a file's name
  std::vector<std::string> choices;

  bool takesValue() const { return !value.empty(); }
};

/// The options of a parser, in the order of its help.
std::vector<ListedOption> optionsOf(const CLI::App& parser);

/// Its arguments in their order.
std::vector<ListedOption> argumentsOf(const CLI::App& parser);

/// Allows only these words for an option's value, and lists them.
CLI::Option* takesOneOf(CLI::Option* option, const std::vector<std::string>& choices);

/// Lists the option's value as a file's name.
CLI::Option* takesFile(CLI::Option* option);

/// Words as a sentence has them: "a, b or c".
std::string inASentence(const std::vector<std::string>& words);

}  // namespace cornerpin

#endif
