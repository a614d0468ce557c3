// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>

#include "tests/support/files.h"
#include "tests/support/process.h"
#include "tests/tools/program.h"

namespace {

// Sends a signal to a run that is writing `out`, and waits for its end.
ChildResult interruptWhileWriting(int signal, const TemporaryFolder& folder, const std::string& out,
                                  const ChildOptions& options) {
  const std::string in = folder / "in.csv";
  writeFile(in, longShot());
  writeFile(out, "old");
  const pid_t pid = startChild({CORNERPIN_PROGRAM, "solve", in, "-o", out}, options);
  for (int wait = 0; wait < 20000 && folder.entryCount() < 3; ++wait) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  EXPECT_EQ(folder.entryCount(), 3u) << "the run was not caught while it wrote";
  ::kill(pid, signal);
  return waitForChild(pid);
}

}  // namespace

TEST(Program, LeavesTheOldFileAndNothingElseWhenItIsInterrupted) {
  ChildOptions options;
  options.defaultSignals = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};
  for (int signal : options.defaultSignals) {
    const TemporaryFolder folder;
    const std::string out = folder / "out.csv";
    EXPECT_EQ(interruptWhileWriting(signal, folder, out, options).signal, signal);
    EXPECT_TRUE(readFile(out) == "old") << "signal " << signal;
    EXPECT_EQ(folder.entryCount(), 2u) << "signal " << signal;
  }
}

TEST(Program, NamesSeveralBadRowsAndEndsInThree) {
  const TemporaryFolder folder;
  const std::string in = folder / "in.csv";
  writeFile(in, "track;frame;x;y\na;0;1;1\nb;99999999999;1;1\nc;0;1\nd;0;1;1,5\n");
  const Outcome run = cornerpin({"solve", in});
  EXPECT_EQ(run.code, 3);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, in + ":3: frame is too large: \"99999999999\"\n" + in +
                         ":4: the row has 3 fields, the header has 4\n" + in +
                         ":5: y must be a number, not \"1,5\": write a decimal point\n");
}

// As under nohup, and in the background of a shell's script.
TEST(Program, GoesOnWhereItsCallerIgnoresTheSignal) {
  const TemporaryFolder folder;
  const std::string out = folder / "out.csv";
  const auto before = ::signal(SIGHUP, SIG_IGN);
  const ChildResult result = interruptWhileWriting(SIGHUP, folder, out, {});
  ::signal(SIGHUP, before);
  EXPECT_EQ(result.code, 4);
  EXPECT_GT(readFile(out).size(), 300000u);
}

TEST(Program, EndsInOneWhenStandardOutputIsClosed) {
  const TemporaryFolder folder;
  ChildOptions options;
  options.out = "";
  const Outcome run = cornerpin({"solve", kFacade, "-o", folder / "out.json"}, options);
  EXPECT_EQ(run.code, 1);
  EXPECT_EQ(run.err, "cornerpin: standard output: Bad file descriptor\n");
  // No line of the table has strayed into the file.
  EXPECT_TRUE(nlohmann::json::accept(readFile(folder / "out.json")));
}

TEST(Program, PrintsItsHelpWithoutACommand) {
  EXPECT_TRUE(contains(cornerpin({}).err, "Example: cornerpin solve"));
}

TEST(Program, StartsItsHelpWithAnExample) {
  const Outcome run = cornerpin({"--help"});
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.out.substr(0, 24), "Example: cornerpin solve");
}

TEST(Program, SaysWhenItsHelpCannotBeWritten) {
  ChildOptions options;
  options.out = "/dev/full";
  for (const char* option : {"--help", "--version"}) {
    const Outcome run = cornerpin({option}, options);
    EXPECT_EQ(run.code, 1) << option;
    EXPECT_EQ(run.err, "cornerpin: standard output: No space left on device\n") << option;
  }
}

TEST(Program, NamesItsVersionAndTheLapackInUse) {
  const Outcome run = cornerpin({"--version"});
  EXPECT_EQ(run.code, 0);
  int major = 0, minor = 0, patch = 0;
  EXPECT_EQ(std::sscanf(run.out.c_str(), "cornerpin %*d.%*d.%*d\nLAPACK %d.%d.%d", &major, &minor,
                        &patch),
            3)
      << run.out;
}
