// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/help_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "tools/cornerpin/option_list.h"
#include "tools/cornerpin/program.h"
#include "tools/cornerpin/progress_bar.h"

using namespace cornerpin;

namespace {

std::vector<std::string> linesOf(const std::string& text) {
  std::istringstream in(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

std::string helpOfAll(bool all) {
  const Program program;
  return helpOf(program.itself(), program.commands(), all);
}

bool isOption(const std::string& line) { return line.rfind("  -", 0) == 0; }

}  // namespace

TEST(HelpText, OpensWithAnExampleAndHasAtMostFortyLines) {
  const Program program;
  for (const Command& command : program.commands()) {
    const std::string help = helpOf(command, false);
    EXPECT_EQ(help.rfind("Example: cornerpin " + std::string(command.text->name), 0), 0u) << help;
    EXPECT_LE(linesOf(help).size(), 40u) << help;
  }
  EXPECT_LE(linesOf(helpOfAll(false)).size(), 40u);
}

TEST(HelpText, FitsAScreensWidth) {
  for (const std::string& line : linesOf(helpOfAll(true))) {
    EXPECT_LE(line.size(), 90u) << line;
  }
}

TEST(HelpText, ListsEveryOptionUnderHelpAllAndTheCommonOnesUnderHelpInTheSameLines) {
  const Program program;
  for (const Command& command : program.commands()) {
    const std::vector<std::string> all = linesOf(helpOf(command, true));
    std::size_t common = 0;
    for (const std::string& line : linesOf(helpOf(command, false))) {
      if (!isOption(line)) continue;
      ++common;
      EXPECT_EQ(std::count(all.begin(), all.end(), line), 1) << line;
    }
    const std::vector<ListedOption> options = optionsOf(*command.parser);
    const auto isCommon = [](const ListedOption& o) { return o.common; };
    EXPECT_EQ(common, std::count_if(options.begin(), options.end(), isCommon));
    EXPECT_EQ(std::count_if(all.begin(), all.end(), isOption), options.size());
    for (const ListedOption& option : options) {
      const auto shows = [&](const std::string& line) {
        return isOption(line) && contains(line, option.names.back()) && contains(line, option.text);
      };
      EXPECT_EQ(std::count_if(all.begin(), all.end(), shows), 1) << option.names.back();
    }
  }
}

TEST(HelpText, HasTheHelpOfAllCommandsUnderHelpAll) {
  const std::string all = helpOfAll(true);
  for (const char* part : {"\n\ncornerpin solve\n\nExample: ", "\n\ncornerpin rebase\n\nExample: ",
                           "\n  --loss NAME=tukey", "the cost is w^2 r^2", "\nExit codes:\n"}) {
    EXPECT_TRUE(contains(all, part)) << part;
  }
}

TEST(HelpText, QuotesTheExitCodes) {
  const Program program;
  ASSERT_EQ(exitCodeTexts().size(), 5u);
  int next = 0;
  for (const ExitCodeText& code : exitCodeTexts()) {
    EXPECT_EQ(code.code, next++);
    const std::string first = linesOf(code.text).front();
    const std::string line = "\n  " + std::to_string(code.code) + "  " + first + "\n";
    for (const Command& command : program.commands()) {
      EXPECT_TRUE(contains(helpOf(command, false), line)) << line;
      EXPECT_TRUE(contains(helpOf(command, true), line)) << line;
    }
    EXPECT_TRUE(contains(helpOfAll(false), line)) << line;
  }
}

TEST(HelpText, NamesThePhasesThatProgramsAreTold) {
  const Program program;
  const std::string solve = helpOf(program.commands().front(), true);
  const std::size_t list = solve.find("The phases\nare ");
  ASSERT_NE(list, std::string::npos);
  for (const char* phase :
       {"reading", "choosing the base frame", "solving", "handing over", "figures of trust",
        "smoothing", "filling", "looking for what helps", "writing"}) {
    EXPECT_TRUE(contains(solve.substr(list, 200), phase)) << phase;
  }
}

TEST(UsageOf, NamesArgumentsAndBracketsThoseThatMayLack) {
  const Program program;
  EXPECT_EQ(usageOf(program.itself()), "cornerpin COMMAND [OPTIONS]");
  EXPECT_EQ(usageOf(program.commands().front()), "cornerpin solve [OPTIONS] tracks");
  EXPECT_EQ(usageOf(program.commands().back()), "cornerpin help [OPTIONS] [command]");
}
