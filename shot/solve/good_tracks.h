// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_GOOD_TRACKS_H
#define SHOT_SOLVE_GOOD_TRACKS_H

#include "shot/solve/result.h"
#include "shot/solve/tracks.h"

namespace cornerpin {

/// The tracks that a result was solved from, as far as they are good in it: what is ignored in a
/// frame is absent there, and tracks that are good nowhere are gone. Empty where nothing is good.
Tracks goodTracks(const Tracks& tracks, const ShotResult& result);

}  // namespace cornerpin

#endif
