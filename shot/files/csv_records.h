// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_CSV_RECORDS_H
#define SHOT_FILES_CSV_RECORDS_H

#include <csv.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "shot/files/byte_source.h"
#include "shot/files/number_text.h"

namespace cornerpin {

/// Reads the records of a file one by one, in memory proportional to the longest. They are
/// separated by the one of comma, semicolon and tab that its first line that is not blank has most
/// of, outside of quotes: by commas where it has none.
///
/// Takes gzip files, quoted fields (with line ends inside), LF, CRLF and CR line ends, a leading
/// byte-order mark, and skips blank lines. Blanks around an unquoted field are dropped. Throws
/// `InputError` when the file cannot be read, for a stray quote, for a quote that is never closed,
/// for a record longer than `kLongest`, and one without quotes of more than about `kMostFields`.
///
/// Cost: a line without a quote is cut where it stands in the file's block; only lines with one go
/// through libcsv.
class CsvRecords {
 public:
  /// From the first byte; the source must outlive it.
  explicit CsvRecords(ByteSource& source);
  CsvRecords(const CsvRecords&) = delete;
  CsvRecords& operator=(const CsvRecords&) = delete;
  ~CsvRecords();

  /// Moves to the next record; false at the end of the file.
  bool next();

  std::size_t fieldCount() const { return ends_.size(); }
  /// Field i of the current record; valid until `next`.
  std::string_view field(std::size_t i) const {
    const std::size_t begin = i == 0 ? 0 : ends_[i - 1] + 1;
    const std::string_view text(text_ + begin, ends_[i] - begin);
    return padded_ ? trimmed(text) : text;
  }
  /// The line on which the current record starts, from 1; lines past 2^32 - 1 are not counted.
  std::uint32_t line() const { return recordLine_; }
  const std::string& name() const { return source_.name(); }
  char separator() const { return separator_; }

  /// About how many records the whole file has, from the lines in a sample of it; none for what is
  /// not a plain file.
  std::size_t estimatedRecords() const;
  ByteSource::Position position() const { return source_.position(); }

  static constexpr std::size_t kLongest = std::size_t{4} * 1024 * 1024;
  static constexpr std::size_t kMostFields = 1'000'000;

 private:
  static void onField(void* text, std::size_t length, void* self);
  static void onRecord(int terminator, void* self);
  bool nextLine();
  template <char kSeparator>
  bool scan();
  bool scan();
  char findSeparator();
  void countLine();
  bool fill();
  void parseQuoted();
  void feedLine();
  std::string_view line(std::size_t length) const { return {buffer_.data() + begin_, length}; }
  [[noreturn]] void fail(const std::string& text) const;

  ByteSource& source_;
  csv_parser parser_;
  char separator_ = ',';

  std::vector<char> buffer_;
  std::size_t begin_ = 0;   // of the current line
  std::size_t length_ = 0;  // of it without its end
  std::size_t next_ = 0;    // behind its end
  std::size_t filled_ = 0;
  bool ended_ = false;
  bool hasQuote_ = false;
  bool hasBlank_ = false;

  std::uint32_t nextNumber_ = 1;  // of the line behind the current one
  bool afterReturn_ = false;
  std::uint32_t recordLine_ = 1;

  const char* text_ = nullptr;     // the record's fields, one character between them
  std::vector<std::size_t> ends_;  // where each of them ends
  bool padded_ = false;            // blanks may stand around them that do not belong to them

  std::string parsed_;           // the fields of a record with a quote
  std::size_t parsedLines_ = 0;  // the length of its lines
  std::vector<std::size_t> parsedEnds_;
  bool complete_ = false;
  bool outOfMemory_ = false;
};

}  // namespace cornerpin

#endif
