// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SUPPORT_CHILD_H
#define TESTS_SUPPORT_CHILD_H

#include <functional>
#include <string>

// How a forked child ended and what it wrote to file descriptors 1 and 2, by whatever means.
struct ChildRun {
  bool exited = false;  // the action returned: no signal, no exception, no exit from within
  std::string out;
  std::string err;
};

// Runs `action` in a forked child.
ChildRun runInChild(const std::function<void()>& action);

#endif
