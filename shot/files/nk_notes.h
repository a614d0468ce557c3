// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_NK_NOTES_H
#define SHOT_FILES_NK_NOTES_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace cornerpin {

/// What is skipped of a node script, for people: the first few of each kind, and how many more.
class NkNotes {
 public:
  enum class About { Expressions, Keys, Nodes, Places, Pins, Counts };

  /// Appends to `notes`; both must outlive it.
  NkNotes(const std::string& file, std::vector<std::string>& notes) : file_(file), notes_(notes) {}

  /// `text` is called for those that are kept only.
  template <class F>
  void add(About about, std::uint32_t line, F text) {
    if (++counts_[static_cast<std::size_t>(about)] <= kNamed) append(line, text());
  }

  /// Appends how many there are of which no more than a few are named.
  void close();

  static constexpr std::size_t kNamed = 10;  ///< of a kind

 private:
  void append(std::uint32_t line, const std::string& text);

  const std::string& file_;
  std::vector<std::string>& notes_;
  std::array<std::size_t, 6> counts_{};
};

}  // namespace cornerpin

#endif
