// SPDX-License-Identifier: BSD-3-Clause
#include "shot/plane/median.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace cornerpin {

double ranked(std::vector<double> numbers, std::size_t rank) {
  const auto place = numbers.begin() + static_cast<std::ptrdiff_t>(rank);
  std::nth_element(numbers.begin(), place, numbers.end());
  return *place;
}

double lowerMedian(std::vector<double> numbers) {
  if (numbers.empty()) return std::numeric_limits<double>::quiet_NaN();
  const std::size_t rank = (numbers.size() - 1) / 2;
  return ranked(std::move(numbers), rank);
}

double upperMedian(std::vector<double> numbers) {
  if (numbers.empty()) return std::numeric_limits<double>::quiet_NaN();
  const std::size_t rank = numbers.size() / 2;
  return ranked(std::move(numbers), rank);
}

}  // namespace cornerpin
