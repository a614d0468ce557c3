// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/only_rows.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>

#include "shot/files/info_row.h"
#include "shot/solve/wording.h"

namespace cornerpin {

namespace {

constexpr std::size_t kListed = 5;

template <class Item>
std::string rowsOf(const char* label, const OnlyIn<Item>& only, const DifferenceNames& names) {
  std::string text;
  const auto add = [&](const std::vector<Item>& items, const std::string& file) {
    if (items.empty()) return;
    text += infoRow(text.empty() ? label : "",
                    fmt::format("{} only in {}: {}", items.size(), file, listed(items)));
  };
  add(only.first, names.first);
  add(only.second, names.second);
  return text;
}

}  // namespace

std::string listed(const std::vector<int>& frames) { return textOf(stretchesOf(frames), kListed); }

std::string listed(const std::vector<std::string>& names) {
  const std::vector<std::string> first(
      names.begin(), names.begin() + static_cast<std::ptrdiff_t>(std::min(names.size(), kListed)));
  const std::size_t more = names.size() - first.size();
  return fmt::format("{}{}", fmt::join(first, ", "),
                     more > 0 ? fmt::format(" and {} more", more) : "");
}

std::string onlyRows(const char* label, const OnlyIn<int>& frames, const DifferenceNames& names) {
  return rowsOf(label, frames, names);
}

std::string onlyRows(const char* label, const OnlyIn<std::string>& items,
                     const DifferenceNames& names) {
  return rowsOf(label, items, names);
}

}  // namespace cornerpin
