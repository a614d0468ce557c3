// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_COMPARE_TRACK_PAIRS_H
#define SHOT_COMPARE_TRACK_PAIRS_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "shot/compare/axis_change.h"
#include "shot/plane/points.h"
#include "shot/solve/tracks.h"

/// Which track and which frame of one file is which of another's.
namespace cornerpin {

/// By track of the first file, its number in the second; `kNoTrack` for one that only the first
/// has. No two have the same.
using TrackMatch = std::vector<std::int32_t>;
constexpr std::int32_t kNoTrack = -1;

/// By name.
TrackMatch matchByName(const Tracks& first, const Tracks& second);

/// Matches that say of some tracks that they are called, or numbered, otherwise in the second file,
/// the likelier ones first: tracks that both have by name, and those that are left in the order of
/// their names and in the order in which they stand from left to right; all tracks from left to
/// right; where both have four, these in any order. None is the one by name.
std::vector<TrackMatch> otherMatches(const Tracks& first, const Tracks& second);

/// The match by place: of each track the one of the second file whose middle place is nearest to
/// where the changes put its own, within `most`; none where there is none so near.
TrackMatch matchByPlace(const Tracks& first, const Tracks& second, const AxisChange& x,
                        const AxisChange& y, double most);

/// Frame numbers that may have to be added to those of the first file, the likelier ones first, but
/// 0: what the first frames or the last ones are apart; 1 to either side; and, as x goes on from
/// frame to frame in tracks of the match, what most of these motions say.
std::vector<int> likelyShifts(const Tracks& first, const Tracks& second, const TrackMatch& match,
                              double allowed);

/// A position that both files have.
struct ObservationPair {
  const Observation* first;
  const Observation* second;
};

/// All of them, by frame and track of the first file. \param frames  is added to its frames
std::vector<ObservationPair> pairsOf(const Tracks& first, const Tracks& second,
                                     const TrackMatch& match, int frames);

/// At most about so many of the pairs, the same ones each time, from all frames and tracks.
std::vector<ObservationPair> someOf(std::vector<ObservationPair> pairs, std::size_t most);

}  // namespace cornerpin

#endif
