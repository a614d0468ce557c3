// SPDX-License-Identifier: BSD-3-Clause
#include "shot/trust/lasting_errors.h"

#include <cstdlib>

namespace cornerpin {

void LastingErrors::add(int track, int frame, Point residual) {
  Track& t = tracks_[static_cast<std::size_t>(track)];
  const bool goesOn = t.count > 0 && std::abs(frame - t.frame) == 1;
  if (!goesOn || t.inStretch == kStretch) {
    t.inStretch = 0;
    t.sum = {};
    t.squares = 0.0;
  }
  t.frame = frame;
  ++t.count;
  ++t.inStretch;
  t.sum = {t.sum.x + residual.x, t.sum.y + residual.y};
  t.squares += residual.x * residual.x + residual.y * residual.y;
  if (t.inStretch < kStretch) return;
  t.sums += t.sum.x * t.sum.x + t.sum.y * t.sum.y;
  t.all += t.squares;
}

double LastingErrors::varianceRatio() const {
  double sums = 0.0;
  double expected = 0.0;
  for (const Track& t : tracks_) {
    if (!(t.all > 0.0)) continue;
    sums += t.sums;
    expected += t.all * (t.count - kStretch) / (t.count - 1);
  }
  return sums > expected && expected > 0.0 ? sums / expected : 1.0;
}

}  // namespace cornerpin
