// SPDX-License-Identifier: BSD-3-Clause
#include "shot/time/path_equations.h"

#include <algorithm>

namespace cornerpin {

PathEquations::PathEquations(const std::vector<double>& weights, const std::vector<PathBend>& bends,
                             double strength)
    : weights_(weights), factor_(weights.size(), Column{}) {
  const std::size_t n = weights.size();
  for (std::size_t i = 0; i < n; ++i) factor_[i][0] = weights[i];
  for (std::size_t j = 0; j < bends.size(); ++j) {
    const auto& c = bends[j].factors;
    const double v = strength * bends[j].weight;
    for (std::size_t a = 0; a < 4; ++a) {
      for (std::size_t b = a; b < 4; ++b) factor_[j + a][b - a] += v * c[a] * c[b];
    }
  }
  for (std::size_t i = 0; i < n; ++i) {
    const Column column = factor_[i];
    const std::size_t below = std::min<std::size_t>(3, n - 1 - i);
    for (std::size_t a = 1; a <= below; ++a) {
      factor_[i][a] = column[a] / column[0];
      for (std::size_t b = a; b <= below; ++b) factor_[i + a][b - a] -= factor_[i][a] * column[b];
    }
  }
}

std::vector<Point> PathEquations::solve(const std::vector<Point>& places) const {
  const std::size_t n = factor_.size();
  std::vector<Point> x(n);
  for (std::size_t i = 0; i < n; ++i) {
    x[i] = {weights_[i] * places[i].x, weights_[i] * places[i].y};
  }
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t a = 1; a < 4 && i + a < n; ++a) {
      x[i + a].x -= factor_[i][a] * x[i].x;
      x[i + a].y -= factor_[i][a] * x[i].y;
    }
  }
  for (std::size_t i = n; i-- > 0;) {
    x[i] = {x[i].x / factor_[i][0], x[i].y / factor_[i][0]};
    for (std::size_t a = 1; a < 4 && i + a < n; ++a) {
      x[i].x -= factor_[i][a] * x[i + a].x;
      x[i].y -= factor_[i][a] * x[i + a].y;
    }
  }
  return x;
}

// Column i of the inverse Z from the three behind it: L'Z is the inverse of L D, which has nothing
// above its diagonal, and 1 / D on it.
std::vector<double> PathEquations::variances() const {
  const std::size_t n = factor_.size();
  std::vector<Column> z(n, Column{});
  const auto at = [&](std::size_t i, std::size_t j) { return i < j ? z[i][j - i] : z[j][i - j]; };
  std::vector<double> diagonal(n);
  for (std::size_t i = n; i-- > 0;) {
    const std::size_t below = std::min<std::size_t>(3, n - 1 - i);
    for (std::size_t a = 1; a <= below; ++a) {
      for (std::size_t b = 1; b <= below; ++b) z[i][a] -= factor_[i][b] * at(i + a, i + b);
    }
    z[i][0] = 1.0 / factor_[i][0];
    for (std::size_t b = 1; b <= below; ++b) z[i][0] -= factor_[i][b] * z[i][b];
    diagonal[i] = z[i][0];
  }
  return diagonal;
}

}  // namespace cornerpin
