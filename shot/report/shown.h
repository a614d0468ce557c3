// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_REPORT_SHOWN_H
#define SHOT_REPORT_SHOWN_H

#include <cstddef>
#include <string>
#include <vector>

#include "shot/solve/result.h"
#include "shot/solve/tracks.h"

namespace cornerpin {

/// What a page is about.
struct PageSubject {
  const ShotResult& result;
  const Tracks* tracks = nullptr;  ///< those of the result, in its order; null: not known
  std::string title;
};

/// How much of a long shot a page shows.
struct PageLimits {
  std::size_t frames = 1000;
  std::size_t tracks = 3000;
  std::size_t cells = 250'000;  ///< frames times tracks
  std::size_t quads = 6000;     ///< frames times quads

  /// Half of each.
  PageLimits halved() const { return {frames / 2, tracks / 2, cells / 2, quads / 2}; }
};

/// What a page shows: indices into `ShotResult::frames`, `tracks` and `between`, which rise, and
/// how they were chosen, for people; empty where all are shown.
struct Shown {
  std::vector<std::size_t> frames;
  std::vector<std::size_t> tracks;
  std::vector<std::size_t> between;
  std::string howFrames;
  std::string howTracks;
  std::string howBetween;
};

/// Chooses what is shown, at least one frame.
///
/// Of the frames the base and the reference frame, the first and the last one, the worst of each
/// doubtful stretch, where the worst tracks move corners most, and further doubtful frames, those
/// first that may be furthest off; all these together are at most half. Of the tracks the worst
/// tracks of the result and those with the largest residuals in the frames that go by them, again
/// at most half. The others are spread evenly. Of transforms between frames as many are shown as of
/// frames at most, spread evenly.
///
/// Where the tracks are not known, those that are ignored in most frames stand for those with the
/// largest residuals.
Shown shownOf(const PageSubject& subject, const PageLimits& limits);

/// The result with these frames, tracks and transforms between frames alone.
ShotResult onlyShown(const ShotResult& result, const Shown& shown);

}  // namespace cornerpin

#endif
