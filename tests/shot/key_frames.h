// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SHOT_KEY_FRAMES_H
#define TESTS_SHOT_KEY_FRAMES_H

#include <functional>
#include <optional>
#include <vector>

#include "shot/fit/matches.h"
#include "shot/plane/homography.h"
#include "shot/solve/tracks.h"

namespace made {

// From the matches' base places to their present ones; nothing where there is no such transform.
using PairFit = std::function<std::optional<cornerpin::Homography>(const cornerpin::Matches&)>;

// `fitHomography` on plain squares.
std::optional<cornerpin::Homography> plainPairFit(const cornerpin::Matches& matches);

// When a key frame is left for another.
struct KeyFrames {
  double share = 1.0 / 3.0;  // of its tracks that have to be seen in the next frame
  int fewest = 12;           // and so many of them at least
};
// Every frame is a key frame.
constexpr KeyFrames kFrameToFrame = {2.0, 0};

// What a fit of two frames makes of a shot: each frame is fitted against a key frame by the tracks
// that are seen in both, and the key frame's transform goes before. The first key frame is the
// base; when too few of its tracks are left, the last fitted frame takes its place. First from the
// base to the end of the shot, then from the base to its beginning. A frame without a fit holds its
// neighbour's transform. By frame, from the shot's first frame on.
std::vector<cornerpin::Homography> chained(const cornerpin::Tracks& tracks, int base,
                                           const PairFit& fit, const KeyFrames& rule = {});

}  // namespace made

#endif
