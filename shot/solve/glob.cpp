// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/glob.h"

#include <cstddef>

namespace cornerpin {

namespace {

constexpr char32_t kBeyondUnicode = 0x200000;
constexpr std::size_t kNone = std::u32string::npos;

// How many bytes the lead byte of a UTF-8 character announces; 0 for a byte that leads none.
std::size_t lengthBy(unsigned char lead) {
  if (lead < 0x80) return 1;
  if (lead < 0xc0) return 0;
  if (lead < 0xe0) return 2;
  return lead < 0xf0 ? 3 : 4;
}

bool isWhole(std::string_view character, std::size_t length) {
  if (length == 0 || character.size() < length) return false;
  for (std::size_t i = 1; i < length; ++i) {
    if ((static_cast<unsigned char>(character[i]) & 0xc0) != 0x80) return false;
  }
  return true;
}

std::u32string charactersOf(std::string_view text) {
  std::u32string characters;
  while (!text.empty()) {
    const auto lead = static_cast<unsigned char>(text.front());
    std::size_t length = lengthBy(lead);
    char32_t character = length == 1 ? lead : lead & (0xffu >> (length + 1));
    if (!isWhole(text, length)) {
      character = kBeyondUnicode + lead;
      length = 1;
    }
    for (std::size_t i = 1; i < length; ++i) {
      character = character << 6 | (static_cast<unsigned char>(text[i]) & 0x3fu);
    }
    characters.push_back(character);
    text.remove_prefix(length);
  }
  return characters;
}

bool negates(char32_t c) { return c == U'!' || c == U'^'; }

// Where the set that opens at `open` closes; its first member may be a "]".
std::size_t closeOf(const std::u32string& pattern, std::size_t open) {
  std::size_t first = open + 1;
  if (first < pattern.size() && negates(pattern[first])) ++first;
  return pattern.find(U']', first + 1);
}

// Whether the set from `open` to `close` takes the character.
bool setTakes(const std::u32string& pattern, std::size_t open, std::size_t close, char32_t c) {
  const bool negated = negates(pattern[open + 1]);
  bool found = false;
  for (std::size_t i = open + (negated ? 2 : 1); i < close; ++i) {
    const bool isRange = i + 2 < close && pattern[i + 1] == U'-';
    const char32_t last = isRange ? pattern[i + 2] : pattern[i];
    found = found || (pattern[i] <= c && c <= last);
    if (isRange) i += 2;
  }
  return found != negated;
}

// Whether the pattern's element at `at`, which moves behind it, takes the character.
bool takes(const std::u32string& pattern, std::size_t& at, char32_t c) {
  const std::size_t open = at++;
  if (pattern[open] == U'?') return true;
  const std::size_t close = pattern[open] == U'[' ? closeOf(pattern, open) : kNone;
  if (close == kNone) return pattern[open] == c;
  at = close + 1;
  return setTakes(pattern, open, close, c);
}

}  // namespace

Glob::Glob(std::string_view pattern) : pattern_(charactersOf(pattern)) {}

// Of several stars only the last one ever has to take more: what stands between two of them is
// found as early as it can be.
bool Glob::matches(std::string_view text) const {
  const std::u32string name = charactersOf(text);
  std::size_t at = 0;
  std::size_t behindStar = kNone;
  std::size_t taken = 0;  // by the star and all before it
  for (std::size_t i = 0; i < name.size();) {
    if (at < pattern_.size() && pattern_[at] == U'*') {
      behindStar = ++at;
      taken = i;
      continue;
    }
    if (at < pattern_.size() && takes(pattern_, at, name[i])) {
      ++i;
      continue;
    }
    if (behindStar == kNone) return false;
    at = behindStar;
    i = ++taken;
  }
  while (at < pattern_.size() && pattern_[at] == U'*') ++at;
  return at == pattern_.size();
}

}  // namespace cornerpin
