// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_JSON_READER_H
#define SHOT_FILES_JSON_READER_H

#include <string>
#include <string_view>

namespace cornerpin {

/// The field that tells tracks in JSON from all else: the version of their description, 1.
constexpr const char* kTracksField = "cornerpin_tracks";

/// What JSON that begins like this is, and what to do, where it holds no tracks: a result, or
/// something else. Empty for tracks.
std::string otherThanTracks(std::string_view beginning);

}  // namespace cornerpin

#endif
