// SPDX-License-Identifier: BSD-3-Clause
#include "bench/command/child.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <stdexcept>

namespace bench {

namespace {

[[noreturn]] void become(const std::vector<std::string>& arguments) {
  std::vector<char*> pointers;
  pointers.reserve(arguments.size() + 1);
  for (const std::string& argument : arguments)
    pointers.push_back(const_cast<char*>(argument.c_str()));
  pointers.push_back(nullptr);
  const int nowhere = ::open("/dev/null", O_WRONLY);
  ::dup2(nowhere, STDOUT_FILENO);
  ::dup2(nowhere, STDERR_FILENO);
  ::execv(pointers[0], pointers.data());
  ::_exit(127);
}

}  // namespace

Taken runToEnd(const std::vector<std::string>& arguments) {
  const auto begin = std::chrono::steady_clock::now();
  const pid_t pid = ::fork();
  if (pid < 0) throw std::runtime_error("no process to be had");
  if (pid == 0) become(arguments);
  int status = 0;
  rusage used{};
  if (::wait4(pid, &status, 0, &used) != pid) throw std::runtime_error("the process is gone");
  const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - begin;
  if (!WIFEXITED(status) || (WEXITSTATUS(status) != 0 && WEXITSTATUS(status) != 4)) {
    throw std::runtime_error(arguments[0] + " " + arguments[1] + " failed");
  }
  const double user =
      static_cast<double>(used.ru_utime.tv_sec) + 1e-6 * static_cast<double>(used.ru_utime.tv_usec);
  return {user, wall.count(), 1024.0 * static_cast<double>(used.ru_maxrss)};
}

}  // namespace bench
