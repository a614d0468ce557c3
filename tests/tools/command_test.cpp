// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/command.h"

#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <string>

namespace {

bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

CLI::App& addDance(CLI::App& app) {
  return cornerpin::addParser(app, "dance", "Move about", "Example: dance\n\nAll of it.\n",
                              "Exit codes: 0 danced");
}

}  // namespace

TEST(AddParser, GivesTheProgramTheSummaryAndTheSubcommandTheLongHelp) {
  CLI::App app("Example: app");
  addDance(app);
  EXPECT_TRUE(contains(app.help(), "Move about"));
  EXPECT_FALSE(contains(app.help(), "All of it."));

  EXPECT_THROW(app.parse("dance --help"), CLI::CallForHelp);
  const std::string help = app.help();
  EXPECT_EQ(help.find("Example: dance\n\nAll of it.\n"), 0u);
  EXPECT_TRUE(contains(help, "Exit codes: 0 danced"));
  EXPECT_FALSE(contains(help, "Move about"));
}

TEST(AddParser, ReturnsTheParserThatIsCalled) {
  CLI::App app;
  CLI::App& dance = addDance(app);
  CLI::App& other = cornerpin::addParser(app, "rest", "", "", "");
  app.parse("dance");
  EXPECT_TRUE(dance.parsed());
  EXPECT_FALSE(other.parsed());
}
