// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_TRACK_INFO_H
#define SHOT_FILES_TRACK_INFO_H

#include <string>

#include "shot/files/file_look.h"
#include "shot/files/track_reader.h"
#include "shot/solve/tracks.h"

namespace cornerpin {

/// What a file of tracks holds, as lines for people: its format, size, digest and rows; the frames
/// and those without a track; how long tracks last and where they have gaps; and how many there are
/// in each frame, drawn, with the frames that have too few for a full transform. A track is there
/// where its weight is above 0.
std::string trackInfo(const Tracks& tracks, const FileLook& look, const ReadTrace& trace);

}  // namespace cornerpin

#endif
