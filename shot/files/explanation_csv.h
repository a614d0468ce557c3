// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_EXPLANATION_CSV_H
#define SHOT_FILES_EXPLANATION_CSV_H

#include "shot/files/output_file.h"
#include "shot/solve/progress.h"
#include "shot/solve/result.h"
#include "shot/solve/tracks.h"

namespace cornerpin {

/// Writes what every track does to every frame but the base frame, by frame, then by track, with
/// the columns track,frame,residual,weight,leverage,influence (`TrackInfluence`). The result has to
/// hold it (`SolveOptions::influences`).
void writeExplanationCsv(const ShotResult& result, const Tracks& tracks, OutputFile& out,
                         const Progress& progress = {});

}  // namespace cornerpin

#endif
