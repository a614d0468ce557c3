// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>

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
  EXPECT_TRUE(waitForWriting(folder)) << "the run was not caught while it wrote";
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
  const std::string row = "cornerpin: " + in;
  EXPECT_EQ(run.err, row + ":3: frame is too large: \"99999999999\"\n" + row +
                         ":4: the row has 3 fields, the header has 4\n" + row +
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

// Before anything is read: nothing is lost.
TEST(Program, EndsInOneAtOnceWhenStandardOutputIsClosed) {
  const TemporaryFolder folder;
  ChildOptions options;
  options.out = "";
  for (const std::string& out : {folder / "out.json", std::string("-")}) {
    const Outcome run = cornerpin({"solve", folder / "none.csv", "-o", out}, options);
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.err,
              "cornerpin: standard output is closed: open it, or write a file and add --quiet\n");
  }
  EXPECT_EQ(folder.entryCount(), 0u);
}

// The reader has gone before the first line comes; the run ends as it would have.
TEST(Program, EndsQuietlyWhereItsReaderHasEnough) {
  const TemporaryFolder folder;
  writeFile(folder / "held.csv", "track,frame,x,y\na,0,1,1\na,3,1,1\n");
  const auto withoutReader = [](const std::vector<std::string>& words) {
    std::vector<std::string> command = {
        "/bin/bash", "-c", "exec 3> >(:); wait $!; exec \"$0\" \"$@\" >&3", CORNERPIN_PROGRAM};
    command.insert(command.end(), words.begin(), words.end());
    return runProgram(command);
  };
  const std::vector<std::vector<std::string>> runs = {{"--help"},
                                                      {"--version"},
                                                      {"solve", kFacade},
                                                      {"solve", kFacade, "--json"},
                                                      {"solve", kFacade, "-o", "-"}};
  for (const std::vector<std::string>& words : runs) {
    const Outcome run = withoutReader(words);
    EXPECT_EQ(run.code, 0) << words.back();
    EXPECT_EQ(run.err, "") << words.back();
  }
  const Outcome held = withoutReader({"solve", folder / "held.csv"});
  EXPECT_EQ(held.code, 4);
  EXPECT_EQ(held.err, cornerpin({"solve", folder / "held.csv"}).err);
}

// What is put under a name is wanted whole. The result is longer than a pipe holds.
TEST(Program, EndsInOneWhereTheReaderOfANamedPipeGoesAway) {
  const TemporaryFolder folder;
  const std::string pipe = folder / "pipe.json";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  const pid_t reader = startChild({"/usr/bin/head", "-c", "1", pipe}, {});
  const Outcome run = cornerpin({"solve", kFacade, "-o", pipe});
  waitForChild(reader);
  EXPECT_EQ(run.code, 1);
  EXPECT_EQ(run.err, "cornerpin: " + pipe + ": Broken pipe\n");
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
    EXPECT_EQ(run.err,
              "cornerpin: standard output: No space left on device: make room, or write to another "
              "place\n")
        << option;
  }
}

TEST(Program, NamesItsVersionAndTheLapackInUse) {
  const Outcome run = cornerpin({"--version"});
  EXPECT_EQ(run.code, 0);
  int major = 0, minor = 0, patch = 0;
  const std::size_t lapack = run.out.find("\nLAPACK ");
  ASSERT_NE(lapack, std::string::npos) << run.out;
  EXPECT_EQ(std::sscanf(run.out.c_str() + lapack, " LAPACK %d.%d.%d", &major, &minor, &patch), 3)
      << run.out;
  EXPECT_EQ(std::sscanf(run.out.c_str(), "cornerpin %d.%d.%d", &major, &minor, &patch), 3);
}
