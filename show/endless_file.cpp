// SPDX-License-Identifier: BSD-3-Clause
#include "show/endless_file.h"

#include <filesystem>
#include <system_error>

#include "show/wording.h"

namespace cornerpin {

namespace fs = std::filesystem;

bool isEndless(const std::string& path) {
  std::error_code ignored;
  const fs::file_status status = fs::status(path, ignored);
  return fs::exists(status) && !fs::is_regular_file(status) && !fs::is_directory(status);
}

void refuseEndless(const std::string& path) {
  if (isEndless(path)) refuseFile(path, 0, "this is no plain file");
}

}  // namespace cornerpin
