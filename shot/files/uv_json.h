// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_UV_JSON_H
#define SHOT_FILES_UV_JSON_H

#include "shot/files/json_field.h"
#include "shot/files/track_input.h"

namespace cornerpin {

/// Whether a JSON file holds tracks in units of the picture: an object with a version and a list of
/// points that have a list of frames each.
bool isUvJson(const JsonField& whole);

/// The positions and weights of such a file, with its numbers. What it holds besides is left out,
/// and noted. Of positions with and without the lens's distortion those with it are taken, which
/// are the ones in the picture.
Tracks readUvJson(const JsonField& whole, const TrackInput& input);

}  // namespace cornerpin

#endif
