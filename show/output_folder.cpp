// SPDX-License-Identifier: BSD-3-Clause
#include "show/output_folder.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace cornerpin {

namespace fs = std::filesystem;

namespace {

constexpr const char* kHidden = ".cornerpin-batch-";
constexpr const char* kWork = "work-";
constexpr const char* kFile = "file-";
constexpr int kTries = 100;

[[noreturn]] void fail(const std::string& path) {
  throw std::system_error(errno, std::generic_category(), path);
}

// A lock on a folder that nobody else holds; -1 and `errno` where there is none to be had.
int lockOf(const std::string& folder) {
  const int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0 || ::flock(fd, LOCK_EX | LOCK_NB) == 0) return fd;
  const int code = errno;
  ::close(fd);
  errno = code;
  return -1;
}

// Whether the path still leads to the folder that is open.
bool isThere(const std::string& path, int fd) {
  struct stat open {};
  struct stat there {};
  return ::fstat(fd, &open) == 0 && ::stat(path.c_str(), &there) == 0 &&
         open.st_ino == there.st_ino && open.st_dev == there.st_dev;
}

}  // namespace

OutputFolder::OutputFolder(const std::string& path) : path_(fs::absolute(path).string()) {
  fs::create_directories(path_);
  removeUnused();
  makeHidden();
}

OutputFolder::~OutputFolder() {
  std::error_code ignored;
  fs::remove_all(hidden_, ignored);
  if (lock_ >= 0) ::close(lock_);
}

std::string OutputFolder::operator/(const std::string& name) const {
  return (fs::path(path_) / name).string();
}

void OutputFolder::removeUnused() {
  for (const fs::directory_entry& entry : fs::directory_iterator(path_)) {
    if (entry.path().filename().string().rfind(kHidden, 0) != 0) continue;
    const int lock = lockOf(entry.path().string());
    if (lock < 0) continue;
    std::error_code ignored;
    fs::remove_all(entry.path(), ignored);
    ::close(lock);
  }
}

// Who looks for folders that nobody uses may lock and remove this one first. Where a file system
// has no locks, nobody removes any.
void OutputFolder::makeHidden() {
  for (int i = 0; i < kTries; ++i) {
    hidden_ = *this / (std::string(kHidden) + "XXXXXX");
    if (::mkdtemp(hidden_.data()) == nullptr) fail(hidden_);
    lock_ = lockOf(hidden_);
    const bool isOurs = lock_ >= 0 && isThere(hidden_, lock_);
    if (isOurs || (lock_ < 0 && errno != EWOULDBLOCK && errno != ENOENT)) return;
    if (lock_ >= 0) ::close(lock_);
  }
  fail(hidden_);
}

// Of what is made: a shot may be called like another one's file.
std::string OutputFolder::madeIn(const char* kind, const std::string& name) const {
  return (fs::path(hidden_) / (kind + name)).string();
}

std::string OutputFolder::beginWork(const std::string& name) {
  const fs::path work = madeIn(kWork, name);
  fs::remove_all(work);
  fs::create_directory(work);
  return work.string();
}

void OutputFolder::endWork(const std::string& name) { fs::remove_all(madeIn(kWork, name)); }

void OutputFolder::place(const std::string& work, const std::vector<std::string>& names) {
  for (const std::string& name : names) fs::rename(fs::path(work) / name, *this / name);
}

void OutputFolder::write(const std::string& name, const std::string& text) {
  make(name, text);
  flush(name);
  fs::rename(madeIn(kFile, name), *this / name);
}

void OutputFolder::writeQuickly(const std::string& name, const std::string& text) {
  make(name, text);
  fs::rename(madeIn(kFile, name), *this / name);
}

void OutputFolder::make(const std::string& name, const std::string& text) {
  errno = 0;
  std::ofstream file(madeIn(kFile, name), std::ios::binary | std::ios::trunc);
  file.write(text.data(), static_cast<std::streamsize>(text.size()));
  file.close();
  if (!file) fail(*this / name);
}

void OutputFolder::flush(const std::string& name) {
  const int fd = ::open(madeIn(kFile, name).c_str(), O_WRONLY | O_CLOEXEC);
  const bool isFlushed = fd >= 0 && ::fsync(fd) == 0;
  const int code = errno;
  if (fd >= 0) ::close(fd);
  errno = code;
  if (!isFlushed) fail(*this / name);
}

void OutputFolder::remove(const std::vector<std::string>& names) {
  for (const std::string& name : names) fs::remove(*this / name);
}

}  // namespace cornerpin
