// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_MATCH_H
#define SHOT_MATCH_H

#include "shot/conditioning.h"

namespace cornerpin {

/// One track in one frame: its place in the base frame and its place there.
struct Match {
  Point from;
  Point to;
  double weight = 1.0;  ///< a residual is multiplied by it, so its cost is w^2 r^2
};

}  // namespace cornerpin

#endif
