// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SUPPORT_TERMINAL_H
#define TESTS_SUPPORT_TERMINAL_H

#include <functional>
#include <string>

// Makes a terminal, gives its name to `use` in a forked child, and returns what was written on it.
std::string writtenOnATerminal(const std::function<void(const std::string& name)>& use);

#endif
