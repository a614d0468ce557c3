// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_SHOT_SOLVER_H
#define SHOT_SOLVE_SHOT_SOLVER_H

#include "shot/solve/options.h"
#include "shot/solve/progress.h"
#include "shot/solve/result.h"
#include "shot/solve/tracks.h"

namespace cornerpin {

/// Finds for every frame the transform that carries the tracks' places on the surface to their
/// places there, by `MMatchmove`: forward and backward from the base frame, each frame starting
/// from its neighbour (`ShotSweeps`, which also says how tracks take part that the base frame
/// lacks). Without a base frame in the options a first pair of sweeps from a guess says which one
/// to take (`chooseBase`).
///
/// With Loss::None, and where every frame can be fitted, the transforms are those of
/// `MMatchmove::solve` on the shot in the library's unit, to the bit. With another loss
/// `fitRobustly` goes on from the neighbour's transform and, where that does not settle the frame,
/// from the library's fit, in double precision, and its transform is the frame's and the next
/// frame's start. What the earlier frames of a sweep say of the next one's errors is
/// `SweepMemory`'s. With at least `kFewestForRobust` tracks the library's fit may fail then.
///
/// A frame with fewer than four active tracks, or whose tracks fix no transform here or in the base
/// frame (`inGeneralPosition`), or of whose six or more tracks only four agree, as any four do, is
/// reduced where the options say so: fitted with the highest model below the projective one that
/// its tracks support in both frames (`supportedModel`), best on top of its neighbour's transform
/// (`fitReduced`). With a loss `ModelPass` then chooses the models of these frames, and of those
/// whose full transform noise may throw about, from all that the shot tells. It is held without
/// active tracks; with positions beyond single precision; where no more than three of six or more
/// tracks agree; and when its fit throws, is not finite, or puts an active track on the horizon or
/// two of them on its two sides. Both break the chain of neighbours: from there to the end of the
/// sweep each frame is fitted from the linear solution (`linearFit`) too, and the fit with the
/// lower weighted cost counts.
///
/// Throws `std::invalid_argument` for a base frame outside the shot or without tracks, for a
/// reference frame that `rebase` refuses, and for quads with a flaw (`flawOf`).
///
/// Cost: memory for the results and the tracks, no array of tracks times frames.
ShotResult solveShot(const Tracks& tracks, const SolveOptions& options = {},
                     const Progress& progress = {});

}  // namespace cornerpin

#endif
