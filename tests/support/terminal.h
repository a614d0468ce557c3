// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SUPPORT_TERMINAL_H
#define TESTS_SUPPORT_TERMINAL_H

#include <functional>
#include <string>

// Makes a terminal, gives its name to `use`, and returns what was written on it until then.
std::string writtenOnATerminal(const std::function<void(const std::string& name)>& use);

#endif
