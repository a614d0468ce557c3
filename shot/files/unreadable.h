// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_UNREADABLE_H
#define SHOT_FILES_UNREADABLE_H

#include <string>

namespace cornerpin {

/// Why a file cannot be read, and what to do: "there is no such file: did you mean shot.csv?",
/// which is a file beside it whose name is spelt almost the same.
/// \param path  "-" is standard input
/// \param code  what `errno` was
std::string whyUnreadable(const std::string& path, int code);

}  // namespace cornerpin

#endif
