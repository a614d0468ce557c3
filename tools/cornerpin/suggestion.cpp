// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/suggestion.h"

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

// Letters put in, left out or replaced, and neighbours that changed places. Row i of the table
// holds the errors between the first i letters of `a` and the first letters of `b`.
std::size_t errorsBetween(const std::string& a, const std::string& b) {
  std::vector<std::vector<std::size_t>> errors(a.size() + 1,
                                               std::vector<std::size_t>(b.size() + 1));
  for (std::size_t i = 0; i <= a.size(); ++i) {
    for (std::size_t j = 0; j <= b.size(); ++j) {
      std::size_t& here = errors[i][j];
      here = i + j;
      if (i == 0 || j == 0) continue;
      const std::size_t replaced = a[i - 1] == b[j - 1] ? 0 : 1;
      here =
          std::min({errors[i - 1][j] + 1, errors[i][j - 1] + 1, errors[i - 1][j - 1] + replaced});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
        here = std::min(here, errors[i - 2][j - 2] + 1);
      }
    }
  }
  return errors[a.size()][b.size()];
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
    const std::size_t errors = begun && meant != typed ? 1 : errorsBetween(typed, meant);
    if (errors < fewest) {
      fewest = errors;
      nearest = candidate;
    }
  }
  return nearest;
}

}  // namespace cornerpin
