// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SUPPORT_THROWN_H
#define TESTS_SUPPORT_THROWN_H

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>

#include "cornerpin/foundation/exception.h"

// The message of the exception that `action` throws, which must be of class E and not of a class
// derived from it.
template <class E, class Action>
std::string thrownBy(Action action) {
  try {
    action();
  } catch (const LvException& e) {
    EXPECT_EQ(typeid(e), typeid(E)) << e.message.c_str();
    EXPECT_EQ(e.line, 0);
    return e.message.c_str();
  }
  ADD_FAILURE() << "nothing thrown";
  return "";
}

#endif
