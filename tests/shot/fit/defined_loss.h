// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SHOT_FIT_DEFINED_LOSS_H
#define TESTS_SHOT_FIT_DEFINED_LOSS_H

#include <array>
#include <cmath>
#include <cstddef>

#include "cornerpin/deriv/deriv.h"
#include "shot/fit/loss.h"
#include "shot/fit/matches.h"
#include "shot/plane/homography.h"

// Losses and costs as they are defined, of plain and of derivative numbers.
namespace defined {

inline double valueOf(double x) { return x; }
inline double valueOf(const MDeriv<double>& x) { return x.x(); }

template <class T>
T lossOf(cornerpin::Loss loss, double width, const T& r2) {
  using std::log;
  using std::sqrt;
  const double b = width * width;
  const bool inside = valueOf(r2) <= b;
  switch (loss) {
    case cornerpin::Loss::None:
      return r2;
    case cornerpin::Loss::Huber:
      return inside ? r2 : 2.0 * width * sqrt(r2) - b;
    case cornerpin::Loss::Cauchy:
      return b * log(1.0 + r2 / b);
    case cornerpin::Loss::Tukey:
      break;
  }
  const T rest = 1.0 - r2 / b;
  return inside ? b / 3.0 * (1.0 - rest * rest * rest) : T(b / 3.0);
}

// Where the parameters put a point, less where it ought to be.
template <class T>
std::array<T, 2> residualOf(const cornerpin::Match& m, const std::array<T, 8>& p) {
  const T s = p[6] * m.base.x + p[7] * m.base.y + 1.0;
  return {(p[0] * m.base.x + p[1] * m.base.y + p[2]) / s - m.present.x,
          (p[3] * m.base.x + p[4] * m.base.y + p[5]) / s - m.present.y};
}

inline double costOf(const cornerpin::Matches& m, const std::array<double, 8>& p,
                     cornerpin::Loss loss, double width) {
  double cost = 0.0;
  for (std::size_t i = 0; i < m.size(); ++i) {
    const auto [dx, dy] = residualOf(m[i], p);
    cost += m[i].weight * m[i].weight * lossOf(loss, width, dx * dx + dy * dy);
  }
  return cost;
}

template <class T>
std::array<T, 8> parameters(const cornerpin::Homography& h) {
  std::array<T, 8> p;
  for (std::size_t i = 0; i < 8; ++i) p[i] = h[i / 3][i % 3];
  return p;
}

}  // namespace defined

#endif
