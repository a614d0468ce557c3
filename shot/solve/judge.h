// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_JUDGE_H
#define SHOT_SOLVE_JUDGE_H

#include "shot/solve/result.h"

namespace cornerpin {

/// Finds what makes the frames of a finished result doubtful, by its limit (`maxError`) and by what
/// is known of each frame. Of the base frame, whose transform is given, only the figures count.
void judge(ShotResult& result);

/// The same for what follows from the figures of trust, which depend on the reference frame: the
/// expected errors, and the doubts about them. All other doubts stay.
void judgeFigures(ShotResult& result);

}  // namespace cornerpin

#endif
