// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_UV_JSON_H
#define SHOT_FILES_UV_JSON_H

#include "shot/files/track_input.h"

namespace cornerpin {

/// The positions and weights of a JSON file with tracks in units of the picture, with its numbers:
/// an object with a list of points that have a list of frames each. What it holds besides is left
/// out, and noted. Of positions with and without the lens's distortion those with it are taken,
/// which are the ones in the picture.
Tracks readUvJson(const TrackInput& input);

}  // namespace cornerpin

#endif
