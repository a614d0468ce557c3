// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_JUMPS_H
#define SHOT_SOLVE_JUMPS_H

#include <vector>

#include "shot/solve/result.h"

namespace cornerpin {

/// For each frame how far a corner is from where the frames around put it, where that stands out;
/// 0 elsewhere. Of several corners the one that is off most.
///
/// The frames around are the four nearest ones that are solved (or the base), two on either side
/// where there are as many, none further than four frames away. They put the corner four times: the
/// first two, the two in the middle and the last two on a straight line in time, all four on a
/// cubic. The least of the four distances counts, so a frame stands out only where neither side,
/// nor both together, explain it. What goes on elsewhere (a cut, a camera that is pushed) is
/// explained by its own side, and the neighbours of a frame that is wrong by the others.
///
/// A distance stands out when it is
/// - more than 4 times what the deviations of the frames involved add up to,
/// - more than 8 times what is usual there: the larger of the medians of the same figure over the
///   ten frames before and the ten behind, so that the edge of a shaking stretch counts as shaking,
/// - and more than a fifth of the shot's limit for expected errors.
///
/// The frame that stands out most is left out when the others are compared. Only solved frames
/// whose corner has a deviation take part; without five of them on a side nothing is usual, and
/// nothing stands out.
std::vector<double> jumpsOf(const ShotResult& result);

}  // namespace cornerpin

#endif
