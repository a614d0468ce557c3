// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_TIME_BETWEEN_H
#define SHOT_TIME_BETWEEN_H

#include <vector>

#include "shot/solve/result.h"

namespace cornerpin {

/// Adds transforms at times between the frames, in any order, each once: by the paths of the first
/// quad's corners (`transformBetween`) through the four nearest frames. Of these the two next to
/// the time always count, the outer two where they are anchors (`isAnchor`). In a frame it is the
/// frame's.
///
/// Throws `std::invalid_argument` with a text for people, the result unchanged, for a time outside
/// the shot, and where no transform leads from one frame to the next by way of such paths.
void addBetween(ShotResult& result, std::vector<double> frames);

/// Throws the first of these.
void requireBetween(const std::vector<double>& frames, int first, int last);

}  // namespace cornerpin

#endif
