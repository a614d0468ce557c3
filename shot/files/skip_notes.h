// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_SKIP_NOTES_H
#define SHOT_FILES_SKIP_NOTES_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace cornerpin {

/// What is skipped of a file, for people: the first few of each kind, and how many more. Kinds are
/// numbers from 0 on, or enumerators.
class SkipNotes {
 public:
  /// Appends to `notes`; both must outlive it. \param kinds  what they are called, in the plural
  SkipNotes(const std::string& file, std::vector<std::string>& notes,
            std::vector<const char*> kinds)
      : file_(file), notes_(notes), kinds_(std::move(kinds)), counts_(kinds_.size()) {}

  /// `text` is called for those that are kept only.
  template <class Kind, class F>
  void add(Kind kind, std::uint32_t line, F text) {
    if (++counts_[static_cast<std::size_t>(kind)] <= kNamed) append(line, text());
  }

  /// Appends how many there are of which no more than a few are named.
  void close();

  static constexpr std::size_t kNamed = 10;  ///< of a kind

 private:
  void append(std::uint32_t line, const std::string& text);

  const std::string& file_;
  std::vector<std::string>& notes_;
  std::vector<const char*> kinds_;
  std::vector<std::size_t> counts_;
};

}  // namespace cornerpin

#endif
