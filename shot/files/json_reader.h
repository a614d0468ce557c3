// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_JSON_READER_H
#define SHOT_FILES_JSON_READER_H

#include <string>
#include <string_view>

namespace cornerpin {

/// The field that tells tracks in JSON from all else: the version of their description, 1.
constexpr const char* kTracksField = "cornerpin_tracks";

/// Whether JSON that begins like this holds tracks of this program.
bool isTracksJson(std::string_view beginning);

/// What JSON that begins like this is, and what to do, where it holds no tracks: a result, or
/// something else. Empty for tracks, also for those in units of the picture (`readUvJson`).
std::string otherThanTracks(std::string_view beginning);

}  // namespace cornerpin

#endif
