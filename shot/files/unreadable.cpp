// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/unreadable.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "shot/solve/nearest_names.h"

namespace cornerpin {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostSlips = 2;
constexpr std::size_t kLettersPerSlip = 4;

// The file in the same folder that may be meant; of several the first by name. None: empty.
std::string fileMeantBy(const fs::path& path) {
  const std::string typed = path.filename().string();
  std::size_t fewest = std::min(kMostSlips, typed.size() / kLettersPerSlip) + 1;
  std::string meant;
  const fs::path folder = path.parent_path().empty() ? "." : path.parent_path();
  std::error_code ended;
  for (fs::directory_iterator entry(folder, ended), end; !ended && entry != end;
       entry.increment(ended)) {
    const std::string name = entry->path().filename().string();
    const std::size_t longer = std::max(name.size(), typed.size());
    if (longer - std::min(name.size(), typed.size()) > kMostSlips) continue;
    const std::size_t slips = slipsBetween(typed, name);
    if (slips > fewest || (slips == fewest && meant < name)) continue;
    fewest = slips;
    meant = name;
  }
  return meant.empty() ? meant : (path.parent_path() / meant).string();
}

std::string noSuchFile(const std::string& path) {
  const std::string meant = fileMeantBy(path);
  const std::string what = "there is no such file: ";
  return what + (meant.empty() ? "check its name and folder" : "did you mean " + meant + "?");
}

}  // namespace

std::string whyUnreadable(const std::string& path, int code) {
  if (path == "-" && code == EBADF) return "standard input is closed: open it, or name a file";
  switch (code) {
    case ENOENT:
      return noSuchFile(path);
    case ENOTDIR:
      return "a part of the path is a file, not a folder: check the path";
    case EISDIR:
      return "this is a folder: name a file in it";
    case EACCES:
      return "it may not be read: change its rights, or copy it";
    default:
      return std::string(std::strerror(code)) + ": try again, or with a copy of it elsewhere";
  }
}

}  // namespace cornerpin
