// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_LINE_READER_H
#define SHOT_FILES_LINE_READER_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "shot/files/byte_source.h"
#include "shot/files/input_error.h"

namespace cornerpin {

/// Reads a text file line by line, in memory proportional to the longest. Takes LF, CRLF and CR
/// line ends and a leading byte-order mark. Throws `InputError` for a line longer than `kLongest`.
class LineReader {
 public:
  /// From the first byte; the source must outlive it.
  explicit LineReader(ByteSource& source);

  /// Moves to the next line; false at the end of the file.
  bool next();
  /// The same, skipping lines of nothing but blanks.
  bool nextFilled();
  /// The next `next` stays on this line.
  void stay() { stays_ = true; }

  /// The line without its end; valid until `next`.
  std::string_view text() const { return text_; }
  /// From 1; lines past 2^32 - 1 are not counted.
  std::uint32_t line() const { return line_; }
  const std::string& file() const { return source_.name(); }

  /// "FILE:LINE: text".
  InputError error(const std::string& text) const { return {file(), line_, text}; }
  /// "FILE:LINE:COLUMN: text" with the column, in bytes from 1, where a part of the line begins.
  InputError error(std::string_view part, const std::string& text) const;

  static constexpr std::size_t kLongest = std::size_t{16} * 1024 * 1024;

 private:
  bool fill();
  [[noreturn]] void refuseLong() const;

  ByteSource& source_;
  std::vector<char> buffer_;
  std::size_t next_ = 0;    // behind the end of the line
  std::size_t filled_ = 0;  // of the buffer
  std::string_view text_;
  std::uint32_t line_ = 0;
  bool stays_ = false;
  bool afterReturn_ = false;  // a line feed that follows belongs to the line before
};

/// Takes the words of a line one by one; blanks and tabs stand between them. A number that does not
/// parse throws `InputError` with file, line, column and value.
class Words {
 public:
  explicit Words(const LineReader& lines) : Words(lines, lines.text()) {}
  /// Of a part of the line.
  Words(const LineReader& lines, std::string_view part) : lines_(lines), rest_(part) {
    skipBlanks();
  }

  bool atEnd() const { return rest_.empty(); }
  /// What is left of the line.
  std::string_view rest() const { return rest_; }

  /// The next word; empty at the end of the line.
  std::string_view take();
  /// The text between two quotes, without them; throws where no quote stands or none follows.
  std::string_view takeQuoted(const char* name);

  /// The next word as a number of this name; the line may not be at its end.
  std::int32_t takeWhole(const char* name);
  std::int32_t takeFrame();
  double takeNumber(const char* name);
  /// A number that single precision holds, or NaN.
  double takePosition(const char* name);

  /// Refuses what is left of the line, if anything is.
  void requireEnd() const;

 private:
  void skipBlanks();
  std::string_view require(const char* name);

  const LineReader& lines_;
  std::string_view rest_;
};

}  // namespace cornerpin

#endif
