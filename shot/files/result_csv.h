// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_RESULT_CSV_H
#define SHOT_FILES_RESULT_CSV_H

#include <string>

#include "shot/files/output_file.h"
#include "shot/solve/progress.h"
#include "shot/solve/result.h"

namespace cornerpin {

/// Writes a result as CSV (docs/result.md), a row for each frame: the columns
/// frame,h00,h01,...,h22,rms,tracks,status,good,good_rms,sigma,stage, the corners' places
/// qx0,qy0,...,qx3,qy3, then model,on_top,noise,deviation0,...,deviation3,why,reason,loss,width,
/// handed_over,kept_from,verdict,expected_error,doubts,smoothed,filled; frames and codes are parted
/// by spaces.
/// With several quads a row for each frame and quad, whose name is in a column `quad` behind the
/// frame.
///
/// What has no value is empty: the rms of a frame without active tracks, the sigma with loss none,
/// what only some frames have, and a corner on or behind the horizon.
void writeResultCsv(const ShotResult& result, OutputFile& out, const Progress& progress = {});

/// The same as a text.
std::string resultCsv(const ShotResult& result);

}  // namespace cornerpin

#endif
