// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_TIME_SMOOTH_H
#define SHOT_TIME_SMOOTH_H

#include "shot/solve/result.h"

namespace cornerpin {

/// Takes jitter out of a result: the paths of four corners through the frames, those of its first
/// quad (`shownByAll`), are smoothed over time (`smoothPath`), and make the frames' new transforms.
/// Smoothed are not the corners one by one but what they do together and against each other,
/// because a camera's shaking moves all four alike, and a fit's errors mostly one against the
/// other. In each frame each corner of each quad moves by no more than its deviation and never by
/// more than `most`: where a corner of another quad would, the first quad's move less together.
///
/// Only solved frames take part, and of these the ones whose four corners have deviations; all
/// others stay as they are, as does the frame `fixed` besides the base frame. The figures of trust
/// stay those of the fit. The result has to be relative to its base frame, where deviations are
/// about the frame's own fit.
void smooth(ShotResult& result, double most, int fixed);

}  // namespace cornerpin

#endif
