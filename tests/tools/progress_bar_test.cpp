// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/progress_bar.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <thread>

#include "tests/support/child.h"
#include "tests/support/terminal.h"

using namespace std::chrono_literals;
using cornerpin::ProgressBar;

namespace {

// What a child writes whose standard error is a terminal.
std::string onATerminal(const std::function<void()>& action) {
  return writtenOnATerminal([&](const std::string& terminal) {
    const ChildRun run = runInChild([&] {
      ::dup2(::open(terminal.c_str(), O_RDWR | O_NOCTTY), STDERR_FILENO);
      action();
    });
    EXPECT_TRUE(run.exited);
  });
}

}  // namespace

TEST(ProgressBar, AppearsOnATerminalAfterHalfASecondAndClearsItself) {
  EXPECT_EQ(onATerminal([] {
              ProgressBar bar;
              bar.update(0, 5);
              std::this_thread::sleep_for(550ms);
              bar.update(2, 5);
            }),
            "\rsolving [############..................] 2/5\r\033[K");
}

TEST(ProgressBar, IsFullAtTheEnd) {
  EXPECT_EQ(onATerminal([] {
              ProgressBar bar;
              std::this_thread::sleep_for(550ms);
              bar.update(7, 7);
            }),
            "\rsolving [##############################] 7/7\r\033[K");
}

TEST(ProgressBar, DrawsTenTimesASecondAtMost) {
  const auto start = std::chrono::steady_clock::now();
  const std::string text = onATerminal([] {
    ProgressBar bar;
    const auto end = std::chrono::steady_clock::now() + 1s;
    while (std::chrono::steady_clock::now() < end) bar.update(1, 2);
  });
  const auto tenths = (std::chrono::steady_clock::now() - start) / 100ms;
  const auto drawn = std::count(text.begin(), text.end(), '[') - 1;  // one in the code that clears
  EXPECT_GE(drawn, 1);
  EXPECT_LE(drawn, tenths);
}

TEST(ProgressBar, WritesNothingElsewhere) {
  const ChildRun run = runInChild([] {
    ProgressBar bar;
    std::this_thread::sleep_for(550ms);
    bar.update(1, 2);
  });
  EXPECT_TRUE(run.exited);
  EXPECT_EQ(run.err, "");
}
