// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/program.h"

#include <cornerpin/shot.h>
#include <gtest/gtest.h>

#include "tests/support/process.h"
#include "tools/cornerpin/help_text.h"

using cornerpin::Command;
using cornerpin::Program;

namespace {

Outcome run(std::vector<std::string> words) {
  words.insert(words.begin(), CORNERPIN_PROGRAM);
  return runProgram(words);
}

}  // namespace

TEST(Program, PrintsTheHelpOfItselfAndOfEveryCommandInTwoWays) {
  EXPECT_EQ(run({"help"}).out, run({"--help"}).out);
  EXPECT_EQ(run({"-h"}).out, run({"--help"}).out);
  const Program program;
  ASSERT_EQ(program.commands().size(), 10u);
  for (const Command& command : program.commands()) {
    const std::string name = command.text->name;
    const Outcome printed = run({"help", name});
    EXPECT_EQ(printed.code, 0);
    EXPECT_EQ(printed.err, "");
    EXPECT_NE(printed.out.find("\nUsage: cornerpin " + name), std::string::npos) << printed.out;
    EXPECT_EQ(run({name, "--help-all"}).out, cornerpin::helpOf(command, true));
    EXPECT_EQ(printed.out, run({name, "--help"}).out);
    EXPECT_EQ(printed.out, run({name, "-h"}).out);
  }
}

TEST(Program, TellsItsVersionInTwoWays) {
  const Outcome printed = run({"-V"});
  EXPECT_EQ(printed.code, 0);
  EXPECT_EQ(printed.out, run({"--version"}).out);
  const cornerpin::shot::Version program = cornerpin::shot::version();
  const std::string commit = program.commit.empty() ? "" : "commit " + program.commit + "\n";
  const std::string first = program.program + " " + program.version + "\n" + commit + "LAPACK ";
  EXPECT_EQ(printed.out.rfind(first, 0), 0u) << printed.out;
}

TEST(Program, PrintsTheHelpOfAllCommands) {
  const Program program;
  EXPECT_EQ(run({"--help-all"}).out, cornerpin::helpOf(program.itself(), program.commands(), true));
}

TEST(Program, TakesAFileOfACommandsName) {
  EXPECT_EQ(run({"solve", "help"}).err,
            "cornerpin: help: there is no such file: check its name and folder\n");
}
