// SPDX-License-Identifier: BSD-3-Clause
#include "shot/plane/homography.h"

#include <cmath>

namespace cornerpin {

bool onOneSide(const Homography& h, const Points& points) {
  const bool front = denominator(h, points[0]) > 0.0;
  for (Point p : points) {
    const double s = denominator(h, p);
    if (!(front ? s > 0.0 : s < 0.0)) return false;
  }
  return true;
}

bool isFinite(const Homography& h) {
  for (const auto& row : h) {
    for (double element : row) {
      if (!std::isfinite(element)) return false;
    }
  }
  return true;
}

Homography product(const Homography& a, const Homography& b) {
  Homography c{};
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) {
      c[i][j] = a[i][0] * b[0][j] + a[i][1] * b[1][j] + a[i][2] * b[2][j];
    }
  }
  return c;
}

Homography inverse(const Homography& h) {
  Homography cofactors{};  // transposed
  for (std::size_t i = 0; i < 3; ++i) {
    const std::size_t a = (i + 1) % 3;
    const std::size_t b = (i + 2) % 3;
    for (std::size_t j = 0; j < 3; ++j) {
      const std::size_t c = (j + 1) % 3;
      const std::size_t d = (j + 2) % 3;
      cofactors[j][i] = h[a][c] * h[b][d] - h[a][d] * h[b][c];
    }
  }
  const double determinant =
      h[0][0] * cofactors[0][0] + h[0][1] * cofactors[1][0] + h[0][2] * cofactors[2][0];
  for (auto& row : cofactors) {
    for (double& element : row) element /= determinant;
  }
  return cofactors;
}

Homography withLastOne(Homography h) {
  const double last = h[2][2];
  for (auto& row : h) {
    for (double& element : row) element /= last;
  }
  return h;
}

}  // namespace cornerpin
