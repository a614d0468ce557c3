// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_RESULT_JSON_H
#define SHOT_FILES_RESULT_JSON_H

#include <string>

#include "shot/files/output_file.h"
#include "shot/solve/progress.h"
#include "shot/solve/result.h"

namespace cornerpin {

/// Writes a result as JSON of version 2 (docs/result.md, docs/result.schema.json), a line for each
/// quad, track and frame.
///
/// What has no value is null: the rms of a frame without active tracks, the sigma with loss none, a
/// covariance or an expected error without a figure, a track's place that is not known, and the
/// coordinates of a corner on or behind the horizon.
void writeResultJson(const ShotResult& result, OutputFile& out, const Progress& progress = {});

/// The same as a text.
std::string resultJson(const ShotResult& result);

/// The same with so many digits of each number that is not a whole one.
std::string roundedResultJson(const ShotResult& result, int digits);

}  // namespace cornerpin

#endif
