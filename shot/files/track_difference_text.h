// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_TRACK_DIFFERENCE_TEXT_H
#define SHOT_FILES_TRACK_DIFFERENCE_TEXT_H

#include <optional>
#include <string>

#include "shot/compare/track_difference.h"
#include "shot/files/only_rows.h"

namespace cornerpin {

/// How two files of tracks are told apart, as lines for people, with what has to be done to the
/// first to make it the second. The last line decides: "Same: ...", "Different: ...".
std::string differenceText(const TrackDifference& difference, const DifferenceNames& names,
                           std::optional<double> most);

/// What explains the difference, such as "y flipped about 1080, half a pixel, frame +1"; empty
/// without an explanation.
std::string explanationText(const TrackDifference& difference);

/// Whether the files count as different: with `most`, for a coordinate that is further off than so
/// many pixels and for positions that only one has; otherwise for anything that counts
/// (`TrackDifference::any`).
bool isDifferent(const TrackDifference& difference, std::optional<double> most);

}  // namespace cornerpin

#endif
