// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SUPPORT_WHOLE_RUN_H
#define TESTS_SUPPORT_WHOLE_RUN_H

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

// LAPACK's error routine may end the process with code 0, which would pass for success. Included
// by a test program, this makes an exit in the middle of a run a failure.
class WholeRun : public testing::Environment {
 public:
  void SetUp() override {
    running = true;
    std::atexit(failWhenRunning);
  }
  void TearDown() override { running = false; }

 private:
  static void failWhenRunning() {
    if (!running) return;
    std::fputs("The process was ended in the middle of a test.\n", stderr);
    std::_Exit(1);
  }
  static inline bool running = false;
};

inline testing::Environment* const wholeRun = testing::AddGlobalTestEnvironment(new WholeRun);

#endif
