// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SHOT_TABLE_RANDOM_H
#define TESTS_SHOT_TABLE_RANDOM_H

#include <cmath>
#include <random>

namespace made {

// What the shots of the tables are drawn with.
class TableRandom {
 public:
  explicit TableRandom(unsigned seed) : engine_(seed) {}
  double uniform(double low, double high) {
    return low + (high - low) * static_cast<double>(engine_()) / 4294967296.0;
  }
  double normal() {
    const double length = std::sqrt(-2.0 * std::log(uniform(1e-12, 1.0)));
    return length * std::cos(uniform(0.0, 6.283185307179586));
  }

 private:
  std::mt19937 engine_;
};

}  // namespace made

#endif
