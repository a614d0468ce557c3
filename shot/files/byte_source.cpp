// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/byte_source.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <new>
#include <vector>

#include "shot/files/input_error.h"
#include "shot/files/sha256.h"
#include "shot/files/unreadable.h"

namespace cornerpin {

namespace {

constexpr std::size_t kPackedBlock = std::size_t{64} * 1024;
constexpr int kGzipAlone = 16 + MAX_WBITS;

bool isGzip(const char* bytes, std::size_t count) {
  return count >= 2 && bytes[0] == '\x1f' && bytes[1] == '\x8b';
}

// Of a plain file; 0 for all else.
std::size_t sizeOf(int fd) {
  struct stat file {};
  if (::fstat(fd, &file) != 0 || !S_ISREG(file.st_mode)) return 0;
  return static_cast<std::size_t>(file.st_size);
}

}  // namespace

struct ByteSource::Inflation {
  // With the first packed bytes.
  Inflation(const char* bytes, std::size_t count) : packed(bytes, bytes + count), total(count) {
    if (::inflateInit2(&stream, kGzipAlone) != Z_OK) throw std::bad_alloc();
    packed.resize(std::max(count, kPackedBlock));
    stream.next_in = packed.data();
    stream.avail_in = static_cast<uInt>(count);
  }
  Inflation(const Inflation&) = delete;
  Inflation& operator=(const Inflation&) = delete;
  ~Inflation() { ::inflateEnd(&stream); }

  z_stream stream{};
  std::vector<Bytef> packed;
  std::size_t total;         // packed bytes that were read
  std::size_t inflated = 0;  // bytes that they have come to
  bool complete = false;     // a member ends where the stream is
};

ByteSource::ByteSource(const std::string& path, Sha256* digest)
    : name_(path == "-" ? "<stdin>" : path), digest_(digest) {
  fd_ = path == "-" ? STDIN_FILENO : ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd_ < 0) throw InputError(name_, whyUnreadable(path, errno));
}

ByteSource::~ByteSource() {
  if (fd_ > STDIN_FILENO) ::close(fd_);
}

std::size_t ByteSource::size() const { return inflation_ ? 0 : sizeOf(fd_); }

std::size_t ByteSource::readAt(std::size_t begin, char* to, std::size_t most) const {
  if (size() == 0) return 0;
  const ssize_t count = ::pread(fd_, to, most, static_cast<off_t>(begin));
  return count > 0 ? static_cast<std::size_t>(count) : 0;
}

ByteSource::Position ByteSource::position() const {
  const std::size_t total = sizeOf(fd_);
  if (total == 0) return {};
  return {static_cast<std::size_t>(::lseek(fd_, 0, SEEK_CUR)), total};
}

std::size_t ByteSource::read(char* to, std::size_t most) {
  if (taken_ == beginning_.size()) return readBytes(to, most);
  const std::size_t count = beginning_.copy(to, most, taken_);
  taken_ += count;
  return count;
}

std::string_view ByteSource::beginning() {
  if (!begun_) {
    beginning_.resize(kBeginning);
    std::size_t filled = 0;
    for (std::size_t count = 1; count > 0 && filled < kBeginning; filled += count) {
      count = readBytes(beginning_.data() + filled, kBeginning - filled);
    }
    beginning_.resize(filled);
  }
  return beginning_;
}

std::size_t ByteSource::readBytes(char* to, std::size_t most) {
  if (inflation_) return readInflated(to, most);
  std::size_t count = readRaw(to, most);
  if (begun_) return count;
  begun_ = true;
  if (count == 1 && most > 1) count += readRaw(to + 1, most - 1);
  if (!isGzip(to, count)) return count;
  inflation_ = std::make_unique<Inflation>(to, count);
  return readInflated(to, most);
}

std::size_t ByteSource::readRaw(char* to, std::size_t most) {
  for (;;) {
    const ssize_t count = ::read(fd_, to, most);
    if (count >= 0) {
      if (digest_ != nullptr) digest_->add(to, static_cast<std::size_t>(count));
      return static_cast<std::size_t>(count);
    }
    if (errno == EINTR) continue;
    throw InputError(name_, whyUnreadable(fd_ == STDIN_FILENO ? "-" : name_, errno));
  }
}

std::size_t ByteSource::readInflated(char* to, std::size_t most) {
  z_stream& stream = inflation_->stream;
  const auto room = static_cast<uInt>(std::min<std::size_t>(most, std::size_t{1} << 30U));
  stream.next_out = reinterpret_cast<Bytef*>(to);
  stream.avail_out = room;
  while (stream.avail_out == room) {
    if (stream.avail_in == 0) {
      std::vector<Bytef>& packed = inflation_->packed;
      const std::size_t count = readRaw(reinterpret_cast<char*>(packed.data()), packed.size());
      if (count == 0 && inflation_->complete) return 0;
      if (count == 0) throw InputError(name_, "the gzip data is cut off: the file is incomplete");
      stream.next_in = packed.data();
      stream.avail_in = static_cast<uInt>(count);
      inflation_->total += count;
    }
    inflateSome();
  }
  const std::size_t count = room - stream.avail_out;
  inflation_->inflated += count;
  const std::size_t packed = inflation_->total - stream.avail_in;
  if (inflation_->inflated > std::max(kAlwaysInflated, kMostInflated * packed)) {
    throw InputError(name_, fmt::format("the gzip data inflates to more than {} times its size: "
                                        "unpack the file if that is right",
                                        kMostInflated));
  }
  return count;
}

// Behind a member comes the next one.
void ByteSource::inflateSome() {
  z_stream& stream = inflation_->stream;
  if (inflation_->complete) ::inflateReset(&stream);
  const int status = ::inflate(&stream, Z_NO_FLUSH);
  if (status == Z_MEM_ERROR) throw std::bad_alloc();
  if (status != Z_OK && status != Z_BUF_ERROR && status != Z_STREAM_END) {
    throw InputError(name_, fmt::format("the gzip data is broken ({})",
                                        stream.msg ? stream.msg : "no such format"));
  }
  inflation_->complete = status == Z_STREAM_END;
}

}  // namespace cornerpin
