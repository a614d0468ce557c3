// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_GLOB_H
#define SHOT_SOLVE_GLOB_H

#include <string>
#include <string_view>

namespace cornerpin {

/// A pattern as shells have it: `*` stands for any text, `?` for one character, `[ab]`, `[a-f]` and
/// `[!ab]` for one that is among these or is not; anything else, a `[` that is never closed too,
/// for itself. Characters are those of UTF-8, whatever the locale; a byte that is none counts as
/// one.
class Glob {
 public:
  explicit Glob(std::string_view pattern);

  bool matches(std::string_view name) const;

  /// Whether the text holds anything that does not stand for itself.
  static bool isPattern(std::string_view text) {
    return text.find_first_of("*?[") != std::string_view::npos;
  }

 private:
  std::u32string pattern_;
};

}  // namespace cornerpin

#endif
