// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_JSON_CHARACTERS_H
#define SHOT_FILES_JSON_CHARACTERS_H

#include <cstddef>
#include <cstdint>
#include <exception>
#include <iterator>
#include <string>

#include "shot/files/byte_source.h"

namespace cornerpin {

/// The bytes of a JSON file one by one for a parser that tells what it meets, in memory of one
/// block. Throws `InputError` for a text or a number of more than `kLongest`, which the parser
/// would have to hold.
class JsonCharacters {
 public:
  /// From the first byte; the source must outlive it.
  explicit JsonCharacters(ByteSource& source);

  bool atEnd() const { return next_ == filled_; }
  char character() const { return block_[next_]; }
  void advance() {
    line_ += block_[next_] == '\n' ? 1 : 0;
    if (++next_ == filled_) fill();
  }

  /// That a text, a number or a bracket ends here.
  void noteEnd() { sinceEnd_ = 0; }

  std::uint32_t line() const { return line_; }
  const std::string& file() const { return source_.name(); }

  static constexpr std::size_t kBlock = std::size_t{64} * 1024;
  static constexpr std::size_t kLongest = std::size_t{1024} * 1024;

 private:
  void fill();

  ByteSource& source_;
  std::string block_;
  std::size_t next_ = 0;
  std::size_t filled_ = 0;
  std::size_t sinceEnd_ = 0;  // bytes of blocks that have come since
  std::uint32_t line_ = 1;
};

/// The same for a parser that wants iterators.
class JsonCharacterIterator {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = char;

  /// Null is the end.
  explicit JsonCharacterIterator(JsonCharacters* characters) : characters_(characters) {}
  char operator*() const { return characters_->character(); }
  JsonCharacterIterator& operator++() {
    characters_->advance();
    return *this;
  }
  // Two of them differ in whether there is anything left.
  bool operator==(const JsonCharacterIterator& other) const { return atEnd() == other.atEnd(); }
  bool operator!=(const JsonCharacterIterator& other) const { return !(*this == other); }

 private:
  bool atEnd() const { return characters_ == nullptr || characters_->atEnd(); }
  JsonCharacters* characters_;
};

/// What a parser's exception says, for people: without the parser's own name and place in front,
/// and no longer than a few lines.
std::string jsonFlaw(const std::exception& error);

}  // namespace cornerpin

#endif
