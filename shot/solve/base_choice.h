// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_BASE_CHOICE_H
#define SHOT_SOLVE_BASE_CHOICE_H

#include <cstddef>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "shot/plane/homography.h"
#include "shot/plane/points.h"
#include "shot/solve/progress.h"
#include "shot/solve/tracks.h"

namespace cornerpin {

/// At most about as many frames, spread evenly over the shot, are compared with one another.
constexpr std::size_t kMostCompared = 30;
/// A base frame whose figure is up to this times the best one's is as good.
constexpr double kAsGood = 1.05;

/// A base frame to start from while no transform is known. Frames that share n tracks are
/// 1 / (n - 3) apart, 30 tracks being as good as any more, or as far as a chain of frames that
/// share more. Bases compare by these distances as `chooseBase` compares them by errors.
///
/// \param handsOver  false: there are no chains, tracks count where the base frame has them;
///                   where no frame shares a track with 95 % of the frames, `chooseBaseFrame`
///
/// Cost: `kMostCompared`^2 pairs of frames, whatever their number.
int guessBaseFrame(const Tracks& tracks, bool handsOver = true);

/// What a solve from some base frame says of a frame of the shot.
struct PilotFrame {
  bool solved = false;       ///< it has a full transform of its own, as the base frame has
  Homography h = kIdentity;  ///< from the pilot's base
  /// Standard deviation of one coordinate of a good track. NaN where it is not known, as in the
  /// base frame: the median of the others counts, and without any all tracks are good.
  double sigma = std::numeric_limits<double>::quiet_NaN();
};

struct BaseChoice {
  int frame = 0;
  double expected = 0.0;  ///< error of the worst corner, in pixels, 95th percentile over the frames
  double pilot = 0.0;     ///< the same from the pilot's base
  std::string why;        ///< for people
};

/// The base frame from which the corners of a quad on the surface, exact there, are expected to lie
/// best in the other frames: by geometry and noise alone, nothing is fitted.
///
/// The tracks that are good in both of two frames, those that the pilot's transforms carry from one
/// to the other within `kGoodWithin` sigmas, fix the transform between the two. How noisy they are
/// shows in what they miss each other by, so tracks that creep tell less the further the frames are
/// apart; what comes of the corners is `Uncertainty`'s. Where two frames share few tracks or none,
/// those between hand over: covariances add up along a chain, and the best chain counts, by the
/// part that is left of it where tracks are known from all the frames that see them.
///
/// Bases compare by the error of the worst corner in pixels of each frame, its 95th percentile over
/// the frames times its median: the percentile alone would leave it to a few bad frames, which may
/// be as bad from everywhere. Of the bases whose root of that product is no more than `kAsGood`
/// times the least, the one nearest the middle of the shot is taken; the pilot's base, if nearer
/// yet, with up to 1.1 times the least, as it has been solved from already.
///
/// Frames that the pilot did not solve, and those in which a corner is behind the horizon, are no
/// bases and count for none. Where no base reaches 95 % of the frames the pilot's base stays, and
/// `expected` is infinite.
///
/// \param pilot      of each frame of the shot, the first one first
/// \param quad       in the pilot's base; none: the box around all tracks, far-off ones left out
/// \param handsOver  false: there are no chains, tracks count where the base frame has them
/// \param progress   told of the frames that have been measured against all others
///
/// Cost: `kMostCompared`^2 pairs of frames, whatever their number: 30 ms for 140 tracks, where the
/// solve of 200 such frames takes 110 ms.
BaseChoice chooseBase(const Tracks& tracks, int pilotBase, const std::vector<PilotFrame>& pilot,
                      const std::optional<Quad>& quad = std::nullopt, bool handsOver = true,
                      const Progress& progress = {});

}  // namespace cornerpin

#endif
