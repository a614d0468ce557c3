// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_TRUST_FRAME_FIGURES_H
#define SHOT_TRUST_FRAME_FIGURES_H

#include <array>
#include <cstddef>
#include <limits>
#include <vector>

#include "shot/fit/linearised_fit.h"
#include "shot/plane/points.h"
#include "shot/trust/frame_fits.h"
#include "shot/trust/shot_noise.h"

namespace cornerpin {

constexpr double kNoFigure = std::numeric_limits<double>::quiet_NaN();

/// How far errors let the images of a quad's corners be off: their covariances, in pixels^2.
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

/// What a frame's own fit says of its errors. NaN where it says nothing.
struct FrameErrors {
  struct OfQuad {
    CornerCovariances ofOne;      ///< what noise of 1 pixel makes of it
    CornerCovariances jackknife;  ///< by leaving out tracks
  };
  double noise = kNoFigure;  ///< of its residuals
  double freedom = 0.0;      ///< `Uncertainty::freedom`
  std::vector<OfQuad> quads;
};

/// Of the base frame, whose transform is given.
FrameFigures baseFrameFigures(std::size_t quads);

/// Where the weights and the stiffness of the fit's last step fix nothing, the good tracks count.
/// \param quads  in the base frame
/// \param front  a place in the base frame that is in front of the horizon
FrameErrors errorsOf(const FrameFits& fits, const std::vector<Quad>& quads, Point front);

/// By the frame alone a corner's covariance is the larger of two: that of equal noise, as much of
/// it as the frame and the shot say (`pooled`), enlarged where few errors have told it
/// (`estimatedNoiseFactor`); and the jackknife's.
FrameFigures figuresOf(const FrameErrors& errors, const NoiseEstimate& shot);

/// Of a frame that was fitted to places which other frames have told: the covariances of the fit of
/// all frames together, and what `figuresOf` the frame alone has beyond equal noise as its
/// residuals tell it. Of the former, what is not the frame's own comes from means over frames,
/// which errors that last make worse.
///
/// \param joint    of the corners of all quads, in order
/// \param lasting  `LastingErrors::varianceRatio`
void takeJoint(const std::vector<Symmetric2>& joint, double lasting, const FrameErrors& errors,
               FrameFigures& figures);

}  // namespace cornerpin

#endif
