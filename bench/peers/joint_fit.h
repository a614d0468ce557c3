// SPDX-License-Identifier: BSD-3-Clause
#ifndef BENCH_PEERS_JOINT_FIT_H
#define BENCH_PEERS_JOINT_FIT_H

#include <vector>

#include "shot/plane/homography.h"
#include "shot/solve/tracks.h"

namespace bench {

// Whether this build has Ceres.
bool hasJointFit();

// The joint optimum: least squares over the transforms of all frames but the base, which is the
// identity, and the places of all tracks in the base frame, by a bundle adjustment with Ceres.
// From the transforms in `start`, by frame from the shot's first one on, and the places that they
// carry back from the tracks' observations in the mean.
std::vector<cornerpin::Homography> jointFit(const cornerpin::Tracks& tracks, int base,
                                            const std::vector<cornerpin::Homography>& start);

}  // namespace bench

#endif
