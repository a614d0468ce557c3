// SPDX-License-Identifier: BSD-3-Clause
#include "tests/support/process.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>

#include "tests/support/files.h"

namespace {

void addStream(posix_spawn_file_actions_t* actions, int fd, const std::string& name, int flags) {
  if (name.empty()) {
    ::posix_spawn_file_actions_addclose(actions, fd);
  } else {
    ::posix_spawn_file_actions_addopen(actions, fd, name.c_str(), flags, 0666);
  }
}

void setDefaultSignals(posix_spawnattr_t* attributes, const std::vector<int>& signals) {
  sigset_t set;
  ::sigemptyset(&set);
  for (int signal : signals) ::sigaddset(&set, signal);
  ::posix_spawnattr_setsigdefault(attributes, &set);
  ::posix_spawnattr_setflags(attributes, POSIX_SPAWN_SETSIGDEF);
}

std::vector<char*> pointers(const std::vector<std::string>& texts) {
  std::vector<char*> result;
  for (const std::string& text : texts) result.push_back(const_cast<char*>(text.c_str()));
  result.push_back(nullptr);
  return result;
}

}  // namespace

pid_t startChild(const std::vector<std::string>& command, const ChildOptions& options) {
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  const int output = O_WRONLY | O_CREAT | O_APPEND | O_NOCTTY;
  addStream(&actions, 0, options.in, O_RDONLY | O_NOCTTY);
  addStream(&actions, 1, options.out, output);
  addStream(&actions, 2, options.err, output);
  std::vector<std::string> environment = options.environment;
  for (char** entry = environ; *entry; ++entry) environment.push_back(*entry);
  posix_spawnattr_t attributes;
  ::posix_spawnattr_init(&attributes);
  setDefaultSignals(&attributes, options.defaultSignals);
  pid_t pid = 0;
  const int error = ::posix_spawn(&pid, command[0].c_str(), &actions, &attributes,
                                  pointers(command).data(), pointers(environment).data());
  ::posix_spawnattr_destroy(&attributes);
  ::posix_spawn_file_actions_destroy(&actions);
  if (error != 0) throw std::runtime_error("cannot start " + command[0]);
  return pid;
}

ChildResult waitForChild(pid_t pid) {
  int status = 0;
  ChildResult result;
  while (::wait4(pid, &status, 0, &result.usage) < 0) {
    if (errno != EINTR) throw std::runtime_error("wait4");
  }
  if (WIFEXITED(status)) result.code = WEXITSTATUS(status);
  if (WIFSIGNALED(status)) result.signal = WTERMSIG(status);
  return result;
}

Outcome runProgram(const std::vector<std::string>& command, ChildOptions options) {
  const TemporaryFolder folder;
  const std::string out = folder / "out";
  const std::string err = folder / "err";
  if (options.out == "/dev/null") options.out = out;
  if (options.err == "/dev/null") options.err = err;
  Outcome run;
  run.code = waitForChild(startChild(command, options)).code;
  run.out = readFile(out);
  run.err = readFile(err);
  return run;
}
