// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_OUTPUT_FILE_H
#define SHOT_FILES_OUTPUT_FILE_H

#include <cstddef>
#include <string>
#include <string_view>

namespace cornerpin {

/// A file that appears whole or not at all.
///
/// Writes go to a hidden temporary file in the same folder; `commit` flushes it to the disk and
/// renames it over the target. Without `commit` the temporary file is removed and the target keeps
/// what it held. A process that ends while writing leaves a file ".cornerpin-*.tmp" behind, unless
/// it has `removeTemporaryFiles` called first.
///
/// A replaced file's permissions stay; a new one gets the usual ones. A symbolic link is followed.
/// "-" is standard output; it, pipes and devices are written directly. A reader of standard output
/// that goes away has had enough: what is written from then on is dropped, without a failure.
///
/// Every failure throws `std::system_error` with the target's name.
class OutputFile {
 public:
  explicit OutputFile(const std::string& path);
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile();

  /// Throws where a file of that path could not be begun, or standard output is closed, and leaves
  /// nothing behind. Of pipes and devices, which it does not open, only the rights are looked at.
  static void check(const std::string& path);

  void write(std::string_view text);
  void commit();

 private:
  void openTemporary();
  void removeTemporary();
  void flush();
  [[noreturn]] void fail() const;

  std::string name_;    // as the user gave it
  std::string target_;  // behind all symbolic links
  std::string temporary_;
  std::string pending_;
  int fd_ = -1;
};

/// Removes the temporary files of all files that are being written, at most `kMostUnfinished`. For
/// a process that is about to end: safe in a signal handler.
void removeTemporaryFiles() noexcept;
constexpr std::size_t kMostUnfinished = 16;

}  // namespace cornerpin

#endif
