// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/suggestion.h"

#include <cornerpin/shot.h>

#include <algorithm>
#include <cstddef>

namespace cornerpin {

namespace {

constexpr std::size_t kLettersPerError = 3;
constexpr std::size_t kTelling = 3;  // letters that may stand for a longer word

std::string bare(const std::string& word) {
  std::string letters = word.substr(std::min(word.find_first_not_of('-'), word.size()));
  for (char& c : letters) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return letters;
}

}  // namespace

std::string suggestionFor(const std::string& word, const std::vector<std::string>& known) {
  const std::string typed = bare(word);
  if (typed.empty()) return "";
  std::string nearest;
  std::size_t fewest = typed.size() / kLettersPerError + 1;
  for (const std::string& candidate : known) {
    const std::string meant = bare(candidate);
    const bool begun = typed.size() >= kTelling && meant.compare(0, typed.size(), typed) == 0;
    const std::size_t errors = begun && meant != typed ? 1 : shot::slipsBetween(typed, meant);
    if (errors < fewest) {
      fewest = errors;
      nearest = candidate;
    }
  }
  return nearest;
}

}  // namespace cornerpin
