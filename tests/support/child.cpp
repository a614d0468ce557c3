// SPDX-License-Identifier: BSD-3-Clause
#include "tests/support/child.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <stdexcept>

namespace {

// What the child leaves with after a whole run, so that an exit from within is told apart.
constexpr int kWholeRun = 17;

void flushAll() {
  std::cout.flush();
  std::cerr.flush();
  std::fflush(nullptr);
}

[[noreturn]] void runAndLeave(const std::function<void()>& action) {
  int code = kWholeRun;
  try {
    action();
    if (::testing::Test::HasFailure()) code = 98;
  } catch (...) {
    code = 99;
  }
  flushAll();
  _exit(code);
}

std::string contents(std::FILE* file) {
  std::string text;
  std::rewind(file);
  for (int c = std::fgetc(file); c != EOF; c = std::fgetc(file)) text += static_cast<char>(c);
  std::fclose(file);
  return text;
}

}  // namespace

pid_t startChild(const std::function<void()>& action) {
  flushAll();
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("no child process");
  if (child == 0) runAndLeave(action);
  return child;
}

bool endsWell(pid_t child) {
  int status = -1;
  waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == kWholeRun;
}

ChildRun runInChild(const std::function<void()>& action) {
  std::FILE* const out = std::tmpfile();
  std::FILE* const err = std::tmpfile();
  if (out == nullptr || err == nullptr) throw std::runtime_error("no temporary file");
  ChildRun run;
  run.exited = endsWell(startChild([&] {
    dup2(fileno(out), 1);
    dup2(fileno(err), 2);
    action();
  }));
  run.out = contents(out);
  run.err = contents(err);
  return run;
}
