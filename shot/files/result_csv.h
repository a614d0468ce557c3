// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_RESULT_CSV_H
#define SHOT_FILES_RESULT_CSV_H

#include <optional>

#include "shot/files/output_file.h"
#include "shot/plane/points.h"
#include "shot/solve/result.h"

namespace cornerpin {

/// Writes a result as CSV, a row for each frame (docs/result.md): the columns
/// frame,h00,h01,...,h22,rms,tracks,status,inliers,inlier_rms,scale,stage, with a quad the corners'
/// places qx0,qy0,...,qx3,qy3, then model,on_top,noise,deviation0,...,deviation3,why,reason,
/// loss,width.
///
/// What has no value is empty: the rms of a frame without active tracks, the scale with loss none,
/// what only some frames have, and a corner on or behind the horizon.
void writeResultCsv(const ShotResult& result, const std::optional<Quad>& quad, OutputFile& out);

}  // namespace cornerpin

#endif
