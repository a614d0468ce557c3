// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/completions.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <set>
#include <sstream>

#include "tests/support/files.h"
#include "tests/support/process.h"
#include "tools/cornerpin/option_list.h"
#include "tools/cornerpin/program.h"

using namespace cornerpin;

namespace {

using Lines = std::set<std::string>;

const std::string kManual = CORNERPIN_MANUAL "/";
const std::string kCompleteInZsh = CORNERPIN_DATA "/../tests/tools/complete_in_zsh.py";
// What bash does for the words behind the folder.
const std::string kCompleteInBash =
    "cd \"$1\" && source \"$0\" && shift && COMP_WORDS=(cornerpin \"$@\") && COMP_CWORD=$# &&"
    " _cornerpin && printf '%s\\n' \"${COMPREPLY[@]}\"";

bool isThere(const char* program) {
  if (runProgram({"/bin/sh", "-c", std::string("command -v ") + program}).code == 0) return true;
  EXPECT_EQ(std::getenv("CI"), nullptr) << program << " is missing";
  return false;
}

Lines linesOf(const std::string& text) {
  std::istringstream in(text);
  Lines lines;
  for (std::string line; std::getline(in, line);) lines.insert(line);
  return lines;
}

// What bash offers for the last of these words, in a folder.
Lines bashOffers(std::vector<std::string> words, const std::string& folder = "/") {
  std::vector<std::string> command = {"/bin/bash", "-c", kCompleteInBash,
                                      kManual + "cornerpin.bash", folder};
  command.insert(command.end(), words.begin(), words.end());
  const Outcome run = runProgram(command);
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.err, "");
  return linesOf(run.out);
}

// What fish offers at the end of a line, without the descriptions.
Lines fishOffers(const std::string& line, const std::string& folder = "/") {
  const Outcome run = runProgram(
      {"/usr/bin/env", "HOME=" + folder, "fish", "--no-config", "-c",
       "cd " + folder + "; source " + kManual + "cornerpin.fish; complete -C '" + line + "'"});
  EXPECT_EQ(run.code, 0) << run.err;
  Lines lines;
  for (const std::string& offer : linesOf(run.out)) lines.insert(offer.substr(0, offer.find('\t')));
  return lines;
}

Lines optionNamesOf(const Command& command) {
  Lines names;
  for (const ListedOption& option : optionsOf(*command.parser)) {
    names.insert(option.names.begin(), option.names.end());
  }
  return names;
}

const Lines kCommands = {"solve", "report",  "convert", "info",  "diff",
                         "check", "explain", "rebase",  "batch", "help"};
const Lines kLosses = {"tukey", "cauchy", "huber", "none"};

}  // namespace

TEST(BashCompletions, OfferCommandsAndEveryOption) {
  const Program program;
  EXPECT_EQ(bashOffers({""}), kCommands);
  EXPECT_EQ(bashOffers({"so"}), Lines{"solve"});
  EXPECT_EQ(bashOffers({"help", ""}), kCommands);
  EXPECT_EQ(bashOffers({"-"}), optionNamesOf(program.itself()));
  for (const Command& command : program.commands()) {
    EXPECT_EQ(bashOffers({command.text->name, "-"}), optionNamesOf(command));
  }
  EXPECT_EQ(bashOffers({"solve", "in.csv", "--max"}), Lines{"--max-error"});
}

TEST(BashCompletions, OfferTheChoicesOfAnOption) {
  EXPECT_EQ(bashOffers({"solve", "--loss", ""}), kLosses);
  EXPECT_EQ(bashOffers({"solve", "--loss", "=", "t"}), Lines{"tukey"});  // as bash splits --loss=t
  EXPECT_EQ(bashOffers({"solve", "--loss", "="}), kLosses);
  EXPECT_EQ(bashOffers({"solve", "--base", ""}), Lines{""});
}

TEST(BashCompletions, OfferFiles) {
  const TemporaryFolder folder;
  writeFile(folder / "my shot.csv", "");
  writeFile(folder / "other.json", "");
  const std::string path = folder.path().string();
  const Lines both = {"my shot.csv", "other.json"};
  EXPECT_EQ(bashOffers({"solve", ""}, path), both);
  EXPECT_EQ(bashOffers({"solve", "my"}, path), Lines{"my shot.csv"});
  for (const char* option : {"-o", "--output", "--explain", "--quads"}) {
    EXPECT_EQ(bashOffers({"solve", option, ""}, path), both) << option;
  }
  EXPECT_EQ(bashOffers({"rebase", "o"}, path), Lines{"other.json"});
}

TEST(FishCompletions, OfferCommandsOptionsChoicesAndFiles) {
  if (!isThere("fish")) GTEST_SKIP() << "no fish here";
  const TemporaryFolder folder;
  writeFile(folder / "other.json", "");
  const std::string path = folder.path().string();
  EXPECT_EQ(fishOffers("cornerpin ", path), kCommands);
  EXPECT_EQ(fishOffers("cornerpin help ", path), kCommands);
  EXPECT_EQ(fishOffers("cornerpin solve --loss "), kLosses);
  EXPECT_EQ(fishOffers("cornerpin rebase ", path), Lines{"other.json"});
  EXPECT_EQ(fishOffers("cornerpin solve -o ", path), Lines{"other.json"});
  EXPECT_EQ(fishOffers("cornerpin solve --base ", path), Lines{});
  const Program program;
  for (const Command& command : program.commands()) {
    const std::string start = std::string("cornerpin ") + command.text->name + " -";
    Lines offered = fishOffers(start);
    offered.merge(fishOffers(start + "-"));
    for (const std::string& name : optionNamesOf(command)) {
      EXPECT_EQ(offered.count(name), 1u) << start << " " << name;
    }
  }
}

TEST(ZshCompletions, OfferCommandsOptionsChoicesAndFiles) {
  if (!isThere("zsh")) GTEST_SKIP() << "no zsh here";
  const TemporaryFolder folder;
  writeFile(folder / "other.json", "");
  const Outcome run =
      runProgram({"/usr/bin/env", "python3", kCompleteInZsh, CORNERPIN_MANUAL,
                  folder.path().string(), "cornerpin sol", "cornerpin solve --max",
                  "cornerpin solve --loss tuk", "cornerpin solve --loss=hub", "cornerpin solve oth",
                  "cornerpin solve -o oth", "cornerpin rebase --form", "cornerpin help reb"});
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.out,
            "cornerpin solve \ncornerpin solve --max-error=\ncornerpin solve --loss tukey \n"
            "cornerpin solve --loss=huber \ncornerpin solve other.json \n"
            "cornerpin solve -o other.json \ncornerpin rebase --format=\n"
            "cornerpin help rebase \n");
}

TEST(ZshCompletions, NameEveryOption) {
  const std::string text = readFile(kManual + "_cornerpin");
  const Program program;
  for (const Command& command : program.commands()) {
    const std::size_t start = text.find(std::string("        ") + command.text->name + ")\n");
    ASSERT_NE(start, std::string::npos);
    const std::string part = text.substr(start, text.find(";;", start) - start);
    for (const std::string& name : optionNamesOf(command)) {
      const bool there = part.find("'*" + name + "[") != std::string::npos ||
                         part.find("'*" + name + "=[") != std::string::npos;
      EXPECT_TRUE(there) << name;
    }
  }
}
