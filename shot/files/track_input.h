// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_TRACK_INPUT_H
#define SHOT_FILES_TRACK_INPUT_H

#include <string>
#include <vector>

#include "shot/files/byte_source.h"
#include "shot/files/track_reader.h"
#include "shot/plane/picture.h"
#include "shot/solve/frame_range.h"
#include "shot/solve/progress.h"
#include "shot/solve/tracks.h"

namespace cornerpin {

/// What a reader of tracks is given. Each reads one format, keeps the numbers of the file, and
/// notes in the tracks' picture what the file tells of it; it throws `InputError` with file, line
/// and value for whatever it cannot take.
struct TrackInput {
  ByteSource& source;
  const Progress& progress;
  const FrameRange& frames;
  ReadTrace& trace;  ///< what it skips is noted there, too

  /// How far the file has been read.
  void report() const {
    if (!progress) return;
    const ByteSource::Position position = source.position();
    progress(Phase::Reading, position.done, position.total);
  }
};

Tracks readCsv(const TrackInput& input);
Tracks readPoints(const TrackInput& input);
Tracks readNk(const TrackInput& input);
Tracks readBlocks(const TrackInput& input);
Tracks readKeyframes(const TrackInput& input);
Tracks readPaths(const TrackInput& input);
Tracks readRz2(const TrackInput& input);
Tracks readUv(const TrackInput& input);
Tracks readJson(const TrackInput& input);

}  // namespace cornerpin

#endif
