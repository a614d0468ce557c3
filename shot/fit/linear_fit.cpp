// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/linear_fit.h"

#include <limits>

#include "shot/plane/symmetric_eigen.h"

namespace cornerpin {

Homography linearFit(const std::vector<Point>& from, const std::vector<Point>& to) {
  const Conditioning a = Conditioning::fitting(from);
  const Conditioning b = Conditioning::fitting(to);
  NormalMatrix<9> normal;
  for (std::size_t i = 0; i < from.size(); ++i) {
    const Point p = a.apply(from[i]);
    const Point q = b.apply(to[i]);
    normal.add({p.x, p.y, 1.0, 0.0, 0.0, 0.0, -q.x * p.x, -q.x * p.y, -q.x});
    normal.add({0.0, 0.0, 0.0, p.x, p.y, 1.0, -q.y * p.x, -q.y * p.y, -q.y});
  }
  Homography h;
  const bool found = normal.decompose();
  for (std::size_t i = 0; i < 9; ++i) {
    h[i / 3][i % 3] = found ? normal.elements[i] : std::numeric_limits<double>::quiet_NaN();
  }
  return unconditioned(h, a, b);
}

}  // namespace cornerpin
