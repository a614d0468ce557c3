// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/refused_rows.h"

#include <fmt/format.h>

#include <string>

namespace cornerpin {

void RefusedRows::add(const InputError& error) {
  if (named_.size() < kNamed) {
    named_.push_back(error);
  } else if (others_ < kMost) {
    ++others_;
  } else {
    ended_ = true;
    raise();
  }
}

void RefusedRows::raise() const {
  std::vector<InputError> all = named_;
  if (others_ > 0) {
    const std::string rows =
        others_ == 1 ? "1 more row is refused" : fmt::format("{} more rows are refused", others_);
    all.emplace_back(all.front().file, rows + (ended_ ? ", and what follows is not read" : ""));
  }
  all.insert(all.end(), last_.begin(), last_.end());
  if (!all.empty()) throw InputError(all);
}

}  // namespace cornerpin
