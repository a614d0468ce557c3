// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/file_kind.h"

#include <fmt/format.h>

#include <utility>

namespace cornerpin {

namespace {

using namespace std::string_view_literals;

constexpr std::pair<std::string_view, const char*> kArchives[] = {{"PK\x03\x04"sv, "zip"},
                                                                  {"\xFD\x37zXZ"sv, "xz"},
                                                                  {"BZh"sv, "bzip2"},
                                                                  {"\x28\xB5\x2F\xFD"sv, "zstd"},
                                                                  {"7z\xBC\xAF\x27\x1C"sv, "7z"}};

bool startsWith(std::string_view text, std::string_view part) {
  return text.substr(0, part.size()) == part;
}

// Within so many bytes a file that is not text has a zero.
constexpr std::size_t kTelling = 8192;

}  // namespace

std::string otherThanText(std::string_view beginning) {
  for (const auto& [magic, name] : kArchives) {
    if (startsWith(beginning, magic)) {
      return fmt::format("this is a {} file: unpack it first, or pack it with gzip", name);
    }
  }
  if (startsWith(beginning, "\xFF\xFE") || startsWith(beginning, "\xFE\xFF")) {
    return "this is UTF-16 text: save it as UTF-8";
  }
  if (beginning.substr(0, kTelling).find('\0') != std::string_view::npos) {
    return "this is a binary file, not text: tracks are wanted";
  }
  return "";
}

}  // namespace cornerpin
