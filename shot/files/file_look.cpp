// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/file_look.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <string_view>
#include <system_error>
#include <utility>

#include "shot/files/byte_source.h"
#include "shot/files/input_error.h"
#include "shot/files/json_reader.h"
#include "shot/files/result_transforms.h"
#include "shot/files/unreadable.h"

namespace cornerpin {

namespace {

constexpr std::array<std::pair<double, const char*>, 3> kUnits = {
    {{1e9, "GB"}, {1e6, "MB"}, {1e3, "kB"}}};

bool isPlain(const std::string& path) {
  struct stat file {};
  const int status = path == "-" ? ::fstat(STDIN_FILENO, &file) : ::stat(path.c_str(), &file);
  return status == 0 && S_ISREG(file.st_mode);
}

[[noreturn]] void refuse(const std::string& path) {
  throw InputError(path == "-" ? "<stdin>" : path, whyUnreadable(path, errno));
}

[[noreturn]] void failToKeep() {
  throw std::system_error(errno, std::generic_category(), "a temporary file for the input");
}

void writeAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(fd, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) failToKeep();
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
}

// The bytes as they are, packed or not.
void copy(int from, const std::string& path, int to) {
  std::array<char, 65536> block;
  for (;;) {
    const ssize_t count = ::read(from, block.data(), block.size());
    if (count == 0) return;
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) refuse(path);
    writeAll(to, {block.data(), static_cast<std::size_t>(count)});
  }
}

// From here on standard input is a file with these bytes.
void keepAsStandardInput(const std::string& path) {
  const int from = path == "-" ? STDIN_FILENO : ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (from < 0) refuse(path);
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> kept(std::tmpfile(), std::fclose);
  if (!kept) failToKeep();
  const int fd = ::fileno(kept.get());
  copy(from, path, fd);
  if (from != STDIN_FILENO) ::close(from);
  if (::lseek(fd, 0, SEEK_SET) != 0 || ::dup2(fd, STDIN_FILENO) < 0) failToKeep();
}

}  // namespace

FileLook lookAt(const std::string& path) {
  FileLook look;
  look.name = path == "-" ? "standard input" : path;
  look.path = path;
  if (!isPlain(path)) {
    keepAsStandardInput(path);
    look.path = "-";
  }
  ByteSource source(look.path);
  look.bytes = source.size();
  const off_t start = look.path == "-" ? ::lseek(STDIN_FILENO, 0, SEEK_CUR) : 0;
  std::array<char, 4096> text;
  const std::string_view beginning(text.data(), source.read(text.data(), text.size()));
  if (look.path == "-") ::lseek(STDIN_FILENO, start, SEEK_SET);
  look.packed = look.bytes > 0 && source.size() == 0;  // an unpacked file's size stays known
  const std::size_t first = beginning.find_first_not_of(" \t\r\n");
  look.json = first != std::string_view::npos &&
              (beginning[first] == '{' || beginning[first] == '[') &&
              !otherThanTracks(beginning).empty();
  look.table = !look.json && isResultCsv(beginning);
  return look;
}

std::string sizeText(std::uint64_t bytes) {
  for (const auto& [unit, name] : kUnits) {
    const double size = static_cast<double>(bytes) / unit;
    if (size >= 99.95) return fmt::format("{:.0f} {}", size, name);
    if (size >= 1.0) return fmt::format("{:.3g} {}", size, name);
  }
  return fmt::format("{} byte{}", bytes, bytes == 1 ? "" : "s");
}

}  // namespace cornerpin
