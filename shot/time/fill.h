// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_TIME_FILL_H
#define SHOT_TIME_FILL_H

#include "shot/solve/result.h"

namespace cornerpin {

/// Gives held and reduced frames transforms that are interpolated between the frames on both sides
/// (`transformBetween`): by a cubic through four of them, or by a straight line where the outer two
/// are missing or where a line misses less when stretches of the same length are left out elsewhere
/// in the shot. A frame that has an expected error takes such a transform only where that
/// makes it smaller. Status, reason and doubts stay. Stretches with no anchor (`isAnchor`) before
/// or behind them, as at the ends of a shot, stay as they are; so do stretches in which a reduced
/// frame has a corner more than four deviations, its own and the interpolation's together, from
/// where it would be put: the camera did something there.
///
/// A corner's new covariance is round: that of the worse of the two anchors next to the stretch,
/// plus the mean square of the motion by which left-out stretches were missed at the same place. It
/// is unknown where either is.
void fill(ShotResult& result);

}  // namespace cornerpin

#endif
