// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/tracks.h"

#include <algorithm>

namespace cornerpin {

Tracks::Range Tracks::inFrame(int frame) const {
  const auto first = std::lower_bound(observations.begin(), observations.end(), frame,
                                      [](const Observation& o, int f) { return o.frame < f; });
  const auto last = std::upper_bound(first, observations.end(), frame,
                                     [](int f, const Observation& o) { return f < o.frame; });
  return {observations.data() + (first - observations.begin()),
          observations.data() + (last - observations.begin())};
}

}  // namespace cornerpin
