// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/output_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <system_error>
#include <utility>

namespace cornerpin {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kBlock = std::size_t{256} * 1024;
constexpr int kMostLinks = 40;
constexpr int kMostNames = 1000;

// What the path leads to, existing or not.
fs::path behindLinks(fs::path path) {
  for (int i = 0; fs::is_symlink(fs::symlink_status(path)); ++i) {
    if (i == kMostLinks) {
      throw fs::filesystem_error("",
                                 std::make_error_code(std::errc::too_many_symbolic_link_levels));
    }
    path = path.parent_path() / fs::read_symlink(path);
  }
  return path;
}

fs::path folderOf(const std::string& path) {
  const fs::path folder = fs::path(path).parent_path();
  return folder.empty() ? fs::path(".") : folder;
}

bool isOpenForWriting(int fd) {
  const int flags = ::fcntl(fd, F_GETFL);
  return flags != -1 && (flags & O_ACCMODE) != O_RDONLY;
}

// As opening would tell, whoever started the process.
bool mayWrite(const std::string& path) {
  return ::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0;
}

// Names of the temporary files that are there, null where there is none.
std::array<std::atomic<const char*>, kMostUnfinished> unfinished{};
static_assert(std::atomic<const char*>::is_always_lock_free);

void addUnfinished(const char* name) {
  for (std::atomic<const char*>& place : unfinished) {
    const char* none = nullptr;
    if (place.compare_exchange_strong(none, name)) return;
  }
}

void dropUnfinished(const char* name) {
  for (std::atomic<const char*>& place : unfinished) {
    const char* held = name;
    if (place.compare_exchange_strong(held, nullptr)) return;
  }
}

// Holds signals back: a handler finds a file and its name, or neither.
class SignalsHeld {
 public:
  SignalsHeld() {
    sigset_t all;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_BLOCK, &all, &before_);
  }
  SignalsHeld(const SignalsHeld&) = delete;
  SignalsHeld& operator=(const SignalsHeld&) = delete;
  ~SignalsHeld() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

 private:
  sigset_t before_{};
};

}  // namespace

void removeTemporaryFiles() noexcept {
  for (std::atomic<const char*>& place : unfinished) {
    if (const char* name = place.exchange(nullptr)) ::unlink(name);
  }
}

OutputFile::OutputFile(const std::string& path) : name_(path) {
  if (path == "-") {
    name_ = "standard output";
    fd_ = STDOUT_FILENO;
    return;
  }
  struct stat info;
  const bool exists = ::stat(path.c_str(), &info) == 0;
  if (exists && !S_ISREG(info.st_mode)) {  // a pipe's link, as in /dev/fd, names nothing to follow
    fd_ = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
    if (fd_ < 0) fail();
    return;
  }
  try {
    target_ = behindLinks(path).string();
  } catch (const fs::filesystem_error& error) {
    throw std::system_error(error.code(), name_);
  }
  if (exists && !mayWrite(target_)) fail();
  openTemporary();
  if (exists && ::fchmod(fd_, info.st_mode & 07777) != 0) {
    const int code = errno;
    removeTemporary();
    ::close(fd_);
    errno = code;
    fail();
  }
}

void OutputFile::check(const std::string& path) {
  if (path == "-" && !isOpenForWriting(STDOUT_FILENO)) {
    throw std::system_error(EBADF, std::generic_category(), "standard output");
  }
  struct stat info;
  const bool exists = ::stat(path.c_str(), &info) == 0;
  if (path == "-" || !exists || S_ISREG(info.st_mode)) {
    const OutputFile begun(path);
    return;
  }
  if (S_ISDIR(info.st_mode)) errno = EISDIR;
  if (S_ISDIR(info.st_mode) || !mayWrite(path)) {
    throw std::system_error(errno, std::generic_category(), path);
  }
}

OutputFile::~OutputFile() {
  removeTemporary();
  if (fd_ >= 0 && fd_ != STDOUT_FILENO) ::close(fd_);
}

void OutputFile::openTemporary() {
  const SignalsHeld held;
  for (int i = 0; i < kMostNames; ++i) {
    std::string name =
        (folderOf(target_) / fmt::format(".cornerpin-{}-{}.tmp", ::getpid(), i)).string();
    fd_ = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd_ >= 0) {
      temporary_ = std::move(name);
      addUnfinished(temporary_.c_str());
      return;
    }
    if (errno != EEXIST) break;
  }
  fail();
}

void OutputFile::removeTemporary() {
  if (temporary_.empty()) return;
  ::unlink(temporary_.c_str());
  dropUnfinished(temporary_.c_str());
  temporary_.clear();
}

void OutputFile::write(std::string_view text) {
  pending_.append(text);
  if (pending_.size() >= kBlock) flush();
}

void OutputFile::flush() {
  std::string_view rest = pending_;
  while (!rest.empty()) {
    const ssize_t count = ::write(fd_, rest.data(), rest.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0 && errno == EPIPE && fd_ == STDOUT_FILENO) break;
    if (count < 0) fail();
    rest.remove_prefix(static_cast<std::size_t>(count));
  }
  pending_.clear();
}

void OutputFile::commit() {
  flush();
  if (temporary_.empty()) return;
  if (::fsync(fd_) != 0) fail();
  const int fd = fd_;
  fd_ = -1;
  if (::close(fd) != 0) fail();
  if (::rename(temporary_.c_str(), target_.c_str()) != 0) fail();
  dropUnfinished(temporary_.c_str());
  temporary_.clear();
  // The new name reaches the disk too, where folders can be flushed.
  const int folder = ::open(folderOf(target_).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (folder >= 0) {
    ::fsync(folder);
    ::close(folder);
  }
}

void OutputFile::fail() const { throw std::system_error(errno, std::generic_category(), name_); }

}  // namespace cornerpin
