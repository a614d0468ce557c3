// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_ROBUST_ORIGIN_H
#define SHOT_ROBUST_ORIGIN_H

#include <cstddef>
#include <limits>
#include <optional>
#include <string>

namespace cornerpin {

/// Where the search for a frame's transform started.
enum class Stage {
  Library,    ///< the library's own fit
  Neighbour,  ///< the neighbour's transform
  Sampled,    ///< an exact fit of four tracks
};

/// "library", "neighbour", "sampled".
const char* nameOf(Stage stage);

/// What was done about bad tracks.
enum class Grounds {
  None,        ///< nothing: the library's solve alone
  TooFew,      ///< nothing tells a bad one among so few
  NoBadTrack,  ///< plain squares show no sign of one
  Continued,   ///< the tracks that were good before agree as they did
  Searched,    ///< the transform was searched for together with a model of the errors
};

/// From where a frame's transform was found, and why from there.
struct Origin {
  Stage stage = Stage::Library;
  Grounds grounds = Grounds::None;
  // Of a search.
  std::optional<Stage> firstStage;  ///< the best before samples were drawn; none where none led on
  std::size_t firstGood = 0;        ///< good tracks of that one
  bool budgetSpent = false;  ///< samples ended before a better transform was out of the question
  bool rivalled = false;     ///< other tracks support another transform about as well
  /// The common logarithm of how many transforms of one picture chance would make as many tracks
  /// agree on as closely; NaN where that was not counted.
  double chance = std::numeric_limits<double>::quiet_NaN();
};

/// Whether chance makes as many tracks agree in more than one picture in a million.
bool isLikelyByChance(const Origin& origin);

/// Such as "the library's solve fits 20 of 31 tracks, this one 25 of 31 tracks"; empty where
/// nothing was done about bad tracks. \param good  tracks of the frame's own transform
std::string describe(const Origin& origin, std::size_t good, std::size_t tracks);

}  // namespace cornerpin

#endif
