// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SUPPORT_PROCESS_H
#define TESTS_SUPPORT_PROCESS_H

#include <sys/resource.h>
#include <sys/types.h>

#include <string>
#include <vector>

// How a child process is run. Streams are file names; an empty name closes the stream.
struct ChildOptions {
  std::string in = "/dev/null";
  std::string out = "/dev/null";
  std::string err = "/dev/null";
  std::vector<std::string> environment;  // NAME=VALUE, on top of this process's
  std::vector<int> defaultSignals;       // end the child even where this process ignores them
};

struct ChildResult {
  int code = -1;  // exit code; -1 when a signal ended it
  int signal = 0;
  rusage usage{};
};

// Starts a program and returns its process id.
pid_t startChild(const std::vector<std::string>& command, const ChildOptions& options);
ChildResult waitForChild(pid_t pid);

// What a program printed and how it ended.
struct Outcome {
  int code = -1;
  std::string out;
  std::string err;
};

// Runs a program to its end and returns what it printed.
Outcome runProgram(const std::vector<std::string>& command, ChildOptions options = {});

#endif
