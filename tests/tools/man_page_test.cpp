// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/man_page.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/support/files.h"
#include "tests/support/process.h"
#include "tools/cornerpin/option_list.h"
#include "tools/cornerpin/program.h"

using namespace cornerpin;

namespace {

const std::string kPage = CORNERPIN_MANUAL "/cornerpin.1";

// The page as a reader has it, blanks and line ends as single blanks.
std::string shown() {
  const Outcome run = runProgram({"/usr/bin/env", "groff", "-ww", "-man", "-T", "ascii", "-P",
                                  "-cbou", "-rLL=200n", "-rHY=0", kPage});
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.err, "");
  std::string text;
  for (char c : run.out) {
    const char plain = c == '\n' ? ' ' : c;
    if (plain != ' ' || text.empty() || text.back() != ' ') text += plain;
  }
  return text;
}

// The same of a text, as the page has it.
std::string onOneLine(const std::string& text) {
  std::string line;
  for (char c : text) {
    const char plain = c == '\n' ? ' ' : c;
    if (plain != ' ' || line.empty() || line.back() != ' ') line += plain;
  }
  return line;
}

bool isThere(const char* program) {
  if (runProgram({"/bin/sh", "-c", std::string("command -v ") + program}).code == 0) return true;
  EXPECT_EQ(std::getenv("CI"), nullptr) << program << " is missing";
  return false;
}

}  // namespace

TEST(ManPage, IsTheOneThatIsInstalled) { EXPECT_EQ(readFile(kPage), manPageOf(Program())); }

TEST(ManPage, HasEveryOptionOfEveryCommandWithItsText) {
  if (!isThere("groff")) GTEST_SKIP() << "no groff here";
  const std::string page = shown();
  const Program program;
  for (const Command& command : program.commands()) {
    for (const ListedOption& option : optionsOf(*command.parser)) {
      std::string line;
      for (const std::string& name : option.names) line += (line.empty() ? "" : ", ") + name;
      if (option.takesValue()) line += " " + option.value;
      line += " " + option.text;
      EXPECT_NE(page.find(line), std::string::npos) << line;
    }
    for (const char* text : {command.text->help, command.text->details, command.text->example}) {
      const std::string line = onOneLine(text);
      EXPECT_NE(page.find(line.substr(0, line.find("  "))), std::string::npos) << line;
    }
  }
  for (const ExitCodeText& code : exitCodeTexts()) {
    const std::string line = " " + std::to_string(code.code) + " " + onOneLine(code.text);
    EXPECT_NE(page.find(line), std::string::npos) << line;
  }
}

// A bare one is an accent over nothing on many terminals.
TEST(ManPage, WritesTheCircumflexByItsName) {
  const std::string page = readFile(kPage);
  EXPECT_EQ(page.find('^'), std::string::npos);
  EXPECT_NE(page.find("w\\(ha2 r\\(ha2"), std::string::npos);
}

TEST(ManPage, IsReadWithoutAWarning) {
  if (isThere("groff")) {
    const Outcome run = runProgram({"/usr/bin/env", "groff", "-ww", "-man", "-z", kPage});
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.err, "");
  }
  if (!isThere("mandoc")) GTEST_SKIP() << "no mandoc here";
  const Outcome run = runProgram({"/usr/bin/env", "mandoc", "-T", "lint", kPage});
  EXPECT_EQ(run.out + run.err, "");
  EXPECT_EQ(run.code, 0);
}
