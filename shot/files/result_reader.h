// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_RESULT_READER_H
#define SHOT_FILES_RESULT_READER_H

#include <string>

#include "shot/solve/result.h"

namespace cornerpin {

/// Reads a result in JSON of version 1 or 2 (docs/result.md); "-" is standard input. Fields that
/// are not known are skipped. What `writeResultJson` writes of it is the file again, byte for byte,
/// where that is of version 2 and was written by it.
///
/// Of version 1 there are no tracks, and no covariances but those of the base frame; the quad is
/// called "tracks", or "quad" where the frames say where its corners are; its middle counts as the
/// place in front of the horizon. Neither version has the influences, the details of a verdict
/// beyond its texts, and the good tracks and sigma of reduced frames. A file without `max_error`,
/// which earlier programs wrote, is judged (`judge`), without a limit.
///
/// Throws `InputError` with file and place for a file that is no result or of a newer version, and
/// for fields that are missing or not what they ought to be.
ShotResult readResult(const std::string& path);

}  // namespace cornerpin

#endif
