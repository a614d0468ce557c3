// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOW_ENDLESS_FILE_H
#define SHOW_ENDLESS_FILE_H

#include <string>

namespace cornerpin {

/// Whether a file is one that a process would wait for, or never come to the end of.
bool isEndless(const std::string& path);

/// Throws `shot::InputError` for such a file.
void refuseEndless(const std::string& path);

}  // namespace cornerpin

#endif
