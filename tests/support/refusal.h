// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SUPPORT_REFUSAL_H
#define TESTS_SUPPORT_REFUSAL_H

#include <stdexcept>
#include <string>

/// The message of the `std::invalid_argument` that `action` throws; empty where it throws nothing.
template <class Action>
std::string refusal(const Action& action) {
  try {
    action();
  } catch (const std::invalid_argument& error) {
    return error.what();
  }
  return "";
}

#endif
