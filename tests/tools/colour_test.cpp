// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/colour.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>

#include "tests/support/terminal.h"

using namespace cornerpin;

namespace {

// Whether standard error is coloured on a terminal with these settings; null for one that is unset.
bool onATerminal(Colour when, const char* noColor, const char* terminal) {
  return writtenOnATerminal([&](const std::string& name) {
           const int file = ::open(name.c_str(), O_RDWR | O_NOCTTY);
           ::unsetenv("NO_COLOR");
           ::unsetenv("TERM");
           if (noColor != nullptr) ::setenv("NO_COLOR", noColor, 1);
           if (terminal != nullptr) ::setenv("TERM", terminal, 1);
           const bool coloured = isColoured(when, file);
           EXPECT_EQ(::write(file, coloured ? "y" : "n", 1), 1);
         }) == "y";
}

}  // namespace

TEST(Colour, IsForTerminalsUnlessTheEnvironmentSaysNo) {
  EXPECT_TRUE(onATerminal(Colour::Auto, nullptr, "xterm"));
  EXPECT_TRUE(onATerminal(Colour::Auto, nullptr, nullptr));
  EXPECT_TRUE(onATerminal(Colour::Auto, "", "xterm"));
  EXPECT_FALSE(onATerminal(Colour::Auto, "1", "xterm"));
  EXPECT_FALSE(onATerminal(Colour::Auto, "0", "xterm"));
  EXPECT_FALSE(onATerminal(Colour::Auto, nullptr, "dumb"));
  EXPECT_FALSE(isColoured(Colour::Auto, ::open("/dev/null", O_WRONLY | O_CLOEXEC)));
}

TEST(Colour, IsAsAskedForWhateverTheEnvironmentSays) {
  EXPECT_TRUE(onATerminal(Colour::Always, "1", "dumb"));
  EXPECT_TRUE(isColoured(Colour::Always, ::open("/dev/null", O_WRONLY | O_CLOEXEC)));
  EXPECT_FALSE(onATerminal(Colour::Never, nullptr, "xterm"));
}

TEST(DoubtfulMark, IsYellowOrNothing) {
  EXPECT_EQ(doubtfulMark(Colour::Always, 1)("0-10"), "\033[33m0-10\033[0m");
  EXPECT_EQ(doubtfulMark(Colour::Never, 1)("0-10"), "0-10");
}
