// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SUPPORT_CHILD_H
#define TESTS_SUPPORT_CHILD_H

#include <sys/types.h>

#include <functional>
#include <string>

// How a forked child ended and what it wrote to file descriptors 1 and 2, by whatever means.
struct ChildRun {
  bool exited = false;  // as endsWell: no signal, no exception, no exit from within, no failure
  std::string out;
  std::string err;
};

// Runs `action` in a forked child.
ChildRun runInChild(const std::function<void()>& action);

// The same in two steps, for who has something to do meanwhile. No other thread may be running: a
// lock that it holds stays locked in the child for ever.
pid_t startChild(const std::function<void()>& action);
bool endsWell(pid_t child);  // waits; the action returned and no expectation failed

#endif
