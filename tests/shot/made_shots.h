// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SHOT_MADE_SHOTS_H
#define TESTS_SHOT_MADE_SHOTS_H

#include <cstdint>
#include <vector>

#include "shot/solve/shot_solver.h"
#include "shot/solve/tracks.h"

// Shots that depend on the seed alone, for comparing results to the bit.
namespace made {

// A moving surface with noise and weights, up to 60 % of the tracks off it, some of them in single
// frames, and frames with one to five tracks.
cornerpin::Tracks shot(std::uint32_t seed);

// Each loss in turn, with and without lower models.
cornerpin::SolveOptions options(std::uint32_t seed);

// The results of shots first .. last - 1 and their figures of trust as bit patterns, with one
// pattern for every NaN.
using Bits = std::vector<std::uint64_t>;
Bits solved(std::uint32_t first, std::uint32_t last);

// Tracks that live for half of 30 frames, each fault in turn; every second shot leaves the choice
// of the base frame to the solve, every fifth has a reference frame.
cornerpin::Tracks relayShot(std::uint32_t seed);
cornerpin::SolveOptions relayOptions(std::uint32_t seed);

// Of the relay shots first .. last - 1, in the same way: their base frames, results and figures of
// trust, and the tracks' places with their covariances.
Bits handedOver(std::uint32_t first, std::uint32_t last);

}  // namespace made

#endif
