// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_TRUST_FRAME_FIGURES_H
#define SHOT_TRUST_FRAME_FIGURES_H

#include <array>
#include <limits>

#include "shot/fit/linearised_fit.h"
#include "shot/fit/matches.h"
#include "shot/plane/points.h"

namespace cornerpin {

constexpr double kNoFigure = std::numeric_limits<double>::quiet_NaN();

/// The figures of trust of one frame: how far its transform can be relied on.
struct FrameFigures {
  /// `Uncertainty::noise` of the good tracks, those within `kGoodWithin` sigmas: what the residuals
  /// say of the tracks' noise. NaN where they say nothing, and in the base frame.
  double noise = kNoFigure;
  /// `Uncertainty::deviationAt` of the four corners. NaN where there is no figure and for a corner
  /// on or behind the horizon, 0 in the base frame.
  std::array<double, 4> deviations = {kNoFigure, kNoFigure, kNoFigure, kNoFigure};
};

/// Of the base frame, whose transform is given.
FrameFigures baseFrameFigures();

/// \param fitted   with the weights of the good tracks, in full
/// \param corners  in the base frame
/// \param front    a place in the base frame that is in front of the horizon
FrameFigures figuresOf(const Matches& matches, const FittedFrame& fitted, const Quad& corners,
                       Point front);

}  // namespace cornerpin

#endif
