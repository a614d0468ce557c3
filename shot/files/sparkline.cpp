// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/sparkline.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace cornerpin {

namespace {

constexpr std::array<const char*, 8> kBlocks = {"▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};

const char* blockOf(double value, double largest) {
  if (!std::isfinite(value)) return "x";
  const double eighths = largest > 0.0 ? value / largest * 8.0 : 0.0;
  return kBlocks[std::min<std::size_t>(static_cast<std::size_t>(eighths), kBlocks.size() - 1)];
}

double largestFinite(const std::vector<double>& values) {
  double largest = 0.0;
  for (double value : values) {
    if (std::isfinite(value)) largest = std::max(largest, value);
  }
  return largest;
}

}  // namespace

std::string sparkline(const std::vector<double>& values, std::size_t width) {
  const std::size_t blocks = std::min(width, values.size());
  const double largest = largestFinite(values);
  std::string line;
  for (std::size_t i = 0; i < blocks; ++i) {
    double highest = 0.0;
    for (std::size_t j = i * values.size() / blocks; j < (i + 1) * values.size() / blocks; ++j) {
      if (!(values[j] <= highest)) highest = values[j];
      if (!std::isfinite(highest)) break;
    }
    line += blockOf(highest, largest);
  }
  return line;
}

}  // namespace cornerpin
