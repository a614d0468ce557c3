// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_BASE64_H
#define SHOT_FILES_BASE64_H

#include <string>
#include <string_view>

namespace cornerpin {

/// Bytes in base64, on one line.
std::string base64(std::string_view bytes);

}  // namespace cornerpin

#endif
