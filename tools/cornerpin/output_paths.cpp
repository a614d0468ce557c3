// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/output_paths.h"

#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "shot/files/output_file.h"

namespace cornerpin {

namespace fs = std::filesystem;

bool isStandardOutput(const std::string& path) { return path == "-" || path == "/dev/stdout"; }

void refuseInput(const std::string& input, const std::string& output) {
  std::error_code ignored;
  if (fs::is_regular_file(output, ignored) &&
      fs::equivalent(input == "-" ? "/dev/stdin" : input, output, ignored)) {
    throw std::invalid_argument("\"" + output + "\" is the file that is read: not replaced");
  }
}

void refuseSame(const char* firstOption, const std::string& first, const char* secondOption,
                const std::string& second) {
  std::error_code ignored;
  if (first.empty() || second.empty()) return;
  if (fs::exists(first, ignored) && !fs::is_regular_file(first, ignored)) return;
  if (fs::weakly_canonical(first, ignored) == fs::weakly_canonical(second, ignored)) {
    throw std::invalid_argument(std::string(firstOption) + " and " + secondOption +
                                " both want \"" + second + "\"");
  }
}

void print(const std::string& text) {
  OutputFile out("-");
  out.write(text);
  out.commit();
}

}  // namespace cornerpin
