// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_TRACK_CSV_H
#define SHOT_FILES_TRACK_CSV_H

#include <string>

#include "shot/files/sha256.h"
#include "shot/solve/progress.h"
#include "shot/solve/tracks.h"

namespace cornerpin {

/// Reads tracks from a CSV file; "-" is standard input.
///
/// The header names at least track, frame, x and y, in any order, and optionally weight (1 where
/// there is none); other columns are skipped. One row per track and frame. Numbers are read alike
/// in every locale.
///
/// Throws `InputError` with file and line for a missing or repeated column, a row of another
/// length than the header, an empty track name, a frame that is not a whole number of 32 bits, a
/// number that does not parse, a position or weight that is not finite in single precision, a
/// negative weight, a track given twice in a frame, frames that span more than `kMaxFrames`, and
/// without a line for a file that cannot be read or holds no track of a weight above 0.
///
/// Cost: 33 bytes per row, and 4 more while rows are sorted that are not in the order of their
/// frames and tracks; up to three times that from a pipe, whose length is not known beforehand.
///
/// \param digest  is given the file's bytes, those that the tracks were made of; null: none
Tracks readTracks(const std::string& path, const Progress& progress = {}, Sha256* digest = nullptr);

}  // namespace cornerpin

#endif
