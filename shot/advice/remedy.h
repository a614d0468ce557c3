// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_ADVICE_REMEDY_H
#define SHOT_ADVICE_REMEDY_H

#include <string>
#include <vector>

#include "shot/advice/doubtful_stretch.h"
#include "shot/solve/options.h"
#include "shot/solve/progress.h"
#include "shot/solve/result.h"
#include "shot/solve/tracks.h"

namespace cornerpin {

enum class RemedyKind {
  DropTrack,  ///< leave out the track that moves the corners most
  Fill,       ///< interpolate between the good frames around
  AddTracks,  ///< track more near the corner that may be furthest off
};

/// What makes a doubtful stretch better. It was tried on this shot.
struct Remedy {
  RemedyKind kind = RemedyKind::DropTrack;
  DoubtfulStretch stretch;
  int track = -1;            ///< to drop in the stretch
  double after = 0.0;        ///< the largest expected error in the stretch that it leaves
  std::size_t doubtful = 0;  ///< how many of the stretch's frames stay doubtful
};

/// What helps with the three worst of the doubtful stretches, each on its own line of tries:
///
/// 1. The shot is solved without the track that moves the corners of the stretch's worst frame
///    most, in its frames.
/// 2. Where that does not help, it is solved with two more tracks near the corner that may be
///    furthest off, in its frames and the base frame. They are off by the median noise of the shot.
/// 3. Reduced and held frames are filled in.
///
/// What counts as help is `helped`. All stretches are tried at once, so two solves with the
/// result's base frame are the most that it costs; shots of more than `kMostTried` observations,
/// with those that are added, are left alone.
std::vector<Remedy> remediesFor(const Tracks& tracks, const SolveOptions& options,
                                const ShotResult& result, const Progress& progress = nullptr);

constexpr std::size_t kMostTried = 300'000;

/// "without t133 there it is 3 px: --drop t133:0-10", to be typed into a shell as it stands.
std::string describe(const Remedy& remedy, const ShotResult& result, const Tracks& tracks);

/// Puts what helps into `result.advice`.
void advise(const Tracks& tracks, const SolveOptions& options, ShotResult& result,
            const Progress& progress = nullptr);

}  // namespace cornerpin

#endif
