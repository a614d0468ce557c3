// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_NODE_WORDS_H
#define SHOT_FILES_NODE_WORDS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "shot/files/byte_source.h"
#include "shot/files/input_error.h"
#include "shot/files/line_reader.h"

namespace cornerpin {

/// Takes a node script apart: words between blanks, texts in quotes, groups in braces. A backslash
/// takes the meaning off the character behind it. In memory of the longest line; throws
/// `InputError` for braces and quotes that are not closed and for groups in more than `kMostNested`
/// others.
class NodeWords {
 public:
  enum class Kind {
    Word,
    Quoted,   ///< at the beginning of a word only: within a word a quote is a character
    Open,     ///< the brace in front of a group
    Close,    ///< and the one behind it; outside of all groups one that closes nothing
    LineEnd,  ///< where the command ends, outside of groups and in a node's
    End
  };

  /// From the first byte; the source must outlive it.
  explicit NodeWords(ByteSource& source) : lines_(source) {}

  Kind next();
  /// The same, skipping ends of lines: for what stands in a group that is no node's.
  Kind nextItem();

  /// Of `Word` and `Quoted`, as it stands without the quotes; valid until the next call.
  std::string_view text() const { return text_; }
  /// From 1.
  std::uint32_t line() const { return lines_.line(); }

  /// Behind `Open`: goes behind the group, in which nothing but braces and backslashes count.
  void skipGroup();
  /// Goes behind the line, whatever is in it.
  void skipLine() { at_ = end_; }
  /// Goes on to where the command ends, by its line, the node's brace or the file.
  Kind skipCommand();

  /// A place in the script.
  struct Mark {
    const char* at;
    std::uint32_t line;
  };
  /// Where the last thing that was taken begins.
  Mark mark() const { return {taken_, line()}; }
  /// What stands from there to here, but no more than so many bytes, where that is one line;
  /// otherwise nothing.
  std::string since(Mark mark, std::size_t most) const;

  const std::string& file() const { return lines_.file(); }
  /// "FILE:LINE: column COLUMN: text", for the last word.
  InputError error(const std::string& text) const { return lines_.error(text_, text); }

  static constexpr std::size_t kMostNested = 100;

 private:
  bool fill();
  Kind open();
  Kind close();
  Kind takeWord();
  Kind takeQuoted();
  void takeLongQuoted();
  Kind requireEnd() const;

  LineReader lines_;
  const char* at_ = nullptr;  // what is left of the line
  const char* end_ = nullptr;
  const char* taken_ = nullptr;
  bool inLine_ = false;
  std::string_view text_;
  std::string quoted_;  // a text over several lines
  std::array<std::uint32_t, kMostNested> opened_{};
  std::size_t depth_ = 0;
};

/// A text of a script as people mean it, without its backslashes.
std::string unescaped(std::string_view text);

}  // namespace cornerpin

#endif
