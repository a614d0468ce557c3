// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/skip_notes.h"

#include <fmt/format.h>

namespace cornerpin {

void SkipNotes::append(std::uint32_t line, const std::string& text) {
  notes_.push_back(fmt::format("{}:{}: {}", file_, line, text));
}

void SkipNotes::close() {
  for (std::size_t i = 0; i < counts_.size(); ++i) {
    if (counts_[i] > kNamed)
      notes_.push_back(fmt::format("{}: and {} more {}", file_, counts_[i] - kNamed, kinds_[i]));
  }
}

}  // namespace cornerpin
