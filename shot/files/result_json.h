// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_RESULT_JSON_H
#define SHOT_FILES_RESULT_JSON_H

#include <optional>

#include "shot/files/output_file.h"
#include "shot/plane/points.h"
#include "shot/solve/result.h"

namespace cornerpin {

/// Writes a result as JSON (docs/result.md), a line for each frame.
///
/// What has no value is null: the rms of a frame without active tracks, the scale with loss none,
/// and a corner on or behind the horizon.
///
/// \param quad  corners in the base frame, whose places are written for every frame
void writeResultJson(const ShotResult& result, const std::optional<Quad>& quad, OutputFile& out);

}  // namespace cornerpin

#endif
