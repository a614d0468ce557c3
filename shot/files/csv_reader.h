// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_CSV_READER_H
#define SHOT_FILES_CSV_READER_H

#include <csv.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace cornerpin {

/// Reads the records of a comma-separated file one by one, in memory proportional to the longest.
///
/// Takes quoted fields (with line ends inside), LF, CRLF and CR line ends, a leading byte-order
/// mark, and skips blank lines. Blanks around an unquoted field are dropped. Throws `InputError`
/// when the file cannot be read, for a stray quote, and for a quote that is never closed.
class CsvReader {
 public:
  /// "-" reads standard input, which errors call "<stdin>".
  explicit CsvReader(const std::string& path);
  CsvReader(const CsvReader&) = delete;
  CsvReader& operator=(const CsvReader&) = delete;
  ~CsvReader();

  /// Moves to the next record; false at the end of the file.
  bool next();

  std::size_t fieldCount() const { return ends_.size(); }
  /// Field i of the current record; valid until `next`.
  std::string_view field(std::size_t i) const;
  /// The line on which the current record starts, from 1; lines past 2^32 - 1 are not counted.
  std::uint32_t line() const { return recordLine_; }
  const std::string& name() const { return name_; }

 private:
  static void onField(void* text, std::size_t length, void* self);
  static void onRecord(int terminator, void* self);
  bool fill();
  std::string_view nextPiece();
  void feed(std::string_view piece);
  [[noreturn]] void fail(const std::string& text) const;

  std::string name_;
  int fd_ = -1;
  csv_parser parser_;

  std::vector<char> buffer_;
  std::size_t position_ = 0;
  std::size_t filled_ = 0;
  bool ended_ = false;

  std::uint32_t line_ = 1;  // of the piece to be fed next
  bool afterReturn_ = false;
  std::uint32_t recordLine_ = 1;
  bool begun_ = false;
  bool complete_ = false;
  bool outOfMemory_ = false;

  std::string text_;               // the record's fields, one behind the other
  std::vector<std::size_t> ends_;  // where each of them ends
};

}  // namespace cornerpin

#endif
