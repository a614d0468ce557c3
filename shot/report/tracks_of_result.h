// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_REPORT_TRACKS_OF_RESULT_H
#define SHOT_REPORT_TRACKS_OF_RESULT_H

#include <string>
#include <vector>

#include "shot/solve/progress.h"
#include "shot/solve/result.h"
#include "shot/solve/tracks.h"

namespace cornerpin {

/// Reads the tracks that a result was made from again, as its solve took them: what the result
/// tells of their picture is taken where the file does not tell it, its frames and tracks are
/// selected as its options say, and they come in the order of the result's tracks.
///
/// Throws `InputError` where the file cannot be read or is not the one: by its digest, if the
/// result has that; otherwise it has to have all the result's tracks that are seen anywhere, and
/// only frames and observations where the result has them.
///
/// \param notes  what was skipped, for people
Tracks tracksOfResult(const std::string& path, const ShotResult& result, const Progress& progress,
                      std::vector<std::string>& notes);

}  // namespace cornerpin

#endif
