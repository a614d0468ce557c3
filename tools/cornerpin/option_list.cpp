// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/option_list.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iterator>
#include <sstream>

#include "tools/cornerpin/command.h"
#include "tools/cornerpin/suggestion.h"

namespace cornerpin {

namespace {

// The validator that holds the choices in its description, and a type that is a file's name.
constexpr const char* kChoices = "choices";
constexpr const char* kFile = "FILE";

std::vector<std::string> choicesOf(CLI::Option& option) {
  try {
    std::istringstream words(option.get_validator(kChoices)->get_description());
    return {std::istream_iterator<std::string>(words), {}};
  } catch (const CLI::OptionNotFound&) {
    return {};
  }
}

ListedOption listed(CLI::Option& option) {
  ListedOption entry;
  for (const std::string& name : option.get_snames()) entry.names.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) entry.names.push_back("--" + name);
  if (entry.names.empty()) entry.names.push_back(option.get_name(true));
  if (option.get_items_expected_max() > 0) entry.value = option.get_option_text();
  entry.text = option.get_description();
  entry.required = option.get_required();
  entry.common = option.get_group() != kMoreOptions;
  entry.isFile = option.get_type_name() == kFile;
  entry.choices = choicesOf(option);
  return entry;
}

// CLI11 hands the options of a constant parser out as constants, and finds validators in others
// only; none is changed.
std::vector<ListedOption> listedOf(const CLI::App& parser, bool named) {
  std::vector<ListedOption> list;
  for (const CLI::Option* option : parser.get_options()) {
    if (option->nonpositional() == named) list.push_back(listed(const_cast<CLI::Option&>(*option)));
  }
  return list;
}

}  // namespace

std::vector<ListedOption> optionsOf(const CLI::App& parser) {
  std::vector<ListedOption> list = listedOf(parser, true);
  std::stable_partition(list.begin(), list.end(), [](const ListedOption& o) { return o.common; });
  return list;
}

std::vector<ListedOption> argumentsOf(const CLI::App& parser) { return listedOf(parser, false); }

CLI::Option* takesOneOf(CLI::Option* option, const std::vector<std::string>& choices) {
  const auto refusal = [choices](const std::string& text) -> std::string {
    if (std::find(choices.begin(), choices.end(), text) != choices.end()) return "";
    const std::string meant = suggestionFor(text, choices);
    return "takes " + inASentence(choices) + ", not \"" + text + "\"" +
           (meant.empty() ? "" : ": did you mean " + meant + "?");
  };
  std::string list;
  for (const std::string& choice : choices) list += (list.empty() ? "" : " ") + choice;
  return option->check(CLI::Validator(refusal, list, kChoices));
}

CLI::Option* takesFile(CLI::Option* option) { return option->type_name(kFile); }

std::string inASentence(const std::vector<std::string>& words) {
  std::string text;
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (i > 0) text += i + 1 == words.size() ? " or " : ", ";
    text += words[i];
  }
  return text;
}

}  // namespace cornerpin
