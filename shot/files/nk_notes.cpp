// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/nk_notes.h"

#include <fmt/format.h>

namespace cornerpin {

void NkNotes::append(std::uint32_t line, const std::string& text) {
  notes_.push_back(fmt::format("{}:{}: {}", file_, line, text));
}

void NkNotes::close() {
  // In the order of `About`.
  constexpr std::array<const char*, 6> kWords = {
      "expressions", "tracks with keys left out", "nodes", "places", "pins", "counts"};
  for (std::size_t i = 0; i < counts_.size(); ++i) {
    if (counts_[i] > kNamed)
      notes_.push_back(fmt::format("{}: and {} more {}", file_, counts_[i] - kNamed, kWords[i]));
  }
}

}  // namespace cornerpin
