// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/linear_fit.h"

#include <limits>

#include "shot/fit/lapack.h"
#include "shot/plane/similarity.h"

namespace cornerpin {

Homography linearFit(const Matches& matches) {
  const Similarity a = Similarity::fitting(matches.base());
  const Similarity b = Similarity::fitting(matches.present());
  // Two rows for each match, U - u s = 0 and V - v s = 0, in all nine elements of the transform;
  // the smallest singular vector meets them best for a transform of length 1.
  NormalMatrix<9> normal;
  for (std::size_t i = 0; i < matches.size(); ++i) {
    const Point p = a.apply(matches.base()[i]);
    const Point q = b.apply(matches.present()[i]);
    normal.add({p.x, p.y, 1.0, 0.0, 0.0, 0.0, -q.x * p.x, -q.x * p.y, -q.x});
    normal.add({0.0, 0.0, 0.0, p.x, p.y, 1.0, -q.y * p.x, -q.y * p.y, -q.y});
  }
  Homography h;
  const bool found = normal.decompose();
  for (std::size_t i = 0; i < 9; ++i) {
    h[i / 3][i % 3] = found ? normal.elements[i] : std::numeric_limits<double>::quiet_NaN();
  }
  return denormalised(h, a, b);
}

}  // namespace cornerpin
