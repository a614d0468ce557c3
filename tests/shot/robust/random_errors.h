// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SHOT_ROBUST_RANDOM_ERRORS_H
#define TESTS_SHOT_ROBUST_RANDOM_ERRORS_H

#include <cmath>
#include <cstdint>
#include <random>

#include "shot/fit/matches.h"
#include "shot/plane/homography.h"

// Matches around a transform with errors that depend on the seed alone.
namespace errors {

constexpr double kTwoPi = 6.283185307179586;

const cornerpin::Homography kView = {{{0.9, 0.2, 0.3}, {-0.25, 0.8, -0.2}, {0.12, -0.1, 1}}};

class Random {
 public:
  explicit Random(std::uint32_t seed) : engine_(seed) {}
  double uniform() { return (static_cast<double>(engine_()) + 0.5) / 4294967296.0; }
  cornerpin::Point place() {
    const double x = 2.0 * uniform() - 1.0;
    return {x, 2.0 * uniform() - 1.0};
  }
  // The length of a bivariate t error: its square over freedom and variance has the distribution
  // function 1 - (1 + q)^(-freedom / 2).
  double length(int freedom, double sigma) {
    const double q = std::pow(uniform(), -2.0 / freedom) - 1.0;
    return sigma * std::sqrt(freedom * q);
  }
  double normalLength(double sigma) { return sigma * std::sqrt(-2.0 * std::log(uniform())); }
  double angle() { return kTwoPi * uniform(); }

 private:
  std::mt19937 engine_;
};

// Where `h` puts the place, with an error of this length and direction.
inline cornerpin::Match matchAt(cornerpin::Point base, const cornerpin::Homography& h,
                                double length, double angle) {
  const cornerpin::Point image = map(h, base);
  return {base, {image.x + length * std::cos(angle), image.y + length * std::sin(angle)}};
}

}  // namespace errors

#endif
