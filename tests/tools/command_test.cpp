// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/command.h"

#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <string>

using namespace cornerpin;

namespace {

constexpr CommandText kDance = {"dance", "Move about", "app dance", "All of it.\n", ""};
constexpr CommandText kRest = {"rest", "", "", "", ""};

}  // namespace

TEST(AddParser, ReturnsTheParserThatIsCalled) {
  CLI::App app;
  const CLI::App& dance = addParser(app, kDance);
  const CLI::App& other = addParser(app, kRest);
  app.parse("dance");
  EXPECT_TRUE(dance.parsed());
  EXPECT_FALSE(other.parsed());
}

TEST(AddParser, TakesTwoKindsOfHelp) {
  CLI::App app;
  addParser(app, kDance);
  EXPECT_THROW(app.parse("dance --help"), CLI::CallForHelp);
  EXPECT_THROW(app.parse("dance -h"), CLI::CallForHelp);
  EXPECT_THROW(app.parse("dance --help-all"), CLI::CallForAllHelp);
}

TEST(AddMore, PutsWhatComesBehindItIntoAnotherGroup) {
  CLI::App app;
  CLI::App& dance = addParser(app, kDance);
  EXPECT_NE(dance.add_flag("--fast")->get_group(), kMoreOptions);
  addMore(dance);
  EXPECT_EQ(dance.add_flag("--slow")->get_group(), kMoreOptions);
}
