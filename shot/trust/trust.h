// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_TRUST_TRUST_H
#define SHOT_TRUST_TRUST_H

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "shot/fit/linearised_fit.h"
#include "shot/plane/similarity.h"
#include "shot/solve/shot_solver.h"
#include "shot/solve/tracks.h"
#include "shot/trust/influence.h"

namespace cornerpin {

/// How far one frame can be trusted.
struct FrameTrust {
  /// `Uncertainty::noise` of the good tracks, those within `kInlierScales` scales: what the
  /// residuals say of the tracks' noise; NaN where they say nothing.
  double noise = 0.0;
  /// `Uncertainty::deviationAt` of the four corners; NaN where there is no figure and for a corner
  /// on or behind the horizon, 0 in the base frame.
  std::array<double, 4> deviations{};
};

/// A track that the result leans on, by name.
struct WorstTrack {
  std::string name;
  TrackStretch stretch;
};

struct ShotTrust {
  Quad corners{};                  ///< what all figures are about, in the base frame
  std::vector<FrameTrust> frames;  ///< as many as the result's
  /// Those that stand out first, greatest influence first, at most 5; what moves a corner by less
  /// than a thousandth of the extent of the base frame's tracks does not stand out.
  std::vector<WorstTrack> worst;
};

/// Called for each track of each frame but the base frame, by frame, then by track.
using TrackSink = std::function<void(int track, int frame, const TrackInfluence& influence)>;

/// A frame's tracks (weight above 0 there and in the base frame) and how they were fitted, with the
/// weights that the loss left them.
/// \param ids  receives the tracks' indices
FittedFrame fittedFrame(const Tracks& tracks, const ShotResult& result, std::size_t frame,
                        std::vector<int>& ids);

/// The corners default to those of the box around the base frame's tracks (`surfacePoints`).
ShotTrust assess(const Tracks& tracks, const ShotResult& result,
                 const std::optional<Quad>& corners = {}, const TrackSink& sink = {});

/// "t042, frames 60-81: without it the worst corner moves 9.3 px"; the text for one frame has
/// "frame 60".
std::string describe(const WorstTrack& track);

}  // namespace cornerpin

#endif
