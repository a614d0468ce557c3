// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_TRUST_FRAME_FIGURES_H
#define SHOT_TRUST_FRAME_FIGURES_H

#include <array>
#include <cstddef>
#include <limits>
#include <vector>

#include "shot/fit/linearised_fit.h"
#include "shot/fit/matches.h"
#include "shot/plane/points.h"

namespace cornerpin {

constexpr double kNoFigure = std::numeric_limits<double>::quiet_NaN();

/// How far noise lets the images of a quad's corners be off: their covariances
/// (`Uncertainty::covarianceAt`).
using CornerCovariances = std::array<Symmetric2, 4>;

/// The figures of trust of one frame: how far its transform can be relied on.
struct FrameFigures {
  /// Of a quad's corners, each the root of the mean squared distance between its image and where it
  /// ought to be. NaN without figures.
  std::array<double, 4> deviations(std::size_t quad = 0) const;

  /// `Uncertainty::noise` of the good tracks, those within `kGoodWithin` sigmas: what the residuals
  /// say of the tracks' noise. NaN where they say nothing, and in the base frame.
  double noise = kNoFigure;
  /// Of each quad: NaN where there is no figure and for a corner on or behind the horizon, 0 in the
  /// base frame.
  std::vector<CornerCovariances> quads;
};

/// Of the base frame, whose transform is given.
FrameFigures baseFrameFigures(std::size_t quads);

/// \param fitted  with the weights of the good tracks, in full
/// \param quads   in the base frame
/// \param front   a place in the base frame that is in front of the horizon
FrameFigures figuresOf(const Matches& matches, const FittedFrame& fitted,
                       const std::vector<Quad>& quads, Point front);

}  // namespace cornerpin

#endif
