// SPDX-License-Identifier: BSD-3-Clause
#include "shot/trust/frame_figures.h"

#include "shot/trust/uncertainty.h"

namespace cornerpin {

FrameFigures baseFrameFigures() { return {kNoFigure, {0.0, 0.0, 0.0, 0.0}}; }

FrameFigures figuresOf(const Matches& matches, const FittedFrame& fitted, const Quad& corners,
                       Point front) {
  const Uncertainty uncertainty(matches, fitted);
  FrameFigures figures;
  figures.noise = uncertainty.noise();
  for (std::size_t i = 0; i < corners.size(); ++i) {
    const bool seen = onSameSide(fitted.h, corners[i], front);
    figures.deviations[i] = seen ? uncertainty.deviationAt(corners[i]) : kNoFigure;
  }
  return figures;
}

}  // namespace cornerpin
