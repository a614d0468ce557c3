// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_TRACK_READER_H
#define SHOT_FILES_TRACK_READER_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "shot/files/format.h"
#include "shot/files/sha256.h"
#include "shot/solve/frame_range.h"
#include "shot/solve/progress.h"
#include "shot/solve/tracks.h"

namespace cornerpin {

/// What a file was that tracks were read from.
struct ReadTrace {
  std::optional<Sha256>
      digest;  ///< takes its bytes, those that the tracks are made of; may be none
  std::optional<Format> format;    ///< as given; afterwards as it was
  std::int64_t rows = 0;           ///< how many positions
  char separator = ',';            ///< of CSV files
  bool isPin = false;              ///< the tracks are the four corners of a pin (`kCornerNames`)
  std::vector<std::string> notes;  ///< what was skipped, "FILE:LINE: text", for people
};

/// Reads tracks from a file of any format that has a reader; "-" is standard input, and the file
/// may be a gzip file. The format is found by what the file begins with, unless the trace gives
/// one. Numbers are read alike in every locale and kept as the file has them; `Tracks::picture`
/// tells what they are. The tracks come in the order of their names, byte by byte, so that nothing
/// depends on the order in the file.
///
/// Of CSV files the header names at least track, frame, x and y, in any order, and optionally
/// weight (1 where there is none); other columns are skipped. They are separated by commas,
/// semicolons or tabs (`CsvRecords`). One row per track and frame.
///
/// Throws `InputError` with file and line for what is not as its format has it, such as a missing
/// or repeated column, an empty track name, a frame that is not a whole number of 32 bits, a number
/// that does not parse, a position or weight that is not finite in single precision, a negative
/// weight, a track given twice in a frame, and a frame far from all others (`findFarFrame`); of
/// rows, the first ten are named (`RefusedRows`). Without a line for a file that cannot be read, is
/// of another kind, holds no track of a weight above 0, or has frames that span more than
/// `kMaxFrames`.
///
/// \param frames  where they are not all, no frame is refused for being far off: where one is, rows
///                outside of them are left out
///
/// Cost: 33 bytes per row, and 4 more while rows are sorted that are not in the order of their
/// frames and tracks; up to three times that from a pipe, a gzip file and other formats than CSV,
/// whose rows cannot be estimated beforehand.
///
/// \param trace  what is to be known of the file besides; null: nothing
Tracks readTracks(const std::string& path, const Progress& progress = {},
                  const FrameRange& frames = {}, ReadTrace* trace = nullptr);

}  // namespace cornerpin

#endif
