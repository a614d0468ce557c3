// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_BYTE_SOURCE_H
#define SHOT_FILES_BYTE_SOURCE_H

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace cornerpin {

class Sha256;

/// The bytes of a file, or of standard input; of a gzip file (one or several members) those that
/// are packed in it.
///
/// Throws `InputError` when the file cannot be opened or read, when what is packed is broken or cut
/// off, and when it comes to more than `kMostInflated` times the packed bytes so far, and to more
/// than `kAlwaysInflated`. Blocks are read, not mapped, so that a file that somebody cuts off
/// meanwhile simply ends there. A gzip file takes 110 kB of memory, any other none.
class ByteSource {
 public:
  /// "-" reads standard input, which errors call "<stdin>".
  /// \param digest  is given the bytes of the file as they stand there, once all have been read;
  ///                null: none
  explicit ByteSource(const std::string& path, Sha256* digest = nullptr);
  ByteSource(const ByteSource&) = delete;
  ByteSource& operator=(const ByteSource&) = delete;
  ~ByteSource();

  /// Some of the bytes that are left, at most so many, and at least one unless there are none.
  std::size_t read(char* to, std::size_t most);

  /// The first `kBeginning` bytes, or all where there are fewer, which are still to be read; before
  /// any other call than this one.
  std::string_view beginning();

  const std::string& name() const { return name_; }

  /// Of a plain file that is not packed: how long it is, and bytes out of the middle, which are
  /// still to be read. 0 for all else.
  std::size_t size() const;
  std::size_t readAt(std::size_t begin, char* to, std::size_t most) const;

  /// How many bytes of the file have been read, and how many there are: 0 where that is no plain
  /// file.
  struct Position {
    std::size_t done = 0;
    std::size_t total = 0;
  };
  Position position() const;

  static constexpr std::size_t kBeginning = std::size_t{64} * 1024;
  static constexpr std::size_t kMostInflated = 100;
  static constexpr std::size_t kAlwaysInflated = std::size_t{4} * 1024 * 1024;

 private:
  struct Inflation;
  std::size_t readBytes(char* to, std::size_t most);
  std::size_t readRaw(char* to, std::size_t most);
  std::size_t readInflated(char* to, std::size_t most);
  void inflateSome();

  std::string name_;
  Sha256* digest_;
  int fd_ = -1;
  bool begun_ = false;
  std::string beginning_;                 // bytes that were read ahead
  std::size_t taken_ = 0;                 // of it
  std::unique_ptr<Inflation> inflation_;  // of a gzip file
};

}  // namespace cornerpin

#endif
