// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/progress_bar.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <regex.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <thread>
#include <utility>

#include "tests/support/child.h"
#include "tests/support/terminal.h"

using namespace std::chrono_literals;
using cornerpin::ProgressBar;
using cornerpin::ProgressStyle;

namespace {

// What a child writes whose standard error is a terminal.
std::string onATerminal(const std::function<void()>& action) {
  return writtenOnATerminal([&](const std::string& terminal) {
    ::dup2(::open(terminal.c_str(), O_RDWR | O_NOCTTY), STDERR_FILENO);
    action();
  });
}

bool startsWith(const std::string& text, const std::string& part) {
  return text.rfind(part, 0) == 0;
}

bool matches(const std::string& text, const char* pattern) {
  regex_t compiled;
  if (::regcomp(&compiled, pattern, REG_EXTENDED | REG_NOSUB) != 0) return false;
  const bool found = ::regexec(&compiled, text.c_str(), 0, nullptr, 0) == 0;
  ::regfree(&compiled);
  return found;
}

}  // namespace

TEST(ProgressBar, AppearsOnATerminalAfterHalfASecondAndClearsItself) {
  const std::string line = "\rsolving [############..................] 40 %\033[K";
  const std::string text = onATerminal([] {
    ProgressBar bar(ProgressStyle::Bar);
    bar.update("solving", 2, 5);
    std::this_thread::sleep_for(300ms);
    bar.update("solving", 2, 5);
    std::this_thread::sleep_for(250ms);
  });
  EXPECT_EQ(text.substr(0, line.size()), line);
  EXPECT_EQ(text.substr(text.size() - 4), "\r\033[K");
  EXPECT_EQ(onATerminal([] {
              ProgressBar bar(ProgressStyle::Bar);
              bar.update("solving", 2, 5);
              std::this_thread::sleep_for(100ms);
            }),
            "");
}

// A line that goes over the edge could not be cleared away.
TEST(ProgressBar, KeepsWithinANarrowTerminal) {
  const auto lineIn = [](unsigned short columns) {
    const std::string text = onATerminal([columns] {
      winsize size{};
      size.ws_row = 24;
      size.ws_col = columns;
      ::ioctl(STDERR_FILENO, TIOCSWINSZ, &size);
      ProgressBar bar(ProgressStyle::Bar);
      bar.update("solving", 2, 5);
      std::this_thread::sleep_for(550ms);
    });
    return text.substr(0, text.find("\033[K"));
  };
  EXPECT_EQ(lineIn(80), "\rsolving [############..................] 40 %");
  EXPECT_EQ(lineIn(26), "\rsolving [####......] 40 %");
  EXPECT_EQ(lineIn(21), "\rsolving [##...] 40 %");
  EXPECT_EQ(lineIn(20), "\rsolving 40 %");
  EXPECT_EQ(lineIn(10), "\rsolving 4");
}

TEST(ProgressBar, IsFullAtTheEnd) {
  const std::string text = onATerminal([] {
    ProgressBar bar(ProgressStyle::Bar);
    bar.update("solving", 0, 7);
    bar.update("solving", 7, 7);
    std::this_thread::sleep_for(550ms);
  });
  EXPECT_TRUE(startsWith(text, "\rsolving [##############################] 100 %\033[K")) << text;
}

TEST(ProgressBar, NamesEveryPhase) {
  const char* const phases[] = {"reading",      "solving",
                                "handing over", "choosing the base frame",
                                "smoothing",    "looking for what helps"};
  const std::string text = onATerminal([&] {
    ProgressBar bar(ProgressStyle::Bar);
    bar.update("reading", 0, 0);
    std::this_thread::sleep_for(600ms);
    for (const char* phase : phases) {
      bar.update(phase, 0, 0);
      std::this_thread::sleep_for(150ms);
    }
  });
  std::size_t at = 0;
  for (const char* phase : phases) {
    at = text.find(std::string("\r") + phase + "\033[K", at);
    EXPECT_NE(at, std::string::npos) << phase;
  }
}

// Nobody reports anything meanwhile, as while a single long step is under way.
TEST(ProgressBar, SaysHowLongItTakesYetAndCountsDown) {
  const std::string text = onATerminal([] {
    ProgressBar bar(ProgressStyle::Bar);
    bar.update("handing over", 0, 10);
    std::this_thread::sleep_for(1s);
    bar.update("handing over", 2, 10);
    std::this_thread::sleep_for(1300ms);
  });
  const std::size_t four = text.find(" 20 %, 4 s left\033[K");
  const std::size_t three = text.find(" 20 %, 3 s left\033[K");
  EXPECT_LT(four, three);
  EXPECT_NE(three, std::string::npos) << text;
}

// Each second takes 0.1 % or 0.01 % of the phase.
TEST(ProgressBar, CountsMinutesAndHours) {
  const auto lineAt = [](std::size_t total) {
    return onATerminal([&] {
      ProgressBar bar(ProgressStyle::Bar);
      bar.update("figures of trust", 0, total);
      std::this_thread::sleep_for(1s);
      bar.update("figures of trust", 1, total);
      std::this_thread::sleep_for(150ms);
    });
  };
  EXPECT_TRUE(matches(lineAt(1001), " 0 %, 16:[34]. left"));     // 1,000 s
  EXPECT_TRUE(matches(lineAt(10001), " 0 %, 2:4[67]:.. left"));  // 10,000 s
}

// What the phases before took tells nothing.
TEST(ProgressBar, StartsAfreshWithEachPhase) {
  const std::string text = onATerminal([] {
    ProgressBar bar(ProgressStyle::Bar);
    bar.update("solving", 0, 100);
    bar.update("solving", 50, 100);
    std::this_thread::sleep_for(2s);
    bar.update("choosing the base frame", 0, 0);
    bar.update("solving", 51, 100);
    std::this_thread::sleep_for(500ms);
    bar.update("solving", 76, 100);
    std::this_thread::sleep_for(150ms);
    bar.update("writing", 0, 100);
    std::this_thread::sleep_for(1s);
    bar.update("writing", 0, 10);
    std::this_thread::sleep_for(1s);
    bar.update("writing", 5, 10);
    std::this_thread::sleep_for(150ms);
  });
  EXPECT_TRUE(matches(text, " 51 %\033")) << text;                 // nothing to go by yet
  EXPECT_TRUE(matches(text, " 76 %, 1 s left\033")) << text;       // 24 frames at 50 a second
  EXPECT_TRUE(matches(text, "writing.* 50 %, 1 s left")) << text;  // 5 more in a second
}

TEST(ProgressBar, DrawsTenTimesASecondAtMost) {
  const auto start = std::chrono::steady_clock::now();
  const std::string text = onATerminal([] {
    ProgressBar bar(ProgressStyle::Bar);
    const auto end = std::chrono::steady_clock::now() + 1s;
    while (std::chrono::steady_clock::now() < end) bar.update("solving", 1, 2);
  });
  const auto tenths = (std::chrono::steady_clock::now() - start) / 100ms;
  const auto drawn = std::count(text.begin(), text.end(), '[') / 2;  // one in the code that clears
  EXPECT_GE(drawn, 1);
  EXPECT_LE(drawn, tenths);
}

TEST(ProgressBar, WritesNothingUnlessAsked) {
  const ChildRun run = runInChild([] {
    ProgressBar bar(ProgressStyle::None);
    bar.update("solving", 1, 2);
    std::this_thread::sleep_for(550ms);
  });
  EXPECT_TRUE(run.exited);
  EXPECT_EQ(run.err, "");
}

TEST(ProgressBar, WritesAnObjectWhereSomethingHasChanged) {
  const ChildRun run = runInChild([] {
    ProgressBar bar(ProgressStyle::Json);
    bar.update("reading", 0, 0);
    std::this_thread::sleep_for(150ms);  // then nothing changes for two more lines' time
    std::this_thread::sleep_for(200ms);
    bar.update("solving", 0, 100);
    std::this_thread::sleep_for(1s);
    bar.update("solving", 20, 100);  // 50 ms each
    std::this_thread::sleep_for(150ms);
    bar.update("solving", 100, 100);
    std::this_thread::sleep_for(150ms);
  });
  EXPECT_TRUE(run.exited);
  const std::string start =
      "{\"phase\":\"reading\",\"done\":0,\"total\":null,\"seconds_left\":null}\n"
      "{\"phase\":\"solving\",\"done\":0,\"total\":100,\"seconds_left\":null}\n"
      "{\"phase\":\"solving\",\"done\":20,\"total\":100,\"seconds_left\":";
  const std::string end =
      "}\n{\"phase\":\"solving\",\"done\":100,\"total\":100,\"seconds_left\":null}\n";
  ASSERT_TRUE(startsWith(run.err, start)) << run.err;
  const std::string rest = run.err.substr(start.size());
  double left = 0;
  int length = 0;
  ASSERT_EQ(std::sscanf(rest.c_str(), "%lf%n", &left, &length), 1) << run.err;
  EXPECT_NEAR(left, 4.0, 0.5);
  EXPECT_EQ(rest.substr(static_cast<std::size_t>(length)), end);
}

TEST(ProgressBar, WritesTenObjectsASecondAtMost) {
  const auto start = std::chrono::steady_clock::now();
  const ChildRun run = runInChild([] {
    ProgressBar bar(ProgressStyle::Json);
    const auto end = std::chrono::steady_clock::now() + 1s;
    for (std::size_t i = 0; std::chrono::steady_clock::now() < end; ++i)
      bar.update("solving", i, 1u << 30);
  });
  const auto tenths = (std::chrono::steady_clock::now() - start) / 100ms;
  const auto lines = std::count(run.err.begin(), run.err.end(), '\n');
  EXPECT_GE(lines, 1);
  EXPECT_LE(lines, tenths);
}

TEST(ProgressBar, IsLedToByWhoReports) {
  const ChildRun run = runInChild([] {
    ProgressBar bar(ProgressStyle::Json);
    EXPECT_TRUE(bar.progress()("solving", 3, 4));
    std::this_thread::sleep_for(150ms);
  });
  EXPECT_EQ(run.err, "{\"phase\":\"solving\",\"done\":3,\"total\":4,\"seconds_left\":null}\n");
  EXPECT_FALSE(ProgressBar(ProgressStyle::None).progress());
}

TEST(WriteFinished, WritesTheLastObject) {
  const ChildRun run = runInChild([] { cornerpin::writeFinished(4); });
  EXPECT_EQ(run.err, "{\"phase\":\"finished\",\"exit_code\":4}\n");
}

// The thread that draws leaves signals to those that hold them back while they write a file.
TEST(ProgressBar, TakesNoSignals) {
  const std::string text = onATerminal([] {
    ProgressBar bar(ProgressStyle::Bar);
    bar.update("writing", 1, 2);
    sigset_t all;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_BLOCK, &all, nullptr);
    ::kill(::getpid(), SIGTERM);
    std::this_thread::sleep_for(600ms);
  });
  EXPECT_TRUE(startsWith(text, "\rwriting [")) << text;
}
