// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/output_paths.h"

#include <cornerpin/shot.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <stdexcept>
#include <string_view>
#include <system_error>

namespace cornerpin {

namespace fs = std::filesystem;

namespace {

std::string adviceFor(const std::error_code& code) {
  if (code == std::errc::no_such_file_or_directory)
    return "its folder does not exist: make it, or name another";
  if (code == std::errc::not_a_directory)
    return "a part of the path is a file, not a folder: name another";
  if (code == std::errc::is_a_directory) return "it is a folder: name a file in it";
  return code.message() + ": name another file or folder, or change its rights";
}

}  // namespace

bool isStandardOutput(const std::string& path) { return path == "-" || path == "/dev/stdout"; }

void refuseInput(const std::string& input, const std::string& output) {
  std::error_code ignored;
  if (fs::is_regular_file(output, ignored) &&
      fs::equivalent(input == "-" ? "/dev/stdin" : input, output, ignored)) {
    throw std::invalid_argument("\"" + output +
                                "\" is the file that is read: not replaced; name another");
  }
}

void refuseSame(const char* firstOption, const std::string& first, const char* secondOption,
                const std::string& second) {
  std::error_code ignored;
  if (first.empty() || second.empty()) return;
  if (fs::exists(first, ignored) && !fs::is_regular_file(first, ignored)) return;
  if (fs::weakly_canonical(first, ignored) == fs::weakly_canonical(second, ignored)) {
    throw std::invalid_argument(std::string(firstOption) + " and " + secondOption +
                                " both want \"" + second + "\": name two files");
  }
}

void refuseFolder(const std::string& path) {
  std::error_code ignored;
  if (!fs::is_directory(path, ignored)) return;
  throw std::invalid_argument("\"" + path + "\" is a folder: name a file in it");
}

void requireWritable(const std::string& path) {
  if (path.empty()) return;
  try {
    shot::checkWritable(isStandardOutput(path) ? "-" : path);
  } catch (const std::system_error& error) {
    if (isStandardOutput(path)) {
      throw std::runtime_error(
          "standard output is closed: open it, or write a file and add --quiet");
    }
    throw std::runtime_error("cannot write \"" + path + "\": " + adviceFor(error.code()));
  }
}

std::string textOf(const std::system_error& error) {
  std::string text = error.what();
  switch (error.code().value()) {
    case ENOSPC:
    case EDQUOT:
      return text + ": make room, or write to another place";
    case EFBIG:
      return text + ": raise the limit (ulimit -f), or write to another place";
    default:
      return text;
  }
}

void print(const std::string& text) {
  for (std::string_view rest = text; !rest.empty();) {
    const ssize_t count = ::write(STDOUT_FILENO, rest.data(), rest.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0 && errno == EPIPE) return;  // the reader has had enough
    if (count < 0) throw std::system_error(errno, std::generic_category(), "standard output");
    rest.remove_prefix(static_cast<std::size_t>(count));
  }
}

}  // namespace cornerpin
