// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SHOT_RANDOM_H
#define TESTS_SHOT_RANDOM_H

#include <cstdint>
#include <random>

namespace made {

// The same numbers with every compiler and C library.
class Random {
 public:
  explicit Random(std::uint32_t seed) : engine_(seed) {}
  double real(double low, double high) {
    return low + (high - low) * (static_cast<double>(engine_()) / 4294967296.0);
  }
  bool chance(double share) { return real(0.0, 1.0) < share; }
  // Nearly normal, by additions alone.
  double noise(double deviation) {
    double sum = 0.0;
    for (int i = 0; i < 12; ++i) sum += real(-0.5, 0.5);
    return deviation * sum;
  }

 private:
  std::mt19937 engine_;
};

}  // namespace made

#endif
