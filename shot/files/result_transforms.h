// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_RESULT_TRANSFORMS_H
#define SHOT_FILES_RESULT_TRANSFORMS_H

#include <string>
#include <string_view>

#include "shot/solve/result.h"

namespace cornerpin {

/// Whether a file that begins like this is a result in CSV (`writeResultCsv`).
bool isResultCsv(std::string_view beginning);

/// Reads from a result in CSV what pins are made of: the frames with their transforms and statuses,
/// the transforms between frames, the base and the reference frame, and the quads, of which one
/// without a name is called "quad". In front of the horizon is the middle of their corners. All
/// else is as it is in a `ShotResult` that nobody has filled: the file does not tell of its
/// picture, nor whether a quad was asked for.
///
/// Columns are found by their names. Throws `InputError` with file and line for a file that lacks
/// one of these, for a value that is not as `writeResultCsv` writes it, for frames that do not
/// follow one another, and where no frame shows all corners of a quad.
ShotResult readResultCsv(const std::string& path);

/// The same of a result that is there.
ShotResult transformsOf(const ShotResult& result);

}  // namespace cornerpin

#endif
