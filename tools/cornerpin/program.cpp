// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/program.h"

#include <cornerpin/shot.h>

#include <iostream>
#include <string>

#include "tools/cornerpin/batch_command.h"
#include "tools/cornerpin/check_command.h"
#include "tools/cornerpin/convert_command.h"
#include "tools/cornerpin/diff_command.h"
#include "tools/cornerpin/explain_command.h"
#include "tools/cornerpin/help_text.h"
#include "tools/cornerpin/info_command.h"
#include "tools/cornerpin/lapack_info.h"
#include "tools/cornerpin/option_list.h"
#include "tools/cornerpin/output_paths.h"
#include "tools/cornerpin/rebase_command.h"
#include "tools/cornerpin/report_command.h"
#include "tools/cornerpin/solve_command.h"
#include "tools/cornerpin/usage_error.h"

namespace cornerpin {

namespace {

constexpr CommandText kText = {
    "", "find how a flat surface moves through a shot", "cornerpin solve shot.csv -o shot.json",
    "Finds how a flat surface moves through a shot: one 3x3 transform for every frame,\n"
    "from tracked features.\n",
    ""};

constexpr CommandText kHelpText = {"help", "Print the help of a command", "cornerpin help solve",
                                   "Prints what cornerpin solve --help does; without a command, "
                                   "what cornerpin --help does.\n",
                                   ""};

std::string versionText() {
  const shot::Version version = shot::version();
  std::string text = version.program + " " + version.version + "\n";
  if (!version.commit.empty()) text += "commit " + version.commit + "\n";
  return text + "LAPACK " + lapackInfo() + "\n";
}

}  // namespace

Program::Program() : itself_{&app_, nullptr, &kText} {
  app_.set_help_flag("-h,--help", "Print what most people need");
  app_.set_help_all_flag("--help-all", "Print the help of all commands, with all options");
  app_.set_version_flag("-V,--version", versionText,
                        "Print the version, its commit, and which LAPACK is in use");
  app_.require_subcommand(0, 1);
  commands_ = {addSolve(app_), addReport(app_),  addConvert(app_), addInfo(app_), addDiff(app_),
               addCheck(app_), addExplain(app_), addRebase(app_),  addBatch(app_)};
  addHelp();
}

void Program::addHelp() {
  CLI::App& parser = addParser(app_, kHelpText);
  std::vector<std::string> names;
  for (const Command& command : commands_) names.emplace_back(command.text->name);
  names.emplace_back(kHelpText.name);
  takesOneOf(parser.add_option("command", helpAbout_, "Whose help to print"), names);
  commands_.push_back({&parser,
                       [this] {
                         const Command* about = nullptr;
                         for (const Command& command : commands_) {
                           if (command.text->name == helpAbout_) about = &command;
                         }
                         return printHelp(about, false);
                       },
                       &kHelpText});
}

int Program::run(int argc, const char* const* argv) {
  try {
    app_.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    return printHelp(parsed(), false);
  } catch (const CLI::CallForAllHelp&) {
    return printHelp(parsed(), true);
  } catch (const CLI::CallForVersion& version) {
    print(version.what());
    return kSolved;
  } catch (const CLI::ParseError& error) {
    const std::vector<std::string> words(argv + 1, argv + argc);
    std::cerr << "cornerpin: " << textOf(error, UsedParser{itself_, commands_, parsed(), words})
              << '\n';
    return kUsage;
  }
  if (const Command* command = parsed()) return command->run();
  std::cerr << helpOf(itself_, commands_, false);
  return kUsage;
}

const Command* Program::parsed() const {
  for (const Command& command : commands_) {
    if (command.parser->parsed()) return &command;
  }
  return nullptr;
}

int Program::printHelp(const Command* command, bool all) const {
  print(command == nullptr ? helpOf(itself_, commands_, all) : helpOf(*command, all));
  return kSolved;
}

}  // namespace cornerpin
