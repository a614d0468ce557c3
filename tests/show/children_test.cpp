// SPDX-License-Identifier: BSD-3-Clause
#include "show/children.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <thread>

#include "tests/support/child.h"
#include "tests/support/files.h"

using namespace cornerpin;

namespace {

// What a shell is to do in the folder.
ChildCommand shell(const TemporaryFolder& folder, const std::string& script) {
  return {"/bin/sh", {"sh", "-c", script}, folder.path().string(), folder / "errors"};
}

// Waits for a file with something in it, and returns that.
std::string waitForFile(const std::string& path) {
  for (int wait = 0; wait < 20000; ++wait) {
    const std::string text = readFile(path);
    if (!text.empty() && text.back() == '\n') return text;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return "";
}

// Whether a process is gone within some seconds; a zombie is gone.
bool isGone(pid_t pid) {
  for (int wait = 0; wait < 20000; ++wait) {
    const std::string state = readFile("/proc/" + std::to_string(pid) + "/stat");
    if (state.empty() || state.find(") Z ") != std::string::npos) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return false;
}

}  // namespace

TEST(Children, TellHowEachEnded) {
  const TemporaryFolder folder;
  Children children;
  children.start(7, shell(folder, "echo here >&2; pwd > where; exit 3"));
  EXPECT_EQ(children.running(), 1u);
  const ChildEnd end = children.wait();
  EXPECT_EQ(end.tag, 7u);
  EXPECT_EQ(end.code, 3);
  EXPECT_EQ(end.signal, 0);
  EXPECT_FALSE(end.stopped);
  EXPECT_EQ(children.running(), 0u);
  EXPECT_EQ(readFile(folder / "errors"), "here\n");
  EXPECT_EQ(readFile(folder / "where"), folder.path().string() + "\n");
}

TEST(Children, TellTheSignalThatEndedOne) {
  const TemporaryFolder folder;
  Children children;
  children.start(1, shell(folder, "kill -9 $$"));
  const ChildEnd end = children.wait();
  EXPECT_EQ(end.code, -1);
  EXPECT_EQ(end.signal, SIGKILL);
  EXPECT_FALSE(end.stopped);
}

TEST(Children, EndOneThatStops) {
  const TemporaryFolder folder;
  Children children;
  children.start(1, shell(folder, "kill -STOP $$; exec sleep 1000"));
  const ChildEnd end = children.wait();
  EXPECT_EQ(end.signal, SIGSTOP);
  EXPECT_TRUE(end.stopped);
}

TEST(Children, EndOneThatTakesTooMuchOfTheProcessor) {
  const TemporaryFolder folder;
  Children children;
  ChildCommand command = shell(folder, "while :; do :; done");
  command.seconds = 1;
  children.start(1, command);
  EXPECT_EQ(children.wait().signal, SIGXCPU);
}

TEST(Children, AreAwaitedForSomeTime) {
  const TemporaryFolder folder;
  Children children;
  children.start(1, shell(folder, "until [ -e go ]; do sleep 0.01; done; exit 6"));
  EXPECT_FALSE(children.waitFor(std::chrono::milliseconds(50)));
  writeFile(folder / "go", "");
  const std::optional<ChildEnd> end = children.waitFor(std::chrono::minutes(1));
  ASSERT_TRUE(end);
  EXPECT_EQ(end->code, 6);
}

TEST(Children, RunSideBySide) {
  const TemporaryFolder folder;
  Children children;
  // The first ends when the second has begun.
  children.start(1, shell(folder, "until [ -e second ]; do sleep 0.01; done"));
  children.start(2, shell(folder, ": > second; until [ -e third ]; do sleep 0.01; done"));
  EXPECT_EQ(children.wait().tag, 1u);
  writeFile(folder / "third", "");
  EXPECT_EQ(children.wait().tag, 2u);
}

TEST(Children, EndIn127WhereTheyCannotBeStarted) {
  const TemporaryFolder folder;
  Children children;
  children.start(1, {folder / "nothing", {"nothing"}, "/", folder / "errors"});
  EXPECT_EQ(children.wait().code, 127);
  EXPECT_EQ(readFile(folder / "errors"),
            "cornerpin: the process cannot be started: " + (folder / "nothing") + "\n");
}

TEST(Children, EndWithTheObject) {
  const TemporaryFolder folder;
  pid_t pid = 0;
  {
    Children children;
    children.start(1, shell(folder, "echo $$ > pid; exec sleep 1000"));
    pid = std::stoi(waitForFile(folder / "pid"));
    EXPECT_EQ(::kill(pid, 0), 0);
  }
  EXPECT_NE(::kill(pid, 0), 0);
  EXPECT_EQ(errno, ESRCH);
}

TEST(Children, EndWithAParentThatIsKilled) {
  const TemporaryFolder folder;
  const pid_t parent = startChild([&] {
    Children children;
    children.start(1, shell(folder, "echo $$ > pid; exec sleep 1000"));
    children.wait();
  });
  const pid_t child = std::stoi(waitForFile(folder / "pid"));
  ::kill(parent, SIGKILL);
  EXPECT_FALSE(endsWell(parent));
  EXPECT_TRUE(isGone(child));
}

TEST(Children, LetThisProcessBeInterrupted) {
  const TemporaryFolder folder;
  Children children;
  children.checkInterrupted();
  children.start(1, shell(folder, "kill -INT " + std::to_string(::getpid()) + "; exec sleep 1000"));
  try {
    children.wait();
    ADD_FAILURE() << "not interrupted";
  } catch (const Interrupted& interrupted) {
    EXPECT_EQ(interrupted.signal, SIGINT);
  }
  EXPECT_EQ(children.running(), 1u);
  ::kill(::getpid(), SIGTERM);
  EXPECT_THROW(children.checkInterrupted(), Interrupted);
  ::kill(::getpid(), SIGTERM);
  EXPECT_THROW(children.waitFor(std::chrono::minutes(1)), Interrupted);
  children.checkInterrupted();
}

TEST(Children, LeaveIgnoredSignalsIgnored) {
  const ChildRun run = runInChild([] {
    ::signal(SIGHUP, SIG_IGN);
    Children children;
    ::raise(SIGHUP);
    children.checkInterrupted();
  });
  EXPECT_TRUE(run.exited);
}

TEST(Children, AreNoticedWhereTheirEndsAreIgnored) {
  const TemporaryFolder folder;
  const ChildRun run = runInChild([&] {
    ::signal(SIGCHLD, SIG_IGN);
    Children children;
    children.start(1, shell(folder, "exit 5"));
    EXPECT_EQ(children.wait().code, 5);
  });
  EXPECT_TRUE(run.exited) << run.out;
}

TEST(SignalText, NamesTheSignal) { EXPECT_EQ(signalText(SIGKILL), "signal 9 (Killed)"); }
