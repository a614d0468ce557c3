// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_TIME_UNTOUCHED_H
#define SHOT_TIME_UNTOUCHED_H

#include "shot/solve/result.h"

namespace cornerpin {

/// Puts aside what the fit gave a frame, unless that is done already.
inline void keepUntouched(FrameResult& frame) {
  if (frame.untouched) return;
  frame.untouched = std::make_shared<Untouched>(Untouched{frame.h, frame.figures.quads});
}

}  // namespace cornerpin

#endif
