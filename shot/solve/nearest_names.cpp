// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/nearest_names.h"

#include <algorithm>
#include <utility>

namespace cornerpin {

namespace {

constexpr std::size_t kLongest = 200;  // of a text that has slips and not another meaning

}  // namespace

std::size_t slipsBetween(std::string_view a, std::string_view b) {
  std::vector<std::size_t> beforeLast;
  std::vector<std::size_t> last(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) last[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::vector<std::size_t> row(b.size() + 1, i);
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t other = last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
      row[j] = std::min({row[j - 1] + 1, last[j] + 1, other});
      const bool swapped = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
      if (swapped) row[j] = std::min(row[j], beforeLast[j - 2] + 1);
    }
    beforeLast = std::exchange(last, std::move(row));
  }
  return last.back();
}

std::vector<std::string> nearestNames(std::string_view text, const std::vector<std::string>& names,
                                      std::size_t most) {
  if (text.size() < 2 || text.size() > kLongest) return {};
  const std::size_t allowed = text.size() / 3 + 1;
  std::vector<std::pair<std::size_t, std::size_t>> found;  // slips, index
  for (std::size_t i = 0; i < names.size(); ++i) {
    const std::size_t size = names[i].size();
    if (size > text.size() + allowed || text.size() > size + allowed) continue;
    const std::size_t slips = slipsBetween(text, names[i]);
    if (slips <= allowed && slips < std::max(text.size(), size)) found.push_back({slips, i});
  }
  std::sort(found.begin(), found.end());
  found.resize(std::min(found.size(), most));
  std::vector<std::string> nearest;
  nearest.reserve(found.size());
  for (const auto& [slips, i] : found) nearest.push_back(names[i]);
  return nearest;
}

}  // namespace cornerpin
