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

bool isBinary(std::string_view beginning) {
  return beginning.substr(0, kTelling).find('\0') != std::string_view::npos;
}

std::string packedOrWide(std::string_view beginning) {
  for (const auto& [magic, name] : kArchives) {
    if (startsWith(beginning, magic)) {
      return fmt::format("this is a {} file: unpack it first, or pack it with gzip", name);
    }
  }
  const bool wide = startsWith(beginning, "\xFF\xFE") || startsWith(beginning, "\xFE\xFF");
  return wide ? "this is UTF-16 text: save it as UTF-8" : "";
}

}  // namespace

std::string otherThanText(std::string_view beginning) {
  if (std::string kind = packedOrWide(beginning); !kind.empty()) return kind;
  return isBinary(beginning) ? "this is a binary file, not text: tracks are wanted" : "";
}

std::string otherThanJson(std::string_view beginning) {
  if (std::string kind = packedOrWide(beginning); !kind.empty()) return kind;
  if (isBinary(beginning)) return "this is a binary file, not text: a JSON file is wanted";
  const std::string_view header = beginning.substr(0, beginning.find_first_of("\r\n{["));
  if (header.find("h00") != std::string_view::npos) {
    return "this is a result in CSV, and JSON is wanted: solve again with -o shot.json";
  }
  if (header.find("track") != std::string_view::npos) {
    return "these are tracks, not a result: give what cornerpin solve -o shot.json writes";
  }
  return "";
}

}  // namespace cornerpin
