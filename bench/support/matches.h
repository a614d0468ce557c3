// SPDX-License-Identifier: BSD-3-Clause
#ifndef BENCH_SUPPORT_MATCHES_H
#define BENCH_SUPPORT_MATCHES_H

#include "bench/support/shot.h"
#include "shot/fit/matches.h"

namespace bench {

// A frame in the forms that the shot layer's fits take.
inline cornerpin::Matches matchesOf(const Frame& frame) {
  cornerpin::Matches matches;
  for (std::size_t i = 0; i < frame.x.size(); ++i) {
    matches.add({{frame.x[i], frame.y[i]}, {frame.u[i], frame.v[i]}, frame.w[i]});
  }
  return matches;
}

inline cornerpin::Homography homographyOf(const Parameters& p) {
  return {{{p[0], p[3], p[6]}, {p[1], p[4], p[7]}, {p[2], p[5], 1.0}}};
}

}  // namespace bench

#endif
