// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/option_list.h"

#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <algorithm>

#include "tools/cornerpin/command.h"

using namespace cornerpin;

namespace {

using Words = std::vector<std::string>;

}  // namespace

TEST(OptionsOf, TellsNamesValuesAndTexts) {
  CLI::App app;
  app.set_help_flag();
  bool loud = false;
  std::string path, speed, tune;
  app.add_flag("-l,--loud", loud, "So that all hear it");
  addMore(app);
  takesOneOf(app.add_option("--speed", speed, "How fast"), {"slow", "fast"})
      ->option_text("NAME=slow");
  app.option_defaults()->group("Options");
  takesFile(app.add_option("--to", path, "Where"))->option_text("FILE");
  takesFile(app.add_option("tune", tune, "What to play"))->required();

  const std::vector<ListedOption> options = optionsOf(app);
  ASSERT_EQ(options.size(), 3u);
  EXPECT_EQ(options[0].names, (Words{"-l", "--loud"}));
  EXPECT_FALSE(options[0].takesValue());
  EXPECT_EQ(options[0].text, "So that all hear it");
  EXPECT_EQ(options[1].names, Words{"--to"});  // those of the short help first
  EXPECT_TRUE(options[1].common);
  EXPECT_TRUE(options[1].isFile);
  EXPECT_EQ(options[2].value, "NAME=slow");
  EXPECT_EQ(options[2].choices, (Words{"slow", "fast"}));
  EXPECT_FALSE(options[2].common);
  EXPECT_FALSE(options[2].isFile);

  const std::vector<ListedOption> arguments = argumentsOf(app);
  ASSERT_EQ(arguments.size(), 1u);
  EXPECT_EQ(arguments[0].names, Words{"tune"});
  EXPECT_TRUE(arguments[0].required);
  EXPECT_TRUE(arguments[0].isFile);
}

TEST(TakesOneOf, RefusesOtherWords) {
  const auto after = [](const std::string& word) -> std::string {
    CLI::App app;
    std::string speed;
    takesOneOf(app.add_option("--speed", speed), {"slow", "fast"});
    Words words = {word, "--speed"};
    try {
      app.parse(words);
    } catch (const CLI::ValidationError& error) {
      return error.what();
    }
    return speed;
  };
  EXPECT_EQ(after("fast"), "fast");
  EXPECT_EQ(after("fsat"), "--speed: takes slow or fast, not \"fsat\": did you mean fast?");
  EXPECT_EQ(after("quick"), "--speed: takes slow or fast, not \"quick\"");
  EXPECT_EQ(after("slow fast"), "--speed: takes slow or fast, not \"slow fast\"");
}

TEST(InASentence, HasCommasAndAnOr) {
  EXPECT_EQ(inASentence({}), "");
  EXPECT_EQ(inASentence({"a"}), "a");
  EXPECT_EQ(inASentence({"a", "b"}), "a or b");
  EXPECT_EQ(inASentence({"a", "b", "c"}), "a, b or c");
}
